#pragma once

#include <optional>
#include <string>
#include <vector>

// The model's disk: folders and files of bytes, shared by the file and the profile functions.
//
// Paths compare without case, '/' is '\', a run of separators is one, and a separator at the end
// does not count. After the prefix "\\?\" a path is taken literally, so a doubled separator makes
// it invalid. "C:\" always exists.
namespace simulated {

// Creates or replaces a file, with all folders on its way; it can then be written.
void PutFile(const std::wstring& path, const std::string& bytes);

// Creates a folder with all folders on its way.
void PutFolder(const std::wstring& path);

// Removes a file, or a folder with all that it holds.
void RemoveItem(const std::wstring& path);

bool FolderExists(const std::wstring& path);

// The bytes of a file; nothing where there is no file.
std::optional<std::string> ReadFileBytes(const std::wstring& path);

// A file with the read-only attribute can be neither written nor replaced nor removed.
void SetReadOnly(const std::wstring& path, bool readOnly);

// In a locked folder nothing can be created, written, replaced or removed.
void SetFolderLocked(const std::wstring& path, bool locked);

// The files directly in a folder, in order of their names.
std::vector<std::wstring> ListFiles(const std::wstring& folder);

// The paths of all calls to FileSystemItemExists since the last take, as they were given.
std::vector<std::wstring> TakeStatusQueries();

// An environment variable for ExpandEnvironment. Names ignore case.
void PutEnvironmentVariable(const std::wstring& name, const std::wstring& value);

// Makes every ExpandEnvironment fail.
void SetExpandingFails(bool fails);

void ResetFiles();

} // namespace simulated
