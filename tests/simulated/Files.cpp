#include "tests/simulated/Files.h"

#include "platform/Files.h"

#include <algorithm>
#include <string_view>

namespace simulated {

CState<Disk> disk;

namespace {

// The path with single separators and none at its end. A doubled separator in a literal path
// stays, so that no item is found there.
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

// Of a normalized path.
std::wstring FolderOf(const std::wstring& path) { return path.substr(0, path.rfind(L'\\')); }

// The caller holds `disk`, here and in what follows.
Item* FindAt(const std::wstring& normalized)
{
    const auto found = disk->items.find(normalized);
    return found == disk->items.end() ? nullptr : &found->second;
}

Item* Find(const std::wstring& path) { return FindAt(Normalize(path)); }

// Whether a file of this path may come, go and change.
bool MayChange(const std::wstring& path)
{
    const Item* item = Find(path);
    const Item* folder = FindAt(FolderOf(Normalize(path)));
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

void PutEnvironmentVariable(const std::wstring& name, const std::wstring& value)
{
    disk->environment[L"%" + name + L"%"] = value;
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
    const bool creates = Find(path) == nullptr && MayChange(path);
    if (creates)
        PutFolder(path);
    return creates;
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
    if (reads)
        bytes = *found;
    return reads;
}

bool ReplaceFileContents(const std::wstring& path, const std::string& bytes)
{
    const auto held = disk.Hold();
    const bool replaces = MayChange(path);
    if (replaces)
        PutFile(path, bytes);
    return replaces;
}

bool ExpandEnvironment(const std::wstring& text, std::size_t limit, std::wstring& expanded)
{
    const auto held = disk.Hold();
    std::wstring result;
    for (std::wstring_view rest = text; !rest.empty();)
    {
        const std::size_t end = rest.front() == L'%' ? rest.find(L'%', 1) : 0;
        const std::wstring piece(rest.substr(0, end == rest.npos ? end : end + 1));
        const auto found = held->environment.find(piece);
        result += found == held->environment.end() ? piece : found->second;
        rest.remove_prefix(piece.size());
    }
    const bool expands = !held->expandingFails && result.size() < limit;
    if (expands)
        expanded = result;
    return expands;
}

} // namespace platform
