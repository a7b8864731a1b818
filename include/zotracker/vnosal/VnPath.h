#pragma once

#include "zotracker/vnosal/VnString.h"

namespace VnOSAL {

enum class EPathForm : std::uint8_t
{
    Empty,
    Relative,      // a\b
    DriveRelative, // C:a\b
    Rooted,        // \a\b
    DriveAbsolute, // C:\a\b
    Unc,           // \\server\share\a
    Device,        // \\.\device\a
    Extended,      // \\?\C:\a, \\?\UNC\server\share\a, \\?\Volume{...}\a
    FileUrl,       // file:///C:/a, file://server/share/a
    WebUrl         // http://host/a?query#fragment, also https
};

// A path, taken apart after the documented rules of Windows, on every system:
//
//     \\server\share\ reports\2024 \ summary.txt
//     root            directory    | title + extension = file name
//
// "/" separates as "\" does, except in the extended form. Root, directory and file name put
// together give the whole path again, but for the separator behind the directory. The root ends
// behind its separator, if there is one; the directory has no separator at its ends; an extension
// begins at the last "." of the file name and contains it. "." and ".." are file names without an
// extension. In an address the root goes up to the "/" that begins the path, and the query and
// fragment belong to no part but their own.
//
// Names are compared without regard to case, as Windows' file systems do, the path of an http
// address with regard to it.
//
// No operation touches the disk. What is returned as a view is valid until the path changes or
// goes. Operations that have no meaning for a path leave it as it is.
//
// Threads and errors: as VnString.
class ZO_VNOSAL_API VnPath
{
public:
    VnPath() noexcept = default;
    VnPath(const wchar_t* path) noexcept : VnPath(VnString(path)) {}
    VnPath(std::wstring_view path) noexcept : VnPath(VnString(path)) {}
    VnPath(VnString path) noexcept;

    // Root and directory, a separator if one is needed, title and extension; an extension may come
    // without its ".".
    static VnPath FromParts(std::wstring_view root, std::wstring_view directory,
                            std::wstring_view title, std::wstring_view extension) noexcept;

    // The address of an absolute file path, percent-encoded (RFC 8089); empty for other forms.
    static VnPath FromFilePath(const VnPath& path) noexcept;

    // A shell special folder by its CSIDL number, without a separator at its end; empty when there
    // is none, and always elsewhere than on Windows.
    static VnPath GetSpecialFolder(int number) noexcept;

    const VnString& GetText() const noexcept { return text; }
    EPathForm GetForm() const noexcept { return form; }
    bool IsEmpty() const noexcept { return text.IsEmpty(); }
    bool IsUrl() const noexcept { return form >= EPathForm::FileUrl; }
    bool IsAbsolute() const noexcept { return form >= EPathForm::DriveAbsolute; }

    std::wstring_view GetRoot() const noexcept { return GetPart(0, rootEnd); }
    std::wstring_view GetDirectory() const noexcept { return GetPart(rootEnd, directoryEnd); }
    std::wstring_view GetFileName() const noexcept { return GetPart(nameStart, pathEnd); }
    std::wstring_view GetTitle() const noexcept { return GetPart(nameStart, extensionStart); }
    std::wstring_view GetExtension() const noexcept { return GetPart(extensionStart, pathEnd); }
    std::wstring_view GetQuery() const noexcept { return GetPart(pathEnd, text.GetLength()); }

    // Root and directory; of "C:\a\" it is "C:\a", of "C:\a" it is "C:\".
    std::wstring_view GetParent() const noexcept { return GetPart(0, directoryEnd); }

    VnPath& ReplaceFileName(std::wstring_view name) noexcept;
    VnPath& ReplaceExtension(std::wstring_view extension) noexcept; // empty removes it

    // Appends a relative path behind a separator. A path that names a root of its own replaces what
    // it does not continue: "C:\a" with "\b" is "C:\b", with "C:b" "C:\a\b", with "D:b" "D:b".
    VnPath& Join(const VnPath& tail) noexcept;

    // One kind of separator and one at a time, no "." and no ".." that has something to go up from,
    // no "." at the end of a name, no dots and spaces at the path's end. The extended form stays as
    // it is.
    VnPath& Normalise() noexcept;

    // Completes a path from the absolute path `base` and normalises it. A drive-relative path of
    // another drive starts at that drive's root; the name of a device, for example "NUL", becomes
    // "\\.\NUL".
    VnPath& MakeAbsolute(const VnPath& base) noexcept;

    // The way from the folder `base` to an absolute path, "." when both are the same. Both are
    // normalised for it. False, with the path unchanged, when they have no root in common.
    bool MakeRelative(const VnPath& base) noexcept;

    // \\?\ in front of an absolute path, so that it may be longer than 260 units, and away again
    // where the path can do without. Normalises, because the system does not do so with these.
    VnPath& MakeExtended() noexcept;
    VnPath& RemoveExtended() noexcept;

    // A file address becomes the file path it names. False, with the path unchanged, when it is
    // none or names no file.
    bool MakeFilePath() noexcept;

    // Below, equal to or above 0: the order of the normalised paths. The extended form and a
    // separator at the end make no difference.
    int Compare(const VnPath& other) const noexcept;
    bool IsSame(const VnPath& other) const noexcept { return Compare(other) == 0; }

    // Whether the path lies below the folder `folder`.
    bool IsBelow(const VnPath& folder) const noexcept;

    // Whether Windows takes a file of that name for a device: CON, NUL, COM1 and others, with any
    // extension.
    static bool IsDeviceName(std::wstring_view name) noexcept;

    // Whether `name` can name a file on Windows.
    static bool IsValidFileName(std::wstring_view name) noexcept;

private:
    std::wstring_view GetPart(std::size_t start, std::size_t end) const noexcept
    {
        return {text.GetText() + start, end - start};
    }
    void Parse() noexcept;

    VnString text;
    std::uint32_t rootEnd = 0;
    std::uint32_t directoryEnd = 0;
    std::uint32_t nameStart = 0;
    std::uint32_t extensionStart = 0;
    std::uint32_t pathEnd = 0;
    EPathForm form = EPathForm::Empty;
};

} // namespace VnOSAL
