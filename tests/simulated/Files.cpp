#include "tests/simulated/Files.h"

#include "platform/Files.h"
#include "tests/simulated/UpperCase.h"

#include <algorithm>
#include <utility>

namespace simulated {

CState<Disk> disk;

namespace {

const std::wstring literalPrefix = L"\\\\?\\";

// The path with single separators and none at its end. A doubled separator in a literal path
// stays, so that no item is found there.
std::wstring Normalize(std::wstring path)
{
    if (path.starts_with(literalPrefix))
        return path.substr(literalPrefix.size());
    std::replace(path.begin(), path.end(), L'/', L'\\');
    const auto isRepeated = [](wchar_t a, wchar_t b) { return a == L'\\' && b == L'\\'; };
    path.erase(std::unique(path.begin(), path.end(), isRepeated), path.end());
    if (path.ends_with(L'\\'))
        path.pop_back();
    return path;
}

std::wstring PlaceOf(const std::wstring& path) { return UpperCase(Normalize(path)); }

std::wstring FolderOf(const std::wstring& place)
{
    const std::size_t end = place.rfind(L'\\');
    return end == place.npos ? std::wstring() : place.substr(0, end);
}

std::wstring NameOf(const std::wstring& normalized)
{
    return normalized.substr(normalized.rfind(L'\\') + 1); // npos + 1 is 0
}

// The caller holds `disk`, here and in what follows.
Item* FindAt(const std::wstring& place)
{
    const auto found = disk->items.find(place);
    return found == disk->items.end() ? nullptr : &found->second;
}

Item* Find(const std::wstring& path) { return FindAt(PlaceOf(path)); }

bool IsFolder(const Item* item) { return item != nullptr && item->isFolder; }
bool IsFile(const Item* item) { return item != nullptr && !item->isFolder; }

// Whether items may come, go and change in the folder that a path lies in.
bool MayChangeBeside(const std::wstring& path)
{
    const Item* folder = FindAt(FolderOf(PlaceOf(path)));
    return IsFolder(folder) && !folder->readOnly;
}

// Creates or replaces an item, with all folders on its way.
void Put(const std::wstring& path, bool isFolder, const std::string& bytes)
{
    const auto held = disk.Hold();
    const std::wstring normalized = Normalize(path);
    for (std::size_t i = 0; (i = normalized.find(L'\\', i)) != normalized.npos; ++i)
    {
        const std::wstring folder = normalized.substr(0, i);
        held->items.try_emplace(UpperCase(folder), Item{NameOf(folder), true});
    }
    held->items[UpperCase(normalized)] = {NameOf(normalized), isFolder, false, bytes};
}

} // namespace

void PutFile(const std::wstring& path, const std::string& bytes) { Put(path, false, bytes); }

void PutFolder(const std::wstring& path) { Put(path, true, {}); }

void RemoveItem(const std::wstring& path)
{
    const std::wstring place = PlaceOf(path);
    std::erase_if(disk->items, [&place](const auto& entry) {
        return entry.first == place || entry.first.starts_with(place + L'\\');
    });
}

bool FolderExists(const std::wstring& path)
{
    const auto held = disk.Hold();
    return IsFolder(Find(path));
}

std::optional<std::string> ReadFileBytes(const std::wstring& path)
{
    const auto held = disk.Hold();
    const Item* found = Find(path);
    return IsFile(found) ? std::optional(found->bytes) : std::nullopt;
}

void SetReadOnly(const std::wstring& path, bool readOnly)
{
    const auto held = disk.Hold();
    if (Item* found = Find(path))
        found->readOnly = readOnly;
}

std::vector<std::wstring> ListFiles(const std::wstring& folder)
{
    const auto held = disk.Hold();
    std::vector<std::wstring> names;
    for (const auto& [place, item] : held->items)
        if (!item.isFolder && FolderOf(place) == PlaceOf(folder))
            names.push_back(item.name);
    return names;
}

void PutEnvironmentVariable(const std::wstring& name, const std::wstring& value)
{
    disk->environment[UpperCase(L"%" + name + L"%")] = value;
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
    const bool creates = Find(path) == nullptr && MayChangeBeside(path);
    if (creates)
        Put(path, true, {});
    return creates;
}

bool RemoveFile(const std::wstring& path)
{
    const auto held = disk.Hold();
    const Item* found = Find(path);
    const bool removes = IsFile(found) && !found->readOnly && MayChangeBeside(path);
    return removes && held->items.erase(PlaceOf(path)) == 1;
}

bool ReadWholeFile(const std::wstring& path, std::uint64_t limit, std::string& bytes)
{
    const auto found = ReadFileBytes(path);
    if (!found || found->size() > limit)
        return false;
    bytes = *found;
    return true;
}

bool ReplaceFileContents(const std::wstring& path, const std::string& bytes)
{
    const auto held = disk.Hold();
    const Item* found = Find(path);
    const bool refuses = found != nullptr && (found->isFolder || found->readOnly);
    const bool replaces = !refuses && MayChangeBeside(path);
    if (replaces)
        Put(path, false, bytes);
    return replaces;
}

bool ExpandEnvironment(const std::wstring& text, std::size_t limit, std::wstring& expanded)
{
    const auto held = disk.Hold();
    std::wstring result;
    std::wstring_view rest = text;
    while (!rest.empty())
    {
        const std::size_t end = rest.front() == L'%' ? rest.find(L'%', 1) : 0;
        const std::wstring piece(rest.substr(0, end == rest.npos ? end : end + 1));
        const auto found = held->environment.find(UpperCase(piece));
        result += found == held->environment.end() ? piece : found->second;
        rest.remove_prefix(piece.size());
    }
    if (held->expandingFails || result.size() >= limit)
        return false;
    expanded = result;
    return true;
}

} // namespace platform
