#pragma once

#include "tests/simulated/State.h"

#include <map>
#include <string>

namespace simulated {

// An empty path makes the query fail.
struct SystemPaths
{
    std::wstring executable = L"C:\\Host\\Host.exe";                         // of the host process
    std::map<int, std::wstring> specialFolders = {{35, L"C:\\ProgramData"}}; // by CSIDL number
};
extern CState<SystemPaths> paths;

} // namespace simulated
