#pragma once

#include <string>

namespace simulated {

// The host process's executable; empty makes the query fail. Initially "C:\Host\Host.exe".
void SetHostExecutablePath(const std::wstring& path);

// A shell special folder by its CSIDL number; empty makes the query fail. Initially only number 35
// is known, as "C:\ProgramData".
void SetSpecialFolder(int folderId, const std::wstring& path);

} // namespace simulated
