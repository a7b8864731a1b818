#include "tests/fuzz/FuzzInput.h"
#include "zotracker/vnosal/VnPath.h"

using fuzz::Require;
using VnOSAL::EPathForm;
using VnOSAL::VnPath;

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

void CheckWay(const VnPath& path, const VnPath& base)
{
    VnPath absolute = path;
    absolute.MakeAbsolute(base);
    Require(!base.IsAbsolute() || absolute.IsAbsolute(), "absolute");
    VnPath again = absolute;
    Require(again.MakeAbsolute(base).GetText() == absolute.GetText(), "absolute twice");
    Require((path.Compare(base) < 0) == (base.Compare(path) > 0), "order");
    Require(path.IsSame(path), "same");
    VnPath joined = base;
    CheckParts(joined.Join(path));
    VnPath way = absolute;
    way.MakeRelative(base);
    CheckParts(way);
}

} // namespace

// A path and a base, a line each.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    fuzz::CFuzzInput input(data, size);
    const VnPath path(input.TakeUnits());
    const VnPath base(input.TakeUnits());
    CheckParts(path);
    VnPath normal = path;
    CheckParts(normal.Normalise());
    CheckNormal(normal);
    VnPath again = normal;
    Require(again.Normalise().GetText() == normal.GetText(), "normal twice");
    CheckWay(path, base);
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
    Require(!VnPath::IsValidFileName(path.GetText()) || path.GetText() == path.GetFileName(),
            "a file's name");
    Require(!path.IsBelow(base) || !base.IsBelow(path), "below each other");
    return 0;
}
