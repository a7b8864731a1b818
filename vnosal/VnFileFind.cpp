#include "zotracker/vnosal/VnFileFind.h"

#include "vnosal/CaseMap.h"
#include "vnosal/FolderCursor.h"

#include <new>

namespace VnOSAL {

struct VnFileFind::State
{
    // The entries of one folder in the list.
    struct Level
    {
        std::size_t first;
        std::size_t next;
    };

    void Fail(SystemError error, const VnString& item) noexcept
    {
        if (result)
            result = VnResult(error, item);
    }

    // A link that leads to no folder, or to one above, is only an item.
    void Enter() noexcept
    {
        const VnString name(entries.GetName(current));
        const bool isLink = entries.GetKind(current) == EItemKind::Link;
        const SystemError error = cursor.Descend(name, isLink ? ELinks::Follow : ELinks::Keep);
        if (error == 0)
            return List();
        if (!isLink)
            Fail(error, cursor.GetPathOf(name));
    }

    // An unreadable folder is entered and left again like an empty one.
    void List() noexcept
    {
        const std::size_t first = entries.GetCount();
        const SystemError error = cursor.List(entries);
        if (error != 0)
            Fail(error, cursor.GetPath());
        if (!levels.Append({first, first}))
            Fail(NumberOf(EError::OutOfMemory), cursor.GetPath());
    }

    // Goes on where the folder was entered; when that cannot be done, the search ends.
    void Leave() noexcept
    {
        entries.Cut(levels.GetLast().first);
        levels.Cut(levels.GetCount() - 1);
        if (levels.IsEmpty())
            return;
        const SystemError error = cursor.Ascend();
        if (error == 0)
            return;
        Fail(error, cursor.GetPath());
        levels.Cut(0);
    }

    bool IsEntered(EItemKind kind) const noexcept
    {
        return options.recursive &&
               (kind == EItemKind::Folder || (kind == EItemKind::Link && options.followLinks));
    }

    CFolderCursor cursor{EHold::Loose};
    CEntryList entries;
    CArray<Level> levels;
    VnString pattern;
    VnFindOptions options;
    VnResult result;
    std::size_t current = 0;
    bool entersCurrent = false;
};

VnFileFind::VnFileFind(const VnPath& folder, std::wstring_view pattern,
                       VnFindOptions options) noexcept
    : state(new (std::nothrow) State)
{
    if (!state)
        return;
    state->pattern = pattern;
    state->options = options;
    const SystemError error = state->cursor.Open(folder.GetText());
    if (error != 0)
        state->Fail(error, folder.GetText());
    else
        state->List();
}

VnFileFind::~VnFileFind() { delete state; }

bool VnFileFind::Next() noexcept
{
    if (!state)
        return false;
    if (state->entersCurrent)
        state->Enter();
    state->entersCurrent = false;
    while (!state->levels.IsEmpty())
    {
        State::Level& level = state->levels.GetLast();
        if (level.next == state->entries.GetCount())
        {
            state->Leave();
            continue;
        }
        state->current = level.next++;
        state->entersCurrent = state->IsEntered(GetKind());
        if (MatchesPattern(state->entries.GetName(state->current), state->pattern))
            return true;
        if (state->entersCurrent)
            state->Enter();
        state->entersCurrent = false;
    }
    return false;
}

void VnFileFind::SkipFolder() noexcept
{
    if (state)
        state->entersCurrent = false;
}

VnPath VnFileFind::GetPath() const noexcept
{
    return VnPath(state->cursor.GetPathOf(state->entries.GetName(state->current)));
}

VnString VnFileFind::GetName() const noexcept
{
    return VnString(state->entries.GetName(state->current));
}

EItemKind VnFileFind::GetKind() const noexcept { return state->entries.GetKind(state->current); }

std::size_t VnFileFind::GetDepth() const noexcept { return state->levels.GetCount() - 1; }

VnResult VnFileFind::ReadFacts(VnItemFacts& facts, ELinks links) const noexcept
{
    const std::wstring_view name = state->entries.GetName(state->current);
    const SystemError error = state->cursor.ReadFacts(name, links, facts);
    return error == 0 ? VnResult() : VnResult(error, state->cursor.GetPathOf(name));
}

VnResult VnFileFind::GetResult() const noexcept
{
    return state ? state->result : VnResult(EError::OutOfMemory, VnString());
}

// Where "*" was met last, one more unit is given to it whenever the rest does not match.
bool VnFileFind::MatchesPattern(std::wstring_view name, std::wstring_view pattern) noexcept
{
    if (pattern == L"*.*")
        return true;
    std::size_t n = 0;
    std::size_t p = 0;
    std::size_t star = VnString::npos;
    std::size_t starName = 0;
    while (n < name.size())
    {
        if (p < pattern.size() && pattern[p] == L'*')
        {
            star = ++p;
            starName = n;
        }
        else if (p < pattern.size() &&
                 (pattern[p] == L'?' || FoldUnit(pattern[p]) == FoldUnit(name[n])))
        {
            ++p;
            ++n;
        }
        else if (star != VnString::npos)
        {
            p = star;
            n = ++starName;
        }
        else
            return false;
    }
    while (p < pattern.size() && pattern[p] == L'*')
        ++p;
    return p == pattern.size();
}

} // namespace VnOSAL
