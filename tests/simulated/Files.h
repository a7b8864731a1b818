#pragma once

#include "tests/simulated/Simulated.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

// The model's disk: folders and files of bytes, profile files too.
//
// Paths compare without case, '/' is '\', a run of separators is one, and a separator at the end
// does not count. After the prefix "\\?\" a path is taken literally, so a doubled separator makes
// it invalid. "C:\" always exists.
namespace simulated {

// Creates or replaces an item, with all folders on its way; it can then be written.
void PutFile(const std::wstring& path, const std::string& bytes);
void PutFolder(const std::wstring& path);

// Removes a file, or a folder with all that it holds.
void RemoveItem(const std::wstring& path);

// The bytes of a file; nothing where there is no file.
std::optional<std::string> ReadFileBytes(const std::wstring& path);

// A file with the read-only attribute can be neither written nor replaced nor removed; in a folder
// with it nothing can.
void SetReadOnly(const std::wstring& path, bool readOnly);

struct Item
{
    bool isFolder = false;
    bool readOnly = false; // of a folder: locked
    std::string bytes = {};
};

struct Disk
{
    std::map<std::wstring, Item, IgnoringCase> items = {{L"C:", {true}}}; // by normalized path
    std::map<std::wstring, std::wstring, IgnoringCase> environment;       // by "%NAME%"
    std::vector<std::wstring> statusQueries; // of FileSystemItemExists, as they were given
};
extern CState<Disk> disk;

// For ExpandEnvironment.
inline void PutEnvironmentVariable(const std::wstring& name, const std::wstring& value)
{
    disk->environment[L"%" + name + L"%"] = value;
}

} // namespace simulated
