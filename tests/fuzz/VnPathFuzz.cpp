#include "tests/fuzz/FuzzInput.h"
#include "zotracker/vnosal/VnPath.h"

using VnOSAL::EPathForm;
using VnOSAL::VnPath;

namespace fuzz {

namespace {

void CheckParts(const VnPath& path)
{
    const std::wstring_view text = path.GetText();
    const std::wstring_view name = path.GetFileName();
    Require(std::wstring(path.GetTitle()).append(path.GetExtension()) == name, "file name");
    Require(name.empty() || text.substr(0, text.size() - path.GetQuery().size()).ends_with(name),
            "file name at the end");
    Require(text.starts_with(path.GetRoot()) && text.ends_with(path.GetQuery()), "ends");
    Require(text.starts_with(path.GetParent()), "parent");
}

// The rules that hold for what Normalise() leaves.
void CheckNormal(const VnPath& path)
{
    const EPathForm form = path.GetForm();
    if (form == EPathForm::Empty || form == EPathForm::Extended || path.IsUrl())
        return;
    std::wstring_view rest = path.GetText();
    Require(rest.find(L'/') == rest.npos, "one kind of separator");
    rest.remove_prefix(path.GetRoot().size());
    Require(rest.find(L"\\\\") == rest.npos, "one separator at a time");
    const bool mayGoUp = form == EPathForm::Relative || form == EPathForm::DriveRelative;
    bool isAtFront = true;
    while (!rest.empty())
    {
        const std::wstring_view name = rest.substr(0, rest.find(L'\\'));
        const bool isLast = name.size() == rest.size();
        Require(name != L"." || (isAtFront && isLast && mayGoUp), "no dot");
        Require(name != L".." || (isAtFront && mayGoUp), "no two dots");
        const bool isUp = name == L".." || name == L".";
        Require(isUp || !isLast || (name.back() != L'.' && name.back() != L' '), "clean end");
        isAtFront = name == L"..";
        rest.remove_prefix(isLast ? rest.size() : name.size() + 1);
    }
}

// Each way to another path.
void CheckWays(const VnPath& path, const VnPath& base)
{
    CheckParts(VnPath(base).Join(path));
    const VnPath absolute = VnPath(path).MakeAbsolute(base);
    Require(!base.IsAbsolute() || absolute.IsAbsolute(), "absolute");
    Require(VnPath(absolute).MakeAbsolute(base).GetText() == absolute.GetText(), "absolute twice");
    VnPath way = absolute;
    way.MakeRelative(base);
    CheckParts(way);
    VnPath extended = path;
    CheckParts(extended.MakeExtended());
    CheckParts(extended.RemoveExtended());
    VnPath local = VnPath::FromFilePath(path);
    CheckParts(local);
    if (local.MakeFilePath())
        CheckParts(local);
    VnPath renamed = path;
    CheckParts(renamed.ReplaceFileName(base.GetFileName()));
    CheckParts(renamed.ReplaceExtension(base.GetExtension()));
}

} // namespace

// A path and a base, a line each.
void Check(FuzzInput input)
{
    const VnPath path(input.TakeUnits());
    const VnPath base(input.TakeUnits());
    CheckParts(path);
    const VnPath normal = VnPath(path).Normalise();
    CheckParts(normal);
    CheckNormal(normal);
    Require(VnPath(normal).Normalise().GetText() == normal.GetText(), "normal twice");
    CheckWays(path, base);
    Require(path.IsSame(path), "same");
    Require((path.Compare(base) < 0) == (base.Compare(path) > 0), "order");
    Require(!path.IsBelow(base) || !base.IsBelow(path), "below each other");
    Require(!VnPath::IsValidFileName(path.GetText()) || path.GetText() == path.GetFileName(),
            "a file's name");
}

} // namespace fuzz
