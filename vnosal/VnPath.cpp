#include "zotracker/vnosal/VnPath.h"

#include "vnosal/PathText.h"

#include <algorithm>

namespace VnOSAL {
namespace {

constexpr std::wstring_view extendedPrefixes[] = {L"\\\\?\\", L"\\??\\"};

bool StartsAs(std::wstring_view text, std::wstring_view start) noexcept
{
    return EqualTexts(Part(text, 0, start.size()), start, ECase::Ignore);
}

bool IsSeparatorAt(std::wstring_view text, std::size_t position) noexcept
{
    return position < text.size() && IsSeparator(text[position]);
}

// "\\." and "\\?" with any separators, and nothing but one behind them.
bool IsDevicePrefix(std::wstring_view text) noexcept
{
    return text.size() >= 3 && (text[2] == L'.' || text[2] == L'?') &&
           (text.size() == 3 || IsSeparator(text[3]));
}

EPathForm ReadForm(std::wstring_view text) noexcept
{
    if (text.empty())
        return EPathForm::Empty;
    for (const std::wstring_view prefix : extendedPrefixes)
        if (text.starts_with(prefix))
            return EPathForm::Extended;
    if (IsSeparator(text[0]) && IsSeparatorAt(text, 1))
        return IsDevicePrefix(text) ? EPathForm::Device : EPathForm::Unc;
    if (IsSeparator(text[0]))
        return EPathForm::Rooted;
    if (IsDrive(text))
        return IsSeparatorAt(text, 2) ? EPathForm::DriveAbsolute : EPathForm::DriveRelative;
    if (StartsAs(text, L"file:/"))
        return EPathForm::FileUrl;
    if (StartsAs(text, L"http://") || StartsAs(text, L"https://"))
        return EPathForm::WebUrl;
    return EPathForm::Relative;
}

// Moves behind `count` names and the separators that follow each.
std::size_t SkipNames(std::wstring_view path, EPathForm form, std::size_t from,
                      std::size_t count) noexcept
{
    std::wstring_view rest = Part(path, from);
    for (; count != 0; --count)
        TakeName(rest, form);
    return path.size() - rest.size();
}

// The root of a device path: its volume, or server and share.
std::size_t MeasureVolume(std::wstring_view path, EPathForm form) noexcept
{
    std::wstring_view rest = Part(path, 4);
    const std::wstring_view volume = TakeName(rest, form);
    return SkipNames(path, form, 4, EqualTexts(volume, L"UNC", ECase::Ignore) ? 3 : 1);
}

// The host may be missing or empty; a drive belongs to the root.
std::size_t MeasureFileUrlRoot(std::wstring_view path) noexcept
{
    constexpr std::size_t scheme = 5; // "file:"
    std::size_t end = scheme + 1;
    if (Part(path, scheme, 2) == L"//")
    {
        end = std::min(path.find(L'/', scheme + 2), path.size());
        end += end < path.size() ? 1 : 0;
    }
    if (!IsDrive(Part(path, end)) || (end + 2 < path.size() && path[end + 2] != L'/'))
        return end;
    return std::min(end + 3, path.size());
}

std::size_t MeasureRoot(std::wstring_view path, EPathForm form) noexcept
{
    switch (form)
    {
    case EPathForm::DriveRelative:
        return 2;
    case EPathForm::DriveAbsolute:
    case EPathForm::Rooted:
        return SkipNames(path, form, 0, 1);
    case EPathForm::Unc:
        return SkipNames(path, form, 2, 2);
    case EPathForm::Device:
    case EPathForm::Extended:
        return MeasureVolume(path, form);
    case EPathForm::FileUrl:
        return MeasureFileUrlRoot(path);
    case EPathForm::WebUrl:
        return SkipNames(path, form, path.find(L"//") + 2, 1);
    default:
        return 0;
    }
}

} // namespace

std::wstring_view TakeName(std::wstring_view& rest, EPathForm form) noexcept
{
    std::size_t end = 0;
    while (end < rest.size() && !IsSeparatorIn(form, rest[end]))
        ++end;
    const std::wstring_view name = Part(rest, 0, end);
    while (end < rest.size() && IsSeparatorIn(form, rest[end]))
        ++end;
    rest.remove_prefix(end);
    return name;
}

VnPath::VnPath(VnString path) noexcept : text(static_cast<VnString&&>(path)) { Parse(); }

void VnPath::Parse() noexcept
{
    const std::wstring_view all = text;
    form = ReadForm(all);
    const std::size_t end = IsUrl() ? std::min(all.find_first_of(L"?#"), all.size()) : all.size();
    const std::wstring_view path = Part(all, 0, end);
    const std::size_t root = MeasureRoot(path, form);
    std::size_t name = end;
    while (name > root && !IsSeparatorIn(form, path[name - 1]))
        --name;
    std::size_t directory = name;
    while (directory > root && IsSeparatorIn(form, path[directory - 1]))
        --directory;
    const std::wstring_view fileName = Part(path, name);
    std::size_t extension = fileName.rfind(L'.');
    if (extension == VnString::npos || fileName == L"." || fileName == L"..")
        extension = fileName.size();

    rootEnd = static_cast<std::uint32_t>(root);
    directoryEnd = static_cast<std::uint32_t>(directory);
    nameStart = static_cast<std::uint32_t>(name);
    extensionStart = static_cast<std::uint32_t>(name + extension);
    pathEnd = static_cast<std::uint32_t>(end);
}

VnPath VnPath::FromParts(std::wstring_view root, std::wstring_view directory,
                         std::wstring_view title, std::wstring_view extension) noexcept
{
    VnString name(title);
    if (!extension.empty() && extension[0] != L'.')
        name.Append(L'.');
    VnPath path(root);
    if (!directory.empty())
        path.Join(VnPath(directory));
    name.Append(extension);
    return name.IsEmpty() ? path : path.Join(VnPath(name));
}

VnPath& VnPath::ReplaceFileName(std::wstring_view name) noexcept
{
    return *this = VnPath(VnString(text).Replace(nameStart, pathEnd - nameStart, name));
}

VnPath& VnPath::ReplaceExtension(std::wstring_view extension) noexcept
{
    if (GetTitle().empty() && GetExtension().empty())
        return *this;
    VnString next(extension);
    if (!next.IsEmpty() && next[0] != L'.')
        next.Insert(0, L".");
    return *this = VnPath(VnString(text).Replace(extensionStart, pathEnd - extensionStart, next));
}

VnPath& VnPath::Join(const VnPath& tail) noexcept
{
    if (IsEmpty() || tail.IsAbsolute())
        return *this = tail;
    if (tail.IsEmpty())
        return *this;
    const bool hasDrive = form == EPathForm::DriveAbsolute || form == EPathForm::DriveRelative;
    const std::wstring_view drive = Part(tail.GetRoot(), 0, 2);
    if (tail.form == EPathForm::DriveRelative &&
        !(hasDrive && EqualTexts(Part(GetRoot(), 0, 2), drive, ECase::Ignore)))
        return *this = tail;

    const bool fromRoot = tail.form == EPathForm::Rooted;
    VnString joined(fromRoot ? GetRoot() : GetPart(0, pathEnd));
    const std::size_t length = joined.GetLength();
    const bool isBareDrive = form == EPathForm::DriveRelative && length == 2;
    if (length == 0 || (!IsSeparatorIn(form, joined[length - 1]) && (fromRoot || !isBareDrive)))
        joined.Append(SeparatorOf(form));
    joined.Append(tail.GetPart(tail.rootEnd, tail.text.GetLength()));
    return *this = VnPath(joined);
}

} // namespace VnOSAL
