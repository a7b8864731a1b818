#pragma once

#include <string>

// Questions about files and folders. Any thread.
namespace env {

// Whether there is a file or folder of this name. Environment variables in the path are expanded,
// long paths get the prefix they need. On 64-bit Windows the native system folder counts too,
// which a 32-bit process reaches only as SYSNATIVE.
bool PathExists(const std::wstring& path);

// Creates the folder unless it exists. Its parent must exist; failure is not reported.
void CreateMissingFolder(const std::wstring& path);

} // namespace env
