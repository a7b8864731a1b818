#pragma once

#include "vnosal/EntryList.h"
#include "vnosal/FileSystem.h"

namespace VnOSAL {

// Told of the bytes of a file as they are copied; false cancels.
class IByteCounter
{
public:
    virtual bool AddBytes(std::uint64_t count) noexcept = 0;

protected:
    ~IByteCounter() = default;
};

// Whether others may move the folder away, and put another one in its place, while the cursor is in
// it. Firm keeps the folder open so that they may not. Where the cursor works on the open folder
// itself (Linux), it stays in the one that was moved, and both are the same.
enum class EHold : std::uint8_t
{
    Loose,
    Firm
};

// A place in a tree of folders, and the operations on the names in the folder it is at. A
// name holds no separator: "d/f" is reached by going to "d" first. So once the cursor is in "d",
// nobody who puts a link in the place of "d" can lead it elsewhere.
//
// Going up needs no open folder for each level: the depth of a tree is not limited.
class CFolderCursor
{
public:
    explicit CFolderCursor(EHold holding) noexcept;
    ~CFolderCursor();
    CFolderCursor(const CFolderCursor&) = delete;
    CFolderCursor& operator=(const CFolderCursor&) = delete;

    // Goes to a folder, through links; an empty path is the process's current folder.
    SystemError Open(const VnString& path) noexcept;

    // Goes to a folder in this one. A link is an error unless it is to be followed; so is one that
    // leads to a folder above.
    SystemError Descend(std::wstring_view name, ELinks links = ELinks::Keep) noexcept;

    // Goes back to the folder above. After an error the cursor is nowhere.
    SystemError Ascend() noexcept;

    // The folder's path as it was given, and the names behind it.
    const VnString& GetPath() const noexcept;
    VnString GetPathOf(std::wstring_view name) const noexcept;

    // Whether both are at the same folder, whatever the paths say.
    bool IsSame(const CFolderCursor& other) const noexcept;

    SystemError List(CEntryList& entries) noexcept;
    SystemError ReadFacts(std::wstring_view name, ELinks links, VnItemFacts& facts) const noexcept;
    SystemError MakeFolder(std::wstring_view name) noexcept;
    SystemError Remove(std::wstring_view name, bool isFolder) noexcept; // also a read-only one
    SystemError Replace(std::wstring_view name, std::wstring_view by) noexcept; // renames `by`

    // Copy to a name that must not exist yet; nothing stays of a copy that fails.
    SystemError CopyFileAs(std::wstring_view name, CFolderCursor& target, std::wstring_view copy,
                           IByteCounter& counter) noexcept;
    SystemError CopyLinkAs(std::wstring_view name, CFolderCursor& target,
                           std::wstring_view copy) noexcept;
    SystemError CopyFolderFacts(std::wstring_view name, CFolderCursor& target,
                                std::wstring_view copy) noexcept;

private:
    struct State;
    State* state; // null without memory
};

} // namespace VnOSAL
