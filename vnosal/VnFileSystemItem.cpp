#include "zotracker/vnosal/VnFileSystemItem.h"

#include "vnosal/FileSystem.h"
#include "vnosal/PathText.h"
#include "vnosal/TreeOperation.h"

namespace VnOSAL {

bool VnFileSystemItem::Exists(ELinks links) const noexcept
{
    return ReadKind(links) != EItemKind::None;
}

EItemKind VnFileSystemItem::ReadKind(ELinks links) const noexcept
{
    VnItemFacts facts;
    ReadFacts(facts, links);
    return facts.kind;
}

VnResult VnFileSystemItem::ReadFacts(VnItemFacts& facts, ELinks links) const noexcept
{
    return {ReadItemFacts(path.GetText(), links, facts), path.GetText()};
}

VnResult VnFileSystemItem::SetAttributes(std::uint32_t attributes) const noexcept
{
    return {WriteAttributes(path.GetText(), attributes), path.GetText()};
}

VnResult VnFileSystemItem::SetTimes(const VnItemTimes& times) const noexcept
{
    return {WriteTimes(path.GetText(), times), path.GetText()};
}

// Climbs to a folder whose parent exists, then comes down again.
VnResult VnFileSystemItem::CreateFolderTree() const noexcept
{
    VnStringList missing;
    VnPath folder = path;
    for (;;)
    {
        const SystemError error = MakeFolder(folder.GetText());
        const EError kind = ReadErrorKind(error);
        const bool isThere = kind != EError::None &&
                             VnFileSystemItem(folder).ReadKind(ELinks::Follow) == EItemKind::Folder;
        if (kind == EError::NotFound && !isThere &&
            folder.GetParent().size() < folder.GetText().GetLength() && !folder.GetParent().empty())
        {
            missing.Append(folder.GetText());
            folder = VnPath(folder.GetParent());
            continue;
        }
        if (error != 0 && !isThere)
            return {error, folder.GetText()};
        if (missing.IsEmpty())
            return {};
        folder = VnPath(missing[missing.GetCount() - 1]);
        missing.RemoveLast();
    }
}

VnResult VnFileSystemItem::Copy(const VnPath& target, EReplace replace,
                                IVnProgress* progress) const noexcept
{
    if (target.IsBelow(path))
        return {EError::BadPath, target.GetText()};
    return CTreeOperation(progress).Copy(path.GetText(), target.GetText(), replace);
}

VnResult VnFileSystemItem::Move(const VnPath& target, EReplace replace,
                                IVnProgress* progress) noexcept
{
    VnResult moved(MoveItem(path.GetText(), target.GetText(), replace), path.GetText());
    if (moved.GetKind() == EError::OtherVolume)
    {
        moved = Copy(target, replace, progress);
        if (moved)
            moved = DeleteTree(progress);
    }
    if (moved)
        path = target;
    return moved;
}

VnResult VnFileSystemItem::Rename(std::wstring_view name) noexcept
{
    for (const wchar_t unit : name)
        if (IsSeparator(unit) || unit == 0)
            return {EError::BadPath, VnString(name)};
    const VnPath item = path.GetFileName().empty() ? VnPath(path.GetParent()) : path;
    if (name.empty() || item.GetFileName().empty())
        return {EError::BadPath, path.GetText()};
    return Move(VnPath(item).ReplaceFileName(name));
}

VnResult VnFileSystemItem::Delete() const noexcept
{
    return {RemoveItem(path.GetText()), path.GetText()};
}

VnResult VnFileSystemItem::DeleteTree(IVnProgress* progress) const noexcept
{
    return CTreeOperation(progress).Delete(path.GetText());
}

VnResult VnFileSystemItem::Recycle() const noexcept
{
    return {RecycleItem(path.GetText()), path.GetText()};
}

ESignature VnFileSystemItem::CheckSignature() const noexcept
{
    return VerifySignature(path.GetText());
}

} // namespace VnOSAL
