#pragma once

#include "zotracker/vnosal/VnFileSystemItem.h"

namespace VnOSAL {

struct VnFindOptions
{
    bool recursive = false;
    bool followLinks = false; // enters the folders that links lead to, none twice on one way down
};

// Goes through the items of a folder:
//
//     VnFileFind find(L"C:\\logs", L"*.log", {.recursive = true});
//     while (find.Next())
//         Use(find.GetPath());
//
// A pattern stands for whole names, without regard to case: "*" for any units, "?" for one; "*.*"
// means all names. It decides which items are found, not which folders are entered. Items come in
// the system's order, a folder before what is in it.
//
// A folder that cannot be read is left out; GetResult() tells the first failure.
//
// Threads: one at a time for one object.
class ZO_VNOSAL_API VnFileFind
{
public:
    explicit VnFileFind(const VnPath& folder, std::wstring_view pattern = L"*",
                        VnFindOptions options = {}) noexcept;
    ~VnFileFind();
    VnFileFind(const VnFileFind&) = delete;
    VnFileFind& operator=(const VnFileFind&) = delete;

    // Goes to the next item; false when there is none.
    bool Next() noexcept;

    // About the item that Next() went to.
    VnPath GetPath() const noexcept;
    VnString GetName() const noexcept;
    EItemKind GetKind() const noexcept;
    std::size_t GetDepth() const noexcept; // 0 in the folder itself
    VnResult ReadFacts(VnItemFacts& facts, ELinks links = ELinks::Keep) const noexcept;

    // Does not enter the folder that Next() went to.
    void SkipFolder() noexcept;

    VnResult GetResult() const noexcept;

    // Whether a name matches a pattern.
    static bool MatchesPattern(std::wstring_view name, std::wstring_view pattern) noexcept;

private:
    struct State;
    State* state;
};

} // namespace VnOSAL
