#include "../TestFolder.h"

#include <windows.h>

namespace vnosal_test {
namespace {

// Wine makes no links itself but shows those of the system below it.
void MakeLinkBelowWine(const std::filesystem::path& link, const std::filesystem::path& target)
{
    using GetUnixName = char*(CDECL*)(const wchar_t*);
    const HMODULE kernel = ::GetModuleHandleW(L"kernel32.dll");
    const auto getUnixName = reinterpret_cast<GetUnixName>(
        reinterpret_cast<void*>(::GetProcAddress(kernel, "wine_get_unix_file_name")));
    if (!getUnixName)
        return;
    const std::string to = getUnixName(target.c_str());
    const std::string at =
        std::string(getUnixName(link.parent_path().c_str())) + "/" + link.filename().string();
    std::string command = "Z:\\bin\\ln -s \"" + to + "\" \"" + at + "\"";
    STARTUPINFOA start = {};
    PROCESS_INFORMATION process = {};
    if (::CreateProcessA("Z:\\bin\\ln", command.data(), nullptr, nullptr, FALSE, 0, nullptr,
                         nullptr, &start, &process))
    {
        ::WaitForSingleObject(process.hProcess, 5000);
        ::CloseHandle(process.hProcess);
        ::CloseHandle(process.hThread);
    }
    for (int round = 0; round < 500 && !std::filesystem::exists(link); ++round)
        ::Sleep(10); // a program of the system below cannot be waited for
}

} // namespace

void MakeFolderLink(const std::filesystem::path& link, const std::filesystem::path& target)
{
    ::CreateSymbolicLinkW(link.c_str(), target.c_str(), SYMBOLIC_LINK_FLAG_DIRECTORY);
    if (!std::filesystem::exists(link))
        MakeLinkBelowWine(link, target);
}

bool CanDeleteFolderLinks()
{
    const CTestFolder folder;
    folder.WriteFile(L"target/file");
    folder.MakeFolderLink(L"link", L"target");
    return ::RemoveDirectoryW(folder.NativeAt(L"link").c_str()) != 0;
}

} // namespace vnosal_test
