#include "platform/Files.h"

#include "platform/ModuleState.h"
#include "platform/win32/UniqueHandle.h"
#include "zotracker/vnosal/VnFile.h"

#include <algorithm>

namespace platform {

namespace {

// Opening a file reports failure as INVALID_HANDLE_VALUE.
struct FileHandleTraits
{
    using Raw = HANDLE;
    static Raw None() noexcept { return INVALID_HANDLE_VALUE; }
    static bool IsValid(Raw raw) noexcept { return raw != INVALID_HANDLE_VALUE; }
    static void Close(Raw raw) noexcept { ::CloseHandle(raw); }
};
using CFileHandle = CUniqueHandle<FileHandleTraits>;

// One transfer counts in 32 bits.
constexpr std::size_t largestTransfer = 0x40000000;

bool ReadAll(HANDLE file, std::string& bytes)
{
    std::size_t done = 0;
    while (done < bytes.size())
    {
        const auto wanted = static_cast<DWORD>(std::min(bytes.size() - done, largestTransfer));
        DWORD count = 0;
        if (::ReadFile(file, bytes.data() + done, wanted, &count, nullptr) == 0 || count == 0)
            return false;
        done += count;
    }
    return true;
}

} // namespace

bool FileSystemItemExists(const std::wstring& path)
{
    return ::GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

bool CreateFolder(const std::wstring& path)
{
    return ::CreateDirectoryW(path.c_str(), nullptr) != 0;
}

bool RemoveFile(const std::wstring& path) { return ::DeleteFileW(path.c_str()) != 0; }

bool ReadWholeFile(const std::wstring& path, std::uint64_t limit, std::string& bytes)
{
    const CFileHandle file(::CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                         OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    LARGE_INTEGER size = {};
    // Reading a pipe or a device by its name could wait for ever.
    if (!file || ::GetFileType(file.Get()) != FILE_TYPE_DISK ||
        ::GetFileSizeEx(file.Get(), &size) == 0 ||
        static_cast<std::uint64_t>(size.QuadPart) > limit)
        return false;
    std::string contents(static_cast<std::size_t>(size.QuadPart), '\0');
    if (!ReadAll(file.Get(), contents))
        return false;
    bytes = std::move(contents);
    return true;
}

bool ReplaceFileContents(const std::wstring& path, const std::string& bytes)
{
    // A flush can take seconds. While the module is being unloaded every thread that asks the
    // loader for anything would stand still as long.
    const auto durability = GetModuleState() == EModuleState::Running
                                ? VnOSAL::EDurability::Flushed
                                : VnOSAL::EDurability::Unflushed;
    return static_cast<bool>(
        VnOSAL::VnFile::ReplaceContents(VnOSAL::VnPath(path), bytes, durability));
}

bool ExpandEnvironment(const std::wstring& text, std::size_t limit, std::wstring& expanded)
{
    const DWORD units = ::ExpandEnvironmentStringsW(text.c_str(), nullptr, 0);
    if (units == 0 || units > limit)
        return false;
    std::wstring result(units, L'\0');
    // Another thread may have changed the environment between the two calls.
    if (::ExpandEnvironmentStringsW(text.c_str(), result.data(), units) != units)
        return false;
    result.pop_back(); // the terminating zero
    expanded = std::move(result);
    return true;
}

} // namespace platform
