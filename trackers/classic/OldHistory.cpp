#include "trackers/classic/OldHistory.h"

#include "env/ProfileSection.h"
#include "env/Text.h"
#include "platform/Files.h"

#include <algorithm>
#include <string_view>

namespace trackers {

namespace {

// The value of a key that ends in a number.
struct NumberedValue
{
    std::uint32_t index;
    std::wstring_view value;
};
using NumberedValues = std::vector<NumberedValue>;

// Whether `key` is `name` with a number behind it, written as %u writes it.
bool ReadNumberedKey(std::wstring_view key, std::wstring_view name, std::uint32_t& index)
{
    constexpr std::size_t maxDigits = 9; // more entries than any file of ours can hold
    if (key.size() <= name.size() || !env::IsSameProfileName(key.substr(0, name.size()), name))
        return false;
    key.remove_prefix(name.size());
    if (key.size() > maxDigits || key.find_first_not_of(L"0123456789") != key.npos ||
        (key.size() > 1 && key.starts_with(L'0')))
        return false;
    index = static_cast<std::uint32_t>(env::ReadDecimal(key));
    return true;
}

// The first value of each number, in the order of the numbers.
void Arrange(NumberedValues& values)
{
    const auto index = [](const NumberedValue& entry) { return entry.index; };
    std::ranges::stable_sort(values, {}, index);
    const auto repeated = std::ranges::unique(values, {}, index);
    values.erase(repeated.begin(), repeated.end());
}

} // namespace

std::vector<EventCount> ReadOldHistory(const std::wstring& path, std::uint64_t limit)
{
    std::string bytes;
    if (!platform::ReadWholeFile(path, limit, bytes))
        return {};
    const std::wstring text = env::DecodeProfile(bytes);
    env::CProfileSection section(text, L"HISTORY");
    NumberedValues fingerprints;
    NumberedValues counts;
    std::wstring_view length;
    std::uint32_t index = 0;
    for (std::wstring_view key, value; section.TakeEntry(key, value);)
    {
        if (length.data() == nullptr && env::IsSameProfileName(key, L"COUNT"))
            length = value;
        else if (ReadNumberedKey(key, L"FP", index))
            fingerprints.push_back({index, value});
        else if (ReadNumberedKey(key, L"C", index))
            counts.push_back({index, value});
    }
    Arrange(fingerprints);
    Arrange(counts);

    std::vector<EventCount> history;
    auto count = counts.begin();
    for (const NumberedValue& fingerprint : fingerprints)
    {
        while (count != counts.end() && count->index < fingerprint.index)
            ++count;
        if (count == counts.end() || std::int64_t{fingerprint.index} >= env::ReadDecimal(length))
            break;
        if (count->index == fingerprint.index && !fingerprint.value.empty() &&
            env::ReadDecimal(count->value) >= 1)
            history.push_back({std::wstring(fingerprint.value), env::ReadDecimal(count->value)});
    }
    return history;
}

} // namespace trackers
