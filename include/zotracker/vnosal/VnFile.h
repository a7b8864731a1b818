#pragma once

#include "zotracker/vnosal/VnAString.h"
#include "zotracker/vnosal/VnPath.h"
#include "zotracker/vnosal/VnResult.h"

namespace VnOSAL {

enum class EAccess : std::uint8_t
{
    Read = 1,
    Write = 2,
    ReadWrite = 3
};

// What others may do with the file while it is open. Elsewhere than on Windows this binds the users
// of this library only: nothing but None and Read is enforced, between each other.
enum class ESharing : std::uint8_t
{
    None = 0,
    Read = 1,
    Write = 2,
    ReadWrite = 3
};

enum class EOpen : std::uint8_t
{
    Existing,
    New, // fails when there is one
    OpenOrCreate,
    Truncate // an existing file loses its contents, a missing one is created
};

enum class EDurability : std::uint8_t
{
    Flushed, // what was written is on the device when the operation returns
    Unflushed
};

enum class ESeek : std::uint8_t
{
    Begin,
    Current,
    End
};

// One open file, closed with the object. Operations on a file that is not open fail with BadPath.
//
// Threads: one at a time for one object.
class ZO_VNOSAL_API VnFile
{
public:
    VnFile() noexcept = default;
    VnFile(VnFile&& other) noexcept;
    VnFile& operator=(VnFile&& other) noexcept;
    ~VnFile();

    // Closes what was open before.
    VnResult Open(const VnPath& path, EAccess access, EOpen mode = EOpen::Existing,
                  ESharing sharing = ESharing::Read) noexcept;
    void Close() noexcept;
    bool IsOpen() const noexcept { return handle != closed; }
    const VnPath& GetPath() const noexcept { return openPath; }

    // Reads up to `size` bytes; `done` is 0 at the end of the file only.
    VnResult Read(void* buffer, std::size_t size, std::size_t& done) noexcept;

    // Writes all bytes or fails.
    VnResult Write(const void* bytes, std::size_t size) noexcept;

    // Positions in bytes; beyond the end is allowed. `position`, where given, is the new one.
    VnResult Seek(std::int64_t offset, ESeek origin = ESeek::Begin,
                  std::uint64_t* position = nullptr) noexcept;
    VnResult ReadSize(std::uint64_t& size) noexcept;
    VnResult SetSize(std::uint64_t size) noexcept; // cuts, or fills with zeros; the position stays
    VnResult Flush() noexcept;                     // to the device

    // The rest of the file, if it has `limit` bytes at most; `bytes` changes only on success.
    VnResult ReadBytes(VnAString& bytes, std::size_t limit) noexcept;

    // A whole file of `limit` bytes at most as text. A byte order mark of UTF-8 or UTF-16 decides,
    // without one the bytes are in the code page `page`.
    static VnResult ReadText(const VnPath& path, VnString& text, std::size_t limit,
                             std::uint32_t page = codePageUtf8) noexcept;

    // Make the bytes, or the text in a code page, the file's contents in one step: whatever happens
    // on the way, the file afterwards holds either its old contents or the new ones. A link is
    // replaced by a file. An unflushed replacement holds against the end of the process, but not
    // against a loss of power.
    static VnResult ReplaceContents(const VnPath& path, std::string_view bytes,
                                    EDurability durability = EDurability::Flushed) noexcept;
    static VnResult ReplaceText(const VnPath& path, std::wstring_view text,
                                std::uint32_t page = codePageUtf8) noexcept;

private:
    static constexpr std::intptr_t closed = -1;

    VnResult Report(std::uint32_t error) const noexcept;

    VnPath openPath;
    std::intptr_t handle = closed;
};

} // namespace VnOSAL
