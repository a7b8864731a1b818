#pragma once

#include "zotracker/vnosal/VnPath.h"
#include "zotracker/vnosal/VnResult.h"
#include "zotracker/vnosal/VnStringList.h"

namespace VnOSAL {

enum class EItemKind : std::uint8_t
{
    None, // there is no such item
    File,
    Folder,
    Link, // a symbolic link or a junction, whatever it leads to
    Other // a device, a pipe, a socket
};

// Whether an operation is about a link or about what it leads to.
enum class ELinks : std::uint8_t
{
    Keep,
    Follow
};

enum class EReplace : std::uint8_t
{
    Refuse,  // an item that is there already is a failure
    Existing // files are replaced each in one step, folders are merged
};

// Attributes with their Windows values. Elsewhere ReadOnly means that nobody has the right to
// write, Hidden that the name begins with "."; only the former can be set there.
inline constexpr std::uint32_t attributeReadOnly = 0x01;
inline constexpr std::uint32_t attributeHidden = 0x02;
inline constexpr std::uint32_t attributeSystem = 0x04;
inline constexpr std::uint32_t attributeFolder = 0x10;
inline constexpr std::uint32_t attributeArchive = 0x20;
inline constexpr std::uint32_t attributeNormal = 0x80;

// Times in units of 100 nanoseconds since 1970-01-01 00:00 UTC. `noTime` is a time that the file
// system does not know, or that is to stay as it is.
inline constexpr std::int64_t noTime = INT64_MIN;

struct VnItemTimes
{
    std::int64_t created = noTime;
    std::int64_t written = noTime;
    std::int64_t accessed = noTime;
};

struct VnItemFacts
{
    EItemKind kind = EItemKind::None;
    std::uint32_t attributes = 0;
    std::uint64_t size = 0; // bytes; 0 for what is no file
    VnItemTimes times;
};

enum class ESignature : std::uint8_t
{
    Valid,
    Invalid,     // altered, or nobody whom the system trusts has signed it
    None,        // not signed
    CannotVerify // there is no such item, or no such service: always so elsewhere than on Windows
};

// How far an operation has come.
struct VnProgress
{
    const VnString& item;    // the item it is at
    std::uint64_t itemCount; // items finished
    std::uint64_t byteCount; // bytes copied
};

// Follows a long operation. Called by the thread that called the operation; must not throw.
class IVnProgress
{
public:
    // Before each item, and after each part of a large file. False cancels: what is finished stays,
    // a file begun does not.
    virtual bool ReportProgress(const VnProgress& progress) noexcept = 0;

    // True goes on with the next item; the operation still ends with its first failure.
    virtual bool ReportFailure(const VnResult& failure) noexcept = 0;

protected:
    ~IVnProgress() = default;
};

// An item of the file system, by its path. Every operation looks at the disk anew.
//
// Operations on a tree work through folders that they hold, and enter no link: whatever happens in
// the tree meanwhile, nothing outside of it is touched. A link in the tree is copied, moved or
// deleted as the link it is. The depth of a tree is not limited.
//
// Elsewhere than on Windows both "/" and "\" separate, a path that names a drive, a server or an
// address is refused (BadPath).
//
// Threads: one at a time for one object.
class ZO_VNOSAL_API VnFileSystemItem
{
public:
    explicit VnFileSystemItem(VnPath itemPath) noexcept : path(static_cast<VnPath&&>(itemPath)) {}

    const VnPath& GetPath() const noexcept { return path; }

    bool Exists(ELinks links = ELinks::Keep) const noexcept;
    EItemKind ReadKind(ELinks links = ELinks::Keep) const noexcept;
    VnResult ReadFacts(VnItemFacts& facts, ELinks links = ELinks::Keep) const noexcept;

    // Of what a link leads to.
    VnResult SetAttributes(std::uint32_t attributes) const noexcept;
    VnResult SetTimes(const VnItemTimes& times) const noexcept;

    // Creates the folder and the folders above it; one that is there already is no failure.
    VnResult CreateFolderTree() const noexcept;

    // `target` is the path of the copy itself. Attributes and times are copied too.
    VnResult Copy(const VnPath& target, EReplace replace = EReplace::Refuse,
                  IVnProgress* progress = nullptr) const noexcept;

    // In one step within a volume, otherwise by copying and deleting. The object then stands for
    // the item at its new place.
    VnResult Move(const VnPath& target, EReplace replace = EReplace::Refuse,
                  IVnProgress* progress = nullptr) noexcept;
    VnResult Rename(std::wstring_view name) noexcept;

    VnResult Delete() const noexcept; // a file, a link or an empty folder
    VnResult DeleteTree(IVnProgress* progress = nullptr) const noexcept;

    // To the user's recycle bin; NotSupported where there is none for the volume, and always
    // elsewhere than on Windows.
    VnResult Recycle() const noexcept;

    // The Authenticode signature of an executable, as the system's policy judges it.
    ESignature CheckSignature() const noexcept;

    // A shell library is a file that lists folders, with the extension ".library-ms". A known
    // folder in it is resolved where the system knows it, otherwise it stays
    // "knownfolder:{...}".
    bool IsLibrary() const noexcept;
    VnResult ReadLibraryFolders(VnStringList& folders) const noexcept;

private:
    VnPath path;
};

} // namespace VnOSAL
