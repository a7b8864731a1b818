#include "env/Format.h"

#include <gtest/gtest.h>

#include <bit>
#include <cfloat>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>

namespace {

using env::FormatText;

TEST(FormatText, PutsTextsIntoTheirPlacesAndLeavesOutWhatDoesNotFit)
{
    const std::wstring text = L"b";
    EXPECT_EQ(FormatText(L"100%% %s/%s (%s)", L"a", text, std::wstring_view(L"cd", 1)),
              L"100% a/b (c)");
    EXPECT_EQ(FormatText(L"[%s%s]", std::wstring(L"x\0y", 3), L"%s%d"),
              std::wstring(L"[x\0y%s%d]", 9));
    EXPECT_EQ(FormatText(L"[%s]", static_cast<const wchar_t*>(nullptr)), L"[]");

    EXPECT_EQ(FormatText(L"<%s|%d>", L"a"), L"<a|>");
    EXPECT_EQ(FormatText(L"<%s|%d|%f|%d|%u>", 1, L"a", 1, 1.5, 2), L"<||||2>");
    EXPECT_EQ(FormatText(L"<%q%s>", 1, L"a", L"unused"), L"<a>");
    EXPECT_EQ(FormatText(L"a%08.", 1), L"a");
    EXPECT_EQ(FormatText(L"%99999999999999999999d", 1).size(), 99u);
    EXPECT_EQ(FormatText(L"%.99999999999999999999f", 1.0).size(), 101u);
}

TEST(FormatText, WritesIntegersByTheirConversion)
{
    const struct
    {
        const wchar_t* format;
        std::int64_t value;
        const wchar_t* expected;
    } cases[] = {
        {L"%d", 0x80000000, L"-2147483648"},
        {L"%d", 0x1'0000'0005, L"5"},
        {L"%lu", -1, L"4294967295"},
        {L"%I64d", INT64_MIN, L"-9223372036854775808"},
        {L"%I64u", -1, L"18446744073709551615"},
        {L"%x", 0xBEEF, L"beef"},
        {L"%X", -1, L"FFFFFFFF"},
        {L"%02x", 0, L"00"},
        {L"%02x", 0x123, L"123"},
        {L"%6.4x", 0x409, L"  0409"},
        {L"%5d", -42, L"  -42"},
        {L"%05d", -42, L"-0042"},
        {L"%05.3d", 42, L"  042"},
        {L"%.3d", -4, L"-004"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(FormatText(c.format, c.value), c.expected) << c.format << ' ' << c.value;
    EXPECT_EQ(FormatText(L"%d", L'A'), L"65");
}

// Also where the host has set a locale with a decimal comma, if the system has one.
TEST(FormatText, RoundsTheExactValueOfANumber)
{
    const struct
    {
        const wchar_t* format;
        double value;
        const wchar_t* expected;
    } cases[] = {
        {L"%f", 0.1, L"0.100000"},
        {L"%.0f", 2.5, L"2"}, // ties go to even
        {L"%.0f", 3.5, L"4"},
        {L"%.2f", 2.675, L"2.67"}, // its exact value lies below the tie
        {L"%.2f", 99.995, L"100.00"},
        {L"%.2f", -0.001, L"-0.00"},
        {L"%.2f", DBL_TRUE_MIN, L"0.00"},
        {L"%.2f", 1e22, L"10000000000000000000000.00"},
        {L"%.2f", -HUGE_VAL, L"-inf"},
        {L"%.2f", std::numeric_limits<double>::quiet_NaN(), L"nan"},
        {L"%.2f", -std::numeric_limits<double>::quiet_NaN(), L"nan"},
    };
    for (const char* locale : {"German", "de_DE.UTF-8", "fr_FR.UTF-8", "C"})
    {
        if (std::setlocale(LC_ALL, locale) == nullptr)
            continue;
        for (const auto& c : cases)
            EXPECT_EQ(FormatText(c.format, c.value), c.expected) << c.format << ' ' << c.value;
    }
    const std::wstring largest = FormatText(L"%.99f", DBL_MAX);
    EXPECT_EQ(largest.size(), 309u + 1 + 99);
    EXPECT_EQ(largest.substr(0, 17), L"17976931348623157");
}

// The runtime of the test machine rounds exactly, too.
TEST(FormatText, RoundsRandomNumbersAsTheRuntimeDoes)
{
    std::mt19937_64 generator(7);
    for (int i = 0; i < 20'000; ++i)
    {
        double value = std::bit_cast<double>(generator());
        if (i % 2 == 0) // many ties
            value = static_cast<double>(generator() % 1'000'000) / 64;
        if (!std::isfinite(value))
            continue;
        char expected[512];
        std::snprintf(expected, sizeof expected, i % 3 == 0 ? "%.4f" : "%.2f", value);
        ASSERT_EQ(FormatText(i % 3 == 0 ? L"%.4f" : L"%.2f", value),
                  std::wstring(expected, expected + std::strlen(expected)));
    }
}

} // namespace
