#pragma once

#include "zotracker/vnosal/VnFile.h"
#include "zotracker/vnosal/VnFileSystemItem.h"

// What the operations on files and folders need of the system. Results are system error numbers, 0
// on success. Any thread.
namespace VnOSAL {

using SystemError = std::uint32_t;

EError ReadErrorKind(SystemError error) noexcept;
SystemError NumberOf(EError kind) noexcept; // for failures that the library itself finds
VnString ReadErrorText(SystemError error) noexcept;

SystemError ReadItemFacts(const VnString& path, ELinks links, VnItemFacts& facts) noexcept;
SystemError WriteAttributes(const VnString& path, std::uint32_t attributes) noexcept;
SystemError WriteTimes(const VnString& path, const VnItemTimes& times) noexcept;
SystemError MakeFolder(const VnString& path) noexcept;
SystemError RemoveItem(const VnString& path) noexcept; // a file, a link or an empty folder
SystemError MoveItem(const VnString& from, const VnString& to, EReplace replace) noexcept;
SystemError RecycleItem(const VnString& path) noexcept;
ESignature VerifySignature(const VnString& path) noexcept;

// The folder that a known folder's identifier, "{...}", stands for; empty when there is none.
VnString ResolveKnownFolder(const VnString& identifier) noexcept;

SystemError OpenFile(const VnString& path, EAccess access, EOpen mode, ESharing sharing,
                     std::intptr_t& file) noexcept;
void CloseFile(std::intptr_t file) noexcept;
SystemError ReadFile(std::intptr_t file, void* buffer, std::size_t size,
                     std::size_t& done) noexcept;
SystemError WriteFile(std::intptr_t file, const void* bytes, std::size_t size,
                      std::size_t& done) noexcept;
SystemError SeekFile(std::intptr_t file, std::int64_t offset, ESeek origin,
                     std::uint64_t& position) noexcept;
SystemError ReadFileSize(std::intptr_t file, std::uint64_t& size) noexcept;
SystemError SetFileSize(std::intptr_t file, std::uint64_t size) noexcept;
SystemError FlushFile(std::intptr_t file) noexcept;

// The number of this process.
std::uint32_t GetProcessNumber() noexcept;

// The path as the system reads it: on Windows "C:\d\f. " is "C:\d\f", for the system drops
// blanks and periods at the end. Its last name is then the one that the item really has.
VnString CleanPath(const VnString& path) noexcept;

// A name that no other call, thread or process uses, for a file that another is to be replaced by.
VnString MakeTemporaryName() noexcept;

// Calls `create` with such names until one does not exist yet, as a crash may have left files of
// any name; gives up after a few. `name` is the last one tried.
template <class Create>
SystemError CreateTemporary(VnString& name, Create create) noexcept
{
    SystemError error = 0;
    int tries = 16;
    do
    {
        name = MakeTemporaryName();
        error = create(name);
    } while (ReadErrorKind(error) == EError::Exists && --tries > 0);
    return error;
}

} // namespace VnOSAL
