#include "zotracker/vnosal/VnPath.h"

#include "vnosal/PathText.h"

#include <algorithm>

namespace VnOSAL {
namespace {

constexpr std::wstring_view extendedPrefix = L"\\\\?\\";
constexpr std::wstring_view extendedUncPrefix = L"\\\\?\\UNC\\";

// Whether ".." at the front has nowhere to go and is dropped.
bool IsAnchored(EPathForm form) noexcept { return form >= EPathForm::Rooted; }

// The root with one kind of separator and one at a time, but for the two at its front.
VnString NormaliseRoot(const VnPath& path) noexcept
{
    const EPathForm form = path.GetForm();
    if (path.IsUrl())
        return path.GetRoot();
    VnString root;
    for (const wchar_t unit : path.GetRoot())
    {
        const std::size_t length = root.GetLength();
        if (!IsSeparator(unit))
            root.Append(unit);
        else if (length < 2 ? form != EPathForm::Rooted || length == 0 : root[length - 1] != L'\\')
            root.Append(L'\\');
    }
    return root;
}

std::wstring_view TrimName(std::wstring_view name) noexcept
{
    const bool endsInOneDot =
        name.size() > 1 && name.back() == L'.' && name[name.size() - 2] != L'.';
    return Part(name, 0, name.size() - (endsInOneDot ? 1 : 0));
}

// Names behind a root, "." and ".." worked off while they are appended.
class CNames
{
public:
    CNames(VnString& built, EPathForm formOf) noexcept
        : text(built), form(formOf), start(built.GetLength())
    {}

    void Append(std::wstring_view name) noexcept
    {
        if (name.empty() || name == L".")
            return;
        if (name != L"..")
            return Push(name);
        const std::size_t last = FindLast();
        if (text.GetLength() > start && std::wstring_view(text.GetMid(last)) != L"..")
            text.Remove(last == start ? start : last - 1);
        else if (!IsAnchored(form))
            Push(name);
    }

    // Takes dots and spaces off the path's end, but for "..".
    void TrimEnd() noexcept
    {
        const std::size_t last = FindLast();
        const std::wstring_view name = Part(text, last);
        if (name != L"..")
            text.Remove(last + name.find_last_not_of(L". ") + 1); // npos + 1 is 0
    }

    bool IsEmpty() const noexcept { return text.GetLength() == start; }

private:
    void Push(std::wstring_view name) noexcept
    {
        const std::size_t length = text.GetLength();
        const bool needsSeparator =
            length > start || (start != 0 && form != EPathForm::DriveRelative &&
                               !IsSeparatorIn(form, text[length - 1]));
        if (needsSeparator)
            text.Append(SeparatorOf(form));
        text.Append(name);
    }

    // Where the last name begins.
    std::size_t FindLast() const noexcept
    {
        const std::size_t separator = text.FindLast(form >= EPathForm::FileUrl ? L"/" : L"\\");
        return separator == VnString::npos || separator < start ? start : separator + 1;
    }

    VnString& text;
    const EPathForm form;
    const std::size_t start;
};

bool HasNames(const VnPath& path) noexcept
{
    return !path.GetDirectory().empty() || !path.GetFileName().empty();
}

// What stands behind the extended prefix, as it would be written without it.
VnPath StripExtended(const VnPath& path) noexcept
{
    const VnString& text = path.GetText();
    if (text.StartsWith(extendedUncPrefix, ECase::Ignore))
        return VnPath(L"\\\\" + text.GetMid(extendedUncPrefix.size()));
    const VnPath stripped(text.GetMid(extendedPrefix.size()));
    return stripped.GetForm() == EPathForm::DriveAbsolute ? stripped : path;
}

} // namespace

VnPath& VnPath::Normalise() noexcept
{
    if (form == EPathForm::Empty || form == EPathForm::Extended)
        return *this;
    VnString built = NormaliseRoot(*this);
    CNames names(built, form);
    std::wstring_view rest = GetPart(rootEnd, pathEnd);
    const bool isFolder = pathEnd > rootEnd && GetFileName().empty();
    while (!rest.empty())
    {
        const std::wstring_view name = TakeName(rest, form);
        const bool plain = IsUrl() || name == L"." || name == L"..";
        names.Append(plain ? name : TrimName(name));
    }
    if (!isFolder && !IsUrl())
        names.TrimEnd();
    if (isFolder && !names.IsEmpty())
        built.Append(SeparatorOf(form));
    if (built.IsEmpty())
        built = L".";
    return *this = VnPath(built.Append(GetQuery()));
}

VnPath& VnPath::MakeAbsolute(const VnPath& base) noexcept
{
    if (IsAbsolute())
        return Normalise();
    if (!base.IsAbsolute())
        return *this;
    if (form == EPathForm::Relative && GetDirectory().empty() && GetExtension().empty() &&
        IsDeviceName(GetFileName()))
        return *this = VnPath(L"\\\\.\\" + text);
    VnPath joined = base;
    joined.Join(*this);
    if (joined.form == EPathForm::DriveRelative)
        joined = VnPath(VnString(joined.text).Insert(2, L"\\"));
    return *this = joined.Normalise();
}

bool VnPath::MakeRelative(const VnPath& base) noexcept
{
    VnPath to = *this;
    VnPath from = base;
    to.Normalise();
    from.Normalise();
    const auto bare = [](const VnPath& path) { return VnString(path.GetRoot()).TrimRight(L"\\/"); };
    if (!to.IsAbsolute() || bare(to).Compare(bare(from), ECase::Ignore) != 0)
        return false;

    const ECase mode = form == EPathForm::WebUrl ? ECase::Respect : ECase::Ignore;
    std::wstring_view toRest = to.GetPart(to.rootEnd, to.text.GetLength());
    std::wstring_view fromRest = from.GetPart(from.rootEnd, from.pathEnd);
    while (!toRest.empty() && !fromRest.empty())
    {
        std::wstring_view toNext = toRest;
        std::wstring_view fromNext = fromRest;
        if (!EqualTexts(TakeName(toNext, form), TakeName(fromNext, form), mode))
            break;
        toRest = toNext;
        fromRest = fromNext;
    }

    VnString way;
    while (!fromRest.empty())
    {
        TakeName(fromRest, form);
        way.Append(way.IsEmpty() ? L"" : VnString(1, SeparatorOf(form))).Append(L"..");
    }
    if (!way.IsEmpty() && !toRest.empty())
        way.Append(SeparatorOf(form));
    way.Append(toRest);
    *this = VnPath(way.IsEmpty() ? VnString(L".") : way);
    return true;
}

VnPath& VnPath::MakeExtended() noexcept
{
    VnPath normal = *this;
    normal.Normalise();
    if (form == EPathForm::DriveAbsolute)
        *this = VnPath(extendedPrefix + normal.text);
    else if (form == EPathForm::Unc)
        *this = VnPath(extendedUncPrefix + normal.text.GetMid(2));
    return *this;
}

VnPath& VnPath::RemoveExtended() noexcept
{
    constexpr std::size_t longestPlain = 259;
    if (form != EPathForm::Extended)
        return *this;
    const VnPath stripped = StripExtended(*this);
    VnPath normal = stripped;
    normal.Normalise();
    const bool same = normal.text == stripped.text && !IsDeviceName(stripped.GetFileName());
    return same && stripped.text.GetLength() <= longestPlain ? *this = stripped : *this;
}

VnPath MakeComparable(const VnPath& path) noexcept
{
    VnPath comparable =
        path.GetForm() == EPathForm::Extended ? StripExtended(path) : VnPath(path).Normalise();
    comparable.MakeFilePath();
    const std::wstring_view text = comparable.GetText();
    const bool isFolder = HasNames(comparable) && comparable.GetFileName().empty();
    return isFolder ? VnPath(Part(text, 0, comparable.GetParent().size())) : comparable;
}

int VnPath::Compare(const VnPath& other) const noexcept
{
    const VnPath left = MakeComparable(*this);
    const VnPath right = MakeComparable(other);
    if (left.form != EPathForm::WebUrl || right.form != EPathForm::WebUrl)
        return left.text.Compare(right.text, ECase::Ignore);
    const int roots = CompareTexts(left.GetRoot(), right.GetRoot(), ECase::Ignore);
    return roots != 0 ? roots
                      : CompareTexts(Part(left.text, left.rootEnd), Part(right.text, right.rootEnd),
                                     ECase::Respect);
}

bool VnPath::IsBelow(const VnPath& folder) const noexcept
{
    const VnPath inner = MakeComparable(*this);
    const VnPath outer = MakeComparable(folder);
    const ECase mode = outer.form == EPathForm::WebUrl ? ECase::Respect : ECase::Ignore;
    const std::size_t length = outer.text.GetLength();
    if (outer.IsEmpty() || inner.text.GetLength() <= length ||
        !inner.text.StartsWith(outer.text, mode))
        return false;
    return IsSeparatorIn(outer.form, inner.text[length - 1]) ||
           IsSeparatorIn(outer.form, inner.text[length]);
}

} // namespace VnOSAL
