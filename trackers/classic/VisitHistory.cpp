#include "trackers/classic/VisitHistory.h"

#include "env/FileSystem.h"
#include "env/Text.h"
#include "platform/Files.h"
#include "text/Format.h"
#include "trackers/classic/OldHistory.h"

#include <limits>

namespace trackers {

using VnOSAL::VnCriticalSectionLock;
using xml::SimpleXMLElement;

namespace {

constexpr std::uint64_t largestHistory = 8 << 20; // bytes

std::wstring MakeFingerprint(const frame::TrackingHit& hit)
{
    return env::Md5OfText(
        text::FormatText(L"%s_%s_%s_%s", hit.field2, hit.field4, hit.field3, hit.field5));
}

std::int32_t AddOne(std::int32_t count)
{
    return count == std::numeric_limits<std::int32_t>::max() ? count : count + 1;
}

} // namespace

CVisitHistory::CVisitHistory(const std::wstring& contentFolder)
    : oldPath(contentFolder + L"tallyhive.dat"),
      path(contentFolder + L"tallyhive.xml"),
      events(std::make_unique<SimpleXMLElement>())
{}

void CVisitHistory::LoadHistory()
{
    const VnCriticalSectionLock lock(stateLock);
    events = std::make_unique<SimpleXMLElement>();
    if (env::PathExists(oldPath))
        ImportOldFile();
    else if (env::PathExists(path))
        LoadFile();
    loaded = true;
}

// Saved at once: from then on the old file has nothing to tell.
void CVisitHistory::ImportOldFile()
{
    for (const EventCount& event : ReadOldHistory(oldPath, largestHistory))
        events->AddChild(event.fingerprint, event.count, false);
    events->Save(path);
    platform::RemoveFile(oldPath);
}

// What cannot be understood is an empty history, so that it does not end up in the next file.
void CVisitHistory::LoadFile()
{
    std::string text;
    if (!platform::ReadWholeFile(path, largestHistory, text))
        return;
    auto stored = std::make_unique<SimpleXMLElement>(text, false);
    if (stored->GetChildCount() > 0)
        events = std::move(stored);
}

void CVisitHistory::SaveHistory()
{
    const VnCriticalSectionLock lock(stateLock, VnOSAL::EEnter::Try);
    if (lock && loaded)
        events->Save(path);
}

std::int32_t CVisitHistory::CountEventOccurrence(const frame::TrackingHit& hit)
{
    if (hit.type != frame::EHitType::Event)
        return 0;
    const std::wstring fingerprint = MakeFingerprint(hit);
    const VnCriticalSectionLock lock(stateLock);
    SimpleXMLElement* const known = events->FindChild(fingerprint);
    if (known == nullptr)
        return events->AddChild(fingerprint, 1, false)->GetValueAsInteger();
    known->SetValue(AddOne(known->GetValueAsInteger()));
    return known->GetValueAsInteger();
}

} // namespace trackers
