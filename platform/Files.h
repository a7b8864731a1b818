#pragma once

#include <cstdint>
#include <string>

// Files and folders. Paths are the system's own. Any thread.
namespace platform {

// Whether the path names a file or a folder.
bool FileSystemItemExists(const std::wstring& path);

// Creates one folder; its parent must exist. False when it exists already or cannot be made.
bool CreateFolder(const std::wstring& path);

// False when the file was not there or could not be deleted.
bool RemoveFile(const std::wstring& path);

// Reads a whole file while others may read but not write it. `bytes` changes only on success.
// Files longer than `limit` bytes fail.
bool ReadWholeFile(const std::wstring& path, std::uint64_t limit, std::string& bytes);

// Makes `bytes` the file's contents in one step: whatever happens on the way, the file afterwards
// holds either its old contents or the new ones. On the device at once, unless the module is being
// unloaded.
bool ReplaceFileContents(const std::wstring& path, const std::string& bytes);

// Replaces "%NAME%" by the environment's values. False when the result is longer than `limit` - 1
// units or the system refuses; `expanded` is then unchanged.
bool ExpandEnvironment(const std::wstring& text, std::size_t limit, std::wstring& expanded);

} // namespace platform
