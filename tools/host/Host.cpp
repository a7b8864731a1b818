#include "tools/host/ImportWatch.h"
#include "tools/host/Session.h"

#include <cstdio>
#include <iostream>
#include <string>
#include <vector>

namespace {

std::wstring GetModulePathBeside(const std::wstring& program)
{
    return program.substr(0, program.rfind(L'\\') + 1) + L"ZoTracker.dll";
}

bool ObeyInput(host::CSession& session)
{
    bool understood = true;
    for (std::string line; std::getline(std::cin, line);)
    {
        std::wstring wide(line.size(), L'\0');
        const int length = static_cast<int>(line.size());
        wide.resize(static_cast<std::size_t>(
            ::MultiByteToWideChar(CP_UTF8, 0, line.data(), length, wide.data(), length)));
        understood = session.Obey(host::SplitLine(wide)) && understood;
    }
    return understood;
}

} // namespace

// Exit status: 0 done, 1 the module could not be loaded, 2 a command was not understood, 3 the
// module called what it should not have.
int wmain(int count, wchar_t** values)
{
    std::vector<std::wstring> arguments(values + 1, values + count);
    std::wstring modulePath = GetModulePathBeside(host::GetOwnPath());
    if (!arguments.empty() && arguments[0] == L"--help")
    {
        std::fputs(host::usage, stdout);
        return 0;
    }
    if (!arguments.empty() && arguments[0] == L"--watch")
    {
        host::WatchImports();
        arguments.erase(arguments.begin());
    }
    if (arguments.size() > 1 && arguments[0] == L"--dll")
    {
        modulePath = arguments[1];
        arguments.erase(arguments.begin(), arguments.begin() + 2);
    }
    host::CSession session(modulePath);
    if (!session.IsLoaded())
    {
        std::fprintf(stderr, "host: cannot load %ls; put ZoTracker.dll there or name it by --dll\n",
                     modulePath.c_str());
        return 1;
    }
    bool understood = true;
    if (arguments.empty())
        understood = ObeyInput(session);
    else
        for (const host::Command& command : host::SplitArguments(arguments))
            understood = session.Obey(command) && understood;
    session.End();
    if (host::GetViolationCount() != 0)
        return 3;
    return understood ? 0 : 2;
}
