#pragma once

#include <string>

// Product names and versions from the version resources of executables. Any thread.
namespace env {

// Entries of a file's version information in its first translation; empty when it has none.
std::wstring GetFileProductName(const std::wstring& filePath);
std::wstring GetFileProductVersion(const std::wstring& filePath);

// The same of the host's executable. The version is found out once per process.
std::wstring GetApplicationProductName();
std::wstring GetApplicationProductVersion();

} // namespace env
