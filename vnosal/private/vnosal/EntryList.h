#pragma once

#include "zotracker/vnosal/VnFileSystemItem.h"

#include "vnosal/Array.h"

namespace VnOSAL {

// Names of folders' items with their kinds; the names lie in one text. What was appended last can
// be cut off again, so that one list serves for all levels of a tree.
class CEntryList
{
public:
    // False without memory.
    bool Append(std::wstring_view name, EItemKind kind) noexcept
    {
        const auto start = static_cast<std::uint32_t>(names.GetLength());
        names.Append(name);
        return names.IsValid() &&
               entries.Append({start, static_cast<std::uint32_t>(name.size()), kind});
    }
    void Cut(std::size_t count) noexcept
    {
        if (count < entries.GetCount())
            names.Remove(entries[count].start);
        entries.Cut(count);
    }
    std::size_t GetCount() const noexcept { return entries.GetCount(); }
    EItemKind GetKind(std::size_t index) const noexcept { return entries[index].kind; }

    // Valid until the list changes.
    std::wstring_view GetName(std::size_t index) const noexcept
    {
        return {names.GetText() + entries[index].start, entries[index].length};
    }

private:
    struct Entry
    {
        std::uint32_t start;
        std::uint32_t length;
        EItemKind kind;
    };

    VnString names;
    CArray<Entry> entries;
};

} // namespace VnOSAL
