#pragma once

#include "vnosal/FolderCursor.h"

namespace VnOSAL {

// Deletes or copies an item with everything below it. Goes down and up with a cursor and keeps what
// is still to be done in a list, so that neither depth nor width of the tree is limited by the
// stack. For one operation.
class CTreeOperation : private IByteCounter
{
public:
    explicit CTreeOperation(IVnProgress* follower) noexcept : progress(follower) {}

    VnResult Delete(const VnString& path) noexcept;
    VnResult Copy(const VnString& path, const VnString& targetPath, EReplace mode) noexcept;

private:
    // The entries of one folder in the list.
    struct Level
    {
        std::size_t first;
        std::size_t next;
    };

    bool Begin(const VnString& path) noexcept;
    bool BeginTarget(const VnString& path) noexcept;
    VnResult Run() noexcept;
    void Visit(std::size_t index) noexcept;
    void EnterFolder(const VnString& name) noexcept;
    void LeaveFolder() noexcept;
    void FinishFolder(const VnString& name) noexcept;
    SystemError EnterTarget(const VnString& name) noexcept;
    SystemError CopyItem(const VnString& name, EItemKind kind) noexcept;
    SystemError CopyAs(const VnString& name, EItemKind kind, const VnString& copy) noexcept;
    const VnString& GetCopyName(const VnString& name) const noexcept;
    bool AddBytes(std::uint64_t count) noexcept override;
    bool Report() noexcept;
    void Fail(SystemError error, const VnString& item) noexcept;

    IVnProgress* const progress;
    CFolderCursor source{EHold::Firm};
    CFolderCursor target{EHold::Firm};
    CFolderCursor copyRoot{EHold::Loose}; // the copy of the folder at the top
    CEntryList entries;
    CArray<Level> levels;
    VnString current; // the item that is being worked on
    VnString rootCopyName;
    VnString targetRootPath;
    VnResult result;
    std::uint64_t itemCount = 0;
    std::uint64_t byteCount = 0;
    EReplace replace = EReplace::Refuse;
    bool isCopying = false;
    bool isEnded = false;
};

} // namespace VnOSAL
