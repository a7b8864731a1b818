#include "env/ProcessCache.h"
#include "platform/SystemPaths.h"
#include "tests/fuzz/FuzzInput.h"
#include "tests/simulated/Files.h"
#include "tests/simulated/Internet.h"
#include "tests/simulated/Registry.h"
#include "tests/simulated/Simulated.h"
#include "tests/simulated/SystemFacts.h"
#include "tests/simulated/VirtualTime.h"
#include "trackers/classic/CZoTracker.h"
#include "trackers/kpi/CZoTrackerPiWik.h"
#include "trackers/ua/CZoTrackerUA.h"

#include <algorithm>

using namespace std::chrono_literals;

namespace fuzz {

namespace {

constexpr const wchar_t* hostPath = L"C:\\Host\\Host.exe";
const std::wstring folders[] = {L"C:\\Content\\", L"C:\\ProgramData\\veltrano\\P\\"};

void PutValueForAll(const simulated::RegistryValue& value)
{
    for (const wchar_t* key : {L"CLSID\\{7C2A9E14-3F60-4b8d-92E5-A1D4706B3C58}",
                               L"CLSID\\{A3D17F52-6B0E-4C19-8E2A-5F71C03B9D64}",
                               L"CLSID\\{5E93C0A7-2D41-4F86-B7C9-03E8D12A6F95}\\2_P"})
        for (const wchar_t* name : {L"ID", L"FV", L"CV", L"LV", L"SID", L"PVC"})
            simulated::PutRegistryValue(platform::ERegistryRoot::ClassesRoot, key,
                                        platform::ERegistryView::View32, name, value);
}

template <class Tracker, class... Names>
void Report(const Names&... names)
{
    Tracker tracker(names...);
    tracker.TrackEventEx(L"C", L"A", L"L", L"", L"P", true);
    tracker.Initialize(hostPath);
    tracker.TrackPurchase(L"", L"", 1, L"", 1);
    tracker.SetTrackingEnabled(false);
    simulated::AdvanceTime(2s);
}

} // namespace

// Pieces with "\n--\n" between them: install.cfg, tallyhive.xml, tallyhive.dat and
// tallyhivesession.dat as files, the executable's version resource as lines (its first translation
// in hexadecimal, product name, version), a value for every key of the registry.
void Check(FuzzInput input)
{
    simulated::Reset();
    env::ResetProcessCache();
    const auto take = [&] { return std::string(input.Take("\n--\n")); };
    simulated::PutFile(L"C:\\Host\\install.cfg", take());
    simulated::PutFile(hostPath, "x");
    for (const wchar_t* name : {L"tallyhive.xml", L"tallyhive.dat", L"tallyhivesession.dat"})
    {
        const std::string bytes = take();
        for (const std::wstring& folder : folders)
            if (!bytes.empty()) // without the old history the present one is read
                simulated::PutFile(folder + name, bytes);
    }
    FuzzInput version{input.Take("\n--\n")};
    const auto translation = std::strtoul(std::string(version.Take()).c_str(), nullptr, 16);
    simulated::SetVersionInfo(
        hostPath,
        {{{static_cast<std::uint16_t>(translation >> 16), static_cast<std::uint16_t>(translation)}},
         {{L"\\StringFileInfo\\040904b0\\ProductName", version.TakeUnits()},
          {L"\\StringFileInfo\\040904b0\\ProductVersion", version.TakeUnits()}}});
    if (!input.rest.empty())
        PutValueForAll({static_cast<std::uint32_t>(input.TakeByte() - '0'),
                        {input.rest.begin(), input.rest.end()}});

    Report<trackers::CZoTracker>(L"", L"", L"");
    Report<trackers::CZoTrackerUA>(L"", L"", L"");
    Report<trackers::CZoTrackerPiWik>();
    for (const auto& request : simulated::GetSentRequests())
    {
        Require((request.requestFlags & platform::internetSecure) != 0, "encrypted");
        Require(std::ranges::count(request.headers, L'\n') == (request.verb == L"POST" ? 3 : 1),
                "headers");
    }
    Require(simulated::GetOpenInternetHandles() == 0, "closed");
}

} // namespace fuzz
