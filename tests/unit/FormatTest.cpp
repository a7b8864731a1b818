#include "text/Format.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <clocale>
#include <cmath>

namespace {

using text::FormatText;

// Also where the host has set a locale with a decimal comma, if the system has one.
TEST(FormatText, WritesEachConversionAndLeavesOutWhatDoesNotFit)
{
    for (const char* locale : {"German", "de_DE.UTF-8", "fr_FR.UTF-8", "C"})
    {
        if (std::setlocale(LC_ALL, locale) == nullptr)
            continue;
        const std::pair<std::wstring, std::wstring> cases[] = {
            {FormatText(L"100%% %s/%s (%s)", L"a", std::wstring(L"b"), std::wstring_view(L"cd", 1)),
             L"100% a/b (c)"},
            {FormatText(L"[%s%s]", std::wstring(L"x\0y", 3), L"%s%d"),
             std::wstring(L"[x\0y%s%d]", 9)},
            {FormatText(L"[%s|%d]", static_cast<const wchar_t*>(nullptr)), L"[|]"},
            {FormatText(L"<%s|%d|%f|%d|%u>", 1, L"a", 1, 1.5, 2), L"<||||2>"},
            {FormatText(L"<%q%s>", 1, L"a", L"unused"), L"<a>"},
            {FormatText(L"a%08.", 1), L"a"},
            {FormatText(L"%d %d", 0x80000000, L'A'), L"-2147483648 65"},
            {FormatText(L"%d %lu", 0x1'0000'0005, -1), L"5 4294967295"},
            {FormatText(L"%I64d %I64u", INT64_MIN, -1),
             L"-9223372036854775808 18446744073709551615"},
            {FormatText(L"%x %X %02x %02x", 0xBEEF, -1, 0, 0x123), L"beef FFFFFFFF 00 123"},
            {FormatText(L"%6.4x|%05.3d|%.2d", 0x409, 42, -4), L"  0409|  042|-04"},
            {FormatText(L"%5d|%05d", -42, -42), L"  -42|-0042"},
            {FormatText(L"%f %.0f", 0.1, 3.5), L"0.100000 4"},
            {FormatText(L"%.2f %.2f", 2.675, 99.995), L"2.67 100.00"}, // below and above the tie
            {FormatText(L"%.2f %.2f", -0.0, DBL_TRUE_MIN), L"-0.00 0.00"},
            {FormatText(L"%f %f %f", -HUGE_VAL, std::nan(""), -std::nan("")), L"-inf nan nan"},
        };
        for (const auto& [formatted, expected] : cases)
            EXPECT_EQ(formatted, expected);
    }
    EXPECT_EQ(FormatText(L"%99999999999999999999d", 1).size(), 99u);
    EXPECT_EQ(FormatText(L"%.99999999999999999999f", DBL_MAX).size(), 309u + 1 + 99);
}

} // namespace
