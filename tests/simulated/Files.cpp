#include "tests/simulated/Files.h"

#include "platform/Files.h"
#include "tests/simulated/UpperCase.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <utility>

namespace simulated {

namespace {

struct Item
{
    std::wstring name; // as it was given when the item was made
    bool isFolder = false;
    bool readOnly = false; // of a folder: locked
    std::string bytes = {};
};

struct Disk
{
    std::map<std::wstring, Item> items = {{L"C:", {L"C:", true}}}; // by place
    std::vector<std::wstring> statusQueries;
    std::map<std::wstring, std::wstring> environment; // by upper-case "%NAME%"
    bool expandingFails = false;
};

std::mutex mutex;
Disk disk; // guarded by `mutex`

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

Item* Find(const std::wstring& path)
{
    const auto found = disk.items.find(PlaceOf(path));
    return found == disk.items.end() ? nullptr : &found->second;
}

bool IsFolder(const Item* item) { return item != nullptr && item->isFolder; }
bool IsFile(const Item* item) { return item != nullptr && !item->isFolder; }

// Whether items may come, go and change in the folder that a path lies in.
bool MayChangeBeside(const std::wstring& path)
{
    const auto folder = disk.items.find(FolderOf(PlaceOf(path)));
    return folder != disk.items.end() && folder->second.isFolder && !folder->second.readOnly;
}

// Creates the folder of a normalized path with all above it.
void MakeFolders(const std::wstring& normalized)
{
    for (std::size_t end = normalized.find(L'\\'); end != normalized.npos;
         end = normalized.find(L'\\', end + 1))
    {
        const std::wstring folder = normalized.substr(0, end);
        disk.items.try_emplace(UpperCase(folder), Item{NameOf(folder), true});
    }
}

void Put(const std::wstring& path, bool isFolder, const std::string& bytes)
{
    const std::wstring normalized = Normalize(path);
    MakeFolders(normalized);
    disk.items[UpperCase(normalized)] = {NameOf(normalized), isFolder, false, bytes};
}

} // namespace

void PutFile(const std::wstring& path, const std::string& bytes)
{
    const std::scoped_lock lock(mutex);
    Put(path, false, bytes);
}

void PutFolder(const std::wstring& path)
{
    const std::scoped_lock lock(mutex);
    Put(path, true, {});
}

void RemoveItem(const std::wstring& path)
{
    const std::scoped_lock lock(mutex);
    const std::wstring place = PlaceOf(path);
    std::erase_if(disk.items, [&place](const auto& entry) {
        return entry.first == place || entry.first.starts_with(place + L'\\');
    });
}

bool FolderExists(const std::wstring& path)
{
    const std::scoped_lock lock(mutex);
    return IsFolder(Find(path));
}

std::optional<std::string> ReadFileBytes(const std::wstring& path)
{
    const std::scoped_lock lock(mutex);
    const Item* found = Find(path);
    return IsFile(found) ? std::optional(found->bytes) : std::nullopt;
}

void SetReadOnly(const std::wstring& path, bool readOnly)
{
    const std::scoped_lock lock(mutex);
    if (Item* found = Find(path))
        found->readOnly = readOnly;
}

void SetFolderLocked(const std::wstring& path, bool locked) { SetReadOnly(path, locked); }

std::vector<std::wstring> ListFiles(const std::wstring& folder)
{
    const std::scoped_lock lock(mutex);
    const std::wstring place = PlaceOf(folder);
    std::vector<std::wstring> names;
    for (const auto& [itemPlace, item] : disk.items)
        if (!item.isFolder && FolderOf(itemPlace) == place)
            names.push_back(item.name);
    return names;
}

std::vector<std::wstring> TakeStatusQueries()
{
    const std::scoped_lock lock(mutex);
    return std::exchange(disk.statusQueries, {});
}

void PutEnvironmentVariable(const std::wstring& name, const std::wstring& value)
{
    const std::scoped_lock lock(mutex);
    disk.environment[UpperCase(L"%" + name + L"%")] = value;
}

void SetExpandingFails(bool fails)
{
    const std::scoped_lock lock(mutex);
    disk.expandingFails = fails;
}

void ResetFiles()
{
    const std::scoped_lock lock(mutex);
    disk = {};
}

} // namespace simulated

namespace platform {

using simulated::disk;
using simulated::Item;

bool FileSystemItemExists(const std::wstring& path)
{
    const std::scoped_lock lock(simulated::mutex);
    disk.statusQueries.push_back(path);
    return simulated::Find(path) != nullptr;
}

bool CreateFolder(const std::wstring& path)
{
    const std::scoped_lock lock(simulated::mutex);
    if (simulated::Find(path) != nullptr || !simulated::MayChangeBeside(path))
        return false;
    simulated::Put(path, true, {});
    return true;
}

bool RemoveFile(const std::wstring& path)
{
    const std::scoped_lock lock(simulated::mutex);
    const Item* found = simulated::Find(path);
    if (!simulated::IsFile(found) || found->readOnly || !simulated::MayChangeBeside(path))
        return false;
    disk.items.erase(simulated::PlaceOf(path));
    return true;
}

bool ReadWholeFile(const std::wstring& path, std::uint64_t limit, std::string& bytes)
{
    const std::scoped_lock lock(simulated::mutex);
    const Item* found = simulated::Find(path);
    if (!simulated::IsFile(found) || found->bytes.size() > limit)
        return false;
    bytes = found->bytes;
    return true;
}

bool ReplaceFileContents(const std::wstring& path, const std::string& bytes)
{
    const std::scoped_lock lock(simulated::mutex);
    const Item* found = simulated::Find(path);
    const bool refuses = found != nullptr && (found->isFolder || found->readOnly);
    if (refuses || !simulated::MayChangeBeside(path))
        return false;
    simulated::Put(path, false, bytes);
    return true;
}

bool ExpandEnvironment(const std::wstring& text, std::size_t limit, std::wstring& expanded)
{
    const std::scoped_lock lock(simulated::mutex);
    std::wstring result;
    std::wstring_view rest = text;
    while (!rest.empty())
    {
        const std::size_t end = rest.front() == L'%' ? rest.find(L'%', 1) : 0;
        const std::wstring piece(rest.substr(0, end == rest.npos ? end : end + 1));
        const auto found = disk.environment.find(simulated::UpperCase(piece));
        result += found == disk.environment.end() ? piece : found->second;
        rest.remove_prefix(piece.size());
    }
    if (disk.expandingFails || result.size() >= limit)
        return false;
    expanded = result;
    return true;
}

} // namespace platform
