#include "vnosal/TreeOperation.h"

#include "vnosal/PathText.h"

#include <atomic>

namespace VnOSAL {
namespace {

// False when the path does not end in the name of an item.
bool SplitItem(const VnString& path, VnString& folder, VnString& name) noexcept
{
    VnPath item(CleanPath(path));
    if (item.GetFileName().empty())
        item = VnPath(item.GetParent());
    folder = item.GetParent();
    name = item.GetFileName();
    return !name.IsEmpty() && name != L"." && name != L".." && !item.IsUrl();
}

} // namespace

VnString MakeTemporaryName() noexcept
{
    static std::atomic<std::uint32_t> number{0};
    return VnString::Format(L"~%x-%x.tmp", GetProcessNumber(), ++number);
}

VnResult CTreeOperation::Delete(const VnString& path) noexcept
{
    return Begin(path) ? Run() : result;
}

VnResult CTreeOperation::Copy(const VnString& path, const VnString& targetPath,
                              EReplace mode) noexcept
{
    isCopying = true;
    replace = mode;
    return Begin(path) && BeginTarget(targetPath) ? Run() : result;
}

bool CTreeOperation::Begin(const VnString& path) noexcept
{
    VnString folder;
    VnString name;
    VnItemFacts facts;
    SystemError error =
        SplitItem(path, folder, name) ? source.Open(folder) : NumberOf(EError::BadPath);
    if (error == 0)
        error = source.ReadFacts(name, ELinks::Keep, facts);
    if (error == 0 && (!entries.Append(name, facts.kind) || !levels.Append({0, 0})))
        error = NumberOf(EError::OutOfMemory);
    result = VnResult(error, path);
    return error == 0;
}

bool CTreeOperation::BeginTarget(const VnString& path) noexcept
{
    VnString folder;
    const SystemError error =
        SplitItem(path, folder, rootCopyName) ? target.Open(folder) : NumberOf(EError::BadPath);
    targetRootPath = path;
    result = VnResult(error, path);
    return error == 0;
}

VnResult CTreeOperation::Run() noexcept
{
    while (!isEnded && !levels.IsEmpty())
    {
        Level& level = levels.GetLast();
        if (level.next == entries.GetCount())
            LeaveFolder();
        else
            Visit(level.next++);
    }
    return result;
}

void CTreeOperation::Visit(std::size_t index) noexcept
{
    const VnString name(entries.GetName(index));
    const EItemKind kind = entries.GetKind(index);
    current = source.GetPathOf(name);
    if (!Report())
        return Fail(NumberOf(EError::Cancelled), current);
    if (kind == EItemKind::Folder)
        return EnterFolder(name);
    const SystemError error = isCopying ? CopyItem(name, kind) : source.Remove(name, false);
    if (error != 0)
        Fail(error, current);
    else
        ++itemCount;
}

void CTreeOperation::EnterFolder(const VnString& name) noexcept
{
    SystemError error = source.Descend(name);
    if (error != 0)
        return Fail(error, current);
    const std::size_t first = entries.GetCount();
    if (isCopying)
        error = EnterTarget(name);
    if (error == 0)
        error = source.List(entries);
    if (error == 0 && !levels.Append({first, first}))
        error = NumberOf(EError::OutOfMemory);
    if (error == 0)
        return;
    entries.Cut(first);
    Fail(error, current);
    isEnded = isEnded || source.Ascend() != 0;
}

// Goes down to the copy of the folder that the source has gone to. That the source never is the
// copy itself keeps a copy into the tree from going on for ever.
SystemError CTreeOperation::EnterTarget(const VnString& name) noexcept
{
    const VnString& copy = GetCopyName(name);
    const bool isTop = levels.GetCount() == 1;
    if (!isTop && source.IsSame(copyRoot))
        return NumberOf(EError::BadPath);
    SystemError error = target.MakeFolder(copy);
    if (replace == EReplace::Existing && ReadErrorKind(error) == EError::Exists)
        error = 0;
    if (error == 0)
        error = target.Descend(copy);
    if (error == 0 && isTop)
        error = copyRoot.Open(target.GetPath());
    if (error == 0 && source.IsSame(target))
        error = NumberOf(EError::BadPath);
    return error;
}

void CTreeOperation::LeaveFolder() noexcept
{
    entries.Cut(levels.GetLast().first);
    levels.Cut(levels.GetCount() - 1);
    if (levels.IsEmpty())
        return;
    const VnString name(entries.GetName(levels.GetLast().next - 1));
    current = source.GetPath();
    SystemError error = source.Ascend();
    if (error == 0 && isCopying)
        error = target.Ascend();
    if (error != 0)
    {
        Fail(error, current);
        isEnded = true;
        return;
    }
    FinishFolder(name);
}

void CTreeOperation::FinishFolder(const VnString& name) noexcept
{
    const SystemError error = isCopying ? source.CopyFolderFacts(name, target, GetCopyName(name))
                                        : source.Remove(name, true);
    if (error != 0)
        Fail(error, current);
    else
        ++itemCount;
}

const VnString& CTreeOperation::GetCopyName(const VnString& name) const noexcept
{
    return levels.GetCount() == 1 ? rootCopyName : name;
}

// What is replaced stays whole until its replacement is complete.
SystemError CTreeOperation::CopyItem(const VnString& name, EItemKind kind) noexcept
{
    const VnString& copy = GetCopyName(name);
    if (replace == EReplace::Refuse)
        return CopyAs(name, kind, copy);
    VnString temporary;
    SystemError error = CreateTemporary(
        temporary, [&](const VnString& made) noexcept { return CopyAs(name, kind, made); });
    if (error == 0)
    {
        error = target.Replace(copy, temporary);
        if (error != 0)
            target.Remove(temporary, false);
    }
    return error;
}

SystemError CTreeOperation::CopyAs(const VnString& name, EItemKind kind,
                                   const VnString& copy) noexcept
{
    switch (kind)
    {
    case EItemKind::File:
        return source.CopyFileAs(name, target, copy, *this);
    case EItemKind::Link:
        return source.CopyLinkAs(name, target, copy);
    default:
        return NumberOf(EError::NotSupported);
    }
}

bool CTreeOperation::AddBytes(std::uint64_t count) noexcept
{
    byteCount += count;
    return Report();
}

bool CTreeOperation::Report() noexcept
{
    return !progress || progress->ReportProgress({current, itemCount, byteCount});
}

void CTreeOperation::Fail(SystemError error, const VnString& item) noexcept
{
    const VnResult failure(error, item);
    if (result)
        result = failure;
    if (failure.GetKind() == EError::Cancelled)
    {
        result = failure;
        isEnded = true;
    }
    else
        isEnded = !progress || !progress->ReportFailure(failure);
}

} // namespace VnOSAL
