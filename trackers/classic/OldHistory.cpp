#include "trackers/classic/OldHistory.h"

#include "platform/Files.h"
#include "platform/ProfileSection.h"
#include "text/Case.h"
#include "text/Decimal.h"

#include <algorithm>
#include <string_view>

namespace trackers {

namespace {

// What the keys of one number say.
struct OldEntry
{
    std::wstring_view fingerprint;
    std::wstring_view count;
};

constexpr std::size_t smallestEntry = 11; // units of "FP0=x" and "C0=1" on lines of their own

// Whether `key` is `name` with a number below `limit` behind it, written as %u writes it.
bool ReadNumberedKey(std::wstring_view key, std::wstring_view name, std::size_t limit,
                     std::size_t& number)
{
    constexpr std::size_t maxDigits = 9;
    if (key.size() <= name.size() || !text::EqualIgnoringCase(key.substr(0, name.size()), name))
        return false;
    key.remove_prefix(name.size());
    if (key.size() > maxDigits || key.find_first_not_of(L"0123456789") != key.npos ||
        (key.size() > 1 && key.starts_with(L'0')))
        return false;
    number = static_cast<std::size_t>(text::ReadDecimal(key));
    return number < limit;
}

void KeepFirst(std::wstring_view& kept, std::wstring_view value)
{
    if (kept.data() == nullptr)
        kept = value;
}

} // namespace

std::vector<EventCount> ReadOldHistory(const std::wstring& path, std::uint64_t limit)
{
    std::string bytes;
    if (!platform::ReadWholeFile(path, limit, bytes))
        return {};
    const std::wstring text = platform::DecodeProfile(bytes);
    std::vector<OldEntry> entries(text.size() / smallestEntry);
    std::wstring_view length;
    platform::CProfileSection section(text, L"HISTORY");
    for (std::wstring_view key, value; section.TakeEntry(key, value);)
    {
        std::size_t number = 0;
        if (text::EqualIgnoringCase(key, L"COUNT"))
            KeepFirst(length, value);
        else if (ReadNumberedKey(key, L"FP", entries.size(), number))
            KeepFirst(entries[number].fingerprint, value);
        else if (ReadNumberedKey(key, L"C", entries.size(), number))
            KeepFirst(entries[number].count, value);
    }
    entries.resize(std::min<std::size_t>(
        entries.size(), static_cast<std::size_t>(std::max(text::ReadDecimal(length), 0))));

    std::vector<EventCount> history;
    for (const OldEntry& entry : entries)
        if (const std::int32_t count = text::ReadDecimal(entry.count);
            count >= 1 && !entry.fingerprint.empty())
            history.push_back({std::wstring(entry.fingerprint), count});
    return history;
}

} // namespace trackers
