#include "tests/simulated/Files.h"

#include "platform/Files.h"
#include "platform/ProfileFile.h"
#include "platform/ProfileSection.h"
#include "tests/simulated/SystemFacts.h"
#include "text/CodePages.h"
#include "text/Decimal.h"
#include "zotracker/vnosal/VnString.h"

#include <algorithm>
#include <string_view>

namespace simulated {

CState<Disk> disk;

namespace {

// The path with single separators and none at its end. In a literal path all of them stay.
std::wstring Normalize(std::wstring path)
{
    if (path.starts_with(L"\\\\?\\"))
        return path.substr(4);
    std::replace(path.begin(), path.end(), L'/', L'\\');
    const auto isRepeated = [](wchar_t a, wchar_t b) { return a == L'\\' && b == L'\\'; };
    path.erase(std::unique(path.begin(), path.end(), isRepeated), path.end());
    if (path.ends_with(L'\\'))
        path.pop_back();
    return path;
}

// The caller holds `disk`, here and in what follows.
Item* Find(const std::wstring& path)
{
    const auto found = disk->items.find(Normalize(path));
    return found == disk->items.end() ? nullptr : &found->second;
}

// Whether a file of this path may come, change and go.
bool MayChange(const std::wstring& path)
{
    const std::wstring normalized = Normalize(path);
    const Item* item = Find(path);
    const Item* folder = Find(normalized.substr(0, normalized.rfind(L'\\')));
    return (item == nullptr || (!item->isFolder && !item->readOnly)) && folder != nullptr &&
           folder->isFolder && !folder->readOnly;
}

// Creates or replaces an item, with all folders on its way.
void Put(const std::wstring& path, const Item& item)
{
    const auto held = disk.Hold();
    const std::wstring normalized = Normalize(path);
    for (std::size_t i = 0; (i = normalized.find(L'\\', i)) != normalized.npos; ++i)
        held->items.try_emplace(normalized.substr(0, i), Item{true});
    held->items[normalized] = item;
}

bool PutIfPossible(const std::wstring& path, const Item& item)
{
    const auto held = disk.Hold();
    const bool puts = MayChange(path);
    if (puts)
        Put(path, item);
    return puts;
}

} // namespace

void PutFile(const std::wstring& path, const std::string& bytes) { Put(path, {.bytes = bytes}); }
void PutFolder(const std::wstring& path) { Put(path, {.isFolder = true}); }

void RemoveItem(const std::wstring& path)
{
    std::erase_if(disk->items, [top = Normalize(path)](const auto& entry) {
        return IsAtOrBelow(entry.first, top);
    });
}

std::optional<std::string> ReadFileBytes(const std::wstring& path)
{
    const auto held = disk.Hold();
    const Item* found = Find(path);
    return found == nullptr || found->isFolder ? std::nullopt : std::optional(found->bytes);
}

void SetReadOnly(const std::wstring& path, bool readOnly)
{
    const auto held = disk.Hold();
    if (Item* found = Find(path))
        found->readOnly = readOnly;
}

} // namespace simulated

namespace platform {

using namespace simulated;

bool FileSystemItemExists(const std::wstring& path)
{
    const auto held = disk.Hold();
    held->statusQueries.push_back(path);
    return Find(path) != nullptr;
}

bool CreateFolder(const std::wstring& path)
{
    const auto held = disk.Hold();
    return Find(path) == nullptr && PutIfPossible(path, {.isFolder = true});
}

bool RemoveFile(const std::wstring& path)
{
    const auto held = disk.Hold();
    return MayChange(path) && held->items.erase(Normalize(path)) == 1;
}

bool ReadWholeFile(const std::wstring& path, std::uint64_t limit, std::string& bytes)
{
    const auto found = ReadFileBytes(path);
    const bool reads = found && found->size() <= limit;
    bytes = reads ? *found : bytes;
    return reads;
}

bool ReplaceFileContents(const std::wstring& path, const std::string& bytes)
{
    return PutIfPossible(path, {.bytes = bytes});
}

bool ExpandEnvironment(const std::wstring& text, std::size_t limit, std::wstring& expanded)
{
    const auto held = disk.Hold();
    VnOSAL::VnString result(text);
    for (const auto& [name, value] : held->environment)
        result.ReplaceAll(name, value, VnOSAL::ECase::Ignore);
    const bool expands = result.GetLength() < limit;
    expanded = expands ? std::wstring(result) : expanded;
    return expands;
}

// --- profile files -------------------------------------------------------------------------------

namespace {

using Lines = std::vector<std::wstring>;

std::wstring ReadProfile(const std::wstring& path)
{
    return DecodeProfile(ReadFileBytes(path).value_or(""));
}

std::optional<std::wstring> FindValue(const std::wstring& section, const std::wstring& key,
                                      const std::wstring& path)
{
    const std::wstring text = ReadProfile(path);
    CProfileSection entries(text, section);
    for (std::wstring_view name, value; entries.TakeEntry(name, value);)
        if (text::EqualIgnoringCase(name, key))
            return std::wstring(value);
    return std::nullopt;
}

Lines SplitLines(const std::wstring& text)
{
    Lines lines;
    for (std::size_t begin = 0, end = 0; begin < text.size(); begin = end + 2)
    {
        end = std::min(text.find(L"\r\n", begin), text.size());
        lines.push_back(text.substr(begin, end - begin));
    }
    return lines;
}

bool Sets(const std::wstring& line, const std::wstring& key)
{
    std::wstring_view name;
    std::wstring_view value;
    return ReadProfileEntry(line, name, value) && text::EqualIgnoringCase(name, key);
}

// The line that sets the key, made where there is none.
std::wstring& FindLine(Lines& lines, const std::wstring& section, const std::wstring& key)
{
    auto line = std::find_if(lines.begin(), lines.end(), [&](const std::wstring& one) {
        return text::EqualIgnoringCase(ReadProfileHeader(one).value_or(L""), section);
    });
    if (line == lines.end())
        line = lines.insert(line, L"[" + section + L"]");
    line = std::find_if(line + 1, lines.end(), [&](const std::wstring& one) {
        return Sets(one, key) || ReadProfileHeader(one);
    });
    return line != lines.end() && Sets(*line, key) ? *line : *lines.insert(line, L"");
}

} // namespace

std::size_t CopyProfileText(const std::wstring& section, const std::wstring& key,
                            const std::wstring& defaultValue, std::span<wchar_t> buffer,
                            const std::wstring& path)
{
    const std::wstring value = FindValue(section, key, path).value_or(defaultValue);
    const std::size_t length = value.copy(buffer.data(), buffer.size() - 1);
    buffer[length] = 0;
    return length;
}

std::int32_t ReadProfileInt(const std::wstring& section, const std::wstring& key,
                            std::int32_t defaultValue, const std::wstring& path)
{
    const std::wstring value = FindValue(section, key, path).value_or(L"");
    return value.empty() ? defaultValue : static_cast<std::int32_t>(text::ReadDecimal64(value));
}

bool WriteProfileText(const std::wstring& section, const std::wstring& key,
                      const std::wstring& value, const std::wstring& path)
{
    const auto held = disk.Hold(); // so that two writers do not lose each other's lines
    Lines lines = SplitLines(ReadProfile(path));
    FindLine(lines, section, key) = key + L"=" + value;
    std::wstring text;
    for (const std::wstring& line : lines)
        text += line + L"\r\n";
    return ReplaceFileContents(path, text::EncodeBytes(text, ansiCodePage));
}

} // namespace platform
