#include "zotracker/vnosal/VnString.h"
#include "PrintText.h"
#include "StringModel.h"
#include "zotracker/vnosal/VnStringList.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <climits>
#include <clocale>
#include <limits>
#include <random>
#include <unordered_set>
#include <vector>

namespace {

using namespace VnOSAL;

TEST(VnString, TakesBlocksOfThePoolsSizes)
{
    // By length: the block's size less the terminating zero.
    const std::pair<std::size_t, std::size_t> capacities[] = {
        {0, 0},     {1, 63},    {63, 63},   {64, 127},  {127, 127},  {128, 255},
        {255, 255}, {256, 511}, {511, 511}, {512, 512}, {5000, 5000}};
    for (const auto& [length, capacity] : capacities)
        EXPECT_EQ(VnString(length, L'x').GetCapacity(), capacity) << length;
    EXPECT_EQ(VnString(L"x").Remove(0).GetCapacity(), 0u);
    EXPECT_EQ(VnString(static_cast<const wchar_t*>(nullptr)), L"");
}

TEST(VnString, AgreesWithTheStandardStringUnderRandomOperations)
{
    std::mt19937 random(20240229);
    for (int round = 0; round < 300; ++round)
    {
        std::vector<std::uint8_t> script(1500);
        for (auto& byte : script)
            byte = static_cast<std::uint8_t>(random());
        EXPECT_EQ(vnosal_test::CStringModel(script).Run(), "") << "round " << round;
    }
}

TEST(VnString, StaysInvalidWithoutMemoryUntilItIsAssigned)
{
    VnString text(VnString::maxLength + 1, L'x');
    EXPECT_FALSE(text.IsValid());
    EXPECT_EQ(text, L"");
    EXPECT_FALSE(text.Append(L"more").IsValid());
    EXPECT_FALSE((VnString(text) + L"more").IsValid());
    EXPECT_FALSE(text.Reserve(1));
    EXPECT_FALSE(text.GetMid(0).IsValid());
    EXPECT_EQ(text.Assign(L"again"), L"again");
    EXPECT_TRUE(text.IsValid());
    EXPECT_FALSE(text.Reserve(VnString::npos));
    EXPECT_EQ(text, L"again");
}

TEST(VnString, ComparesWithAndWithoutCase)
{
    const struct
    {
        const wchar_t *left, *right;
        int respecting, ignoring;
    } cases[] = {
        {L"ABC", L"abc", -1, 0},
        {L"a", L"B", 1, -1},
        {L"_", L"a", -1, 1}, // upper-case forms are compared: '_' lies between the cases
        {L"\xE4", L"\xC4", 1, 0},
        {L"\x3C3", L"\x3A3", 1, 0},
        {L"\xD83D\xDE00", L"\xFFFD", -1, -1}, // by units, not by characters
    };
    const auto sign = [](int order) { return (order > 0) - (order < 0); };
    for (const auto& c : cases)
    {
        EXPECT_EQ(sign(VnString(c.left).Compare(c.right)), c.respecting) << c.left << c.right;
        EXPECT_EQ(sign(VnString(c.left).Compare(c.right, ECase::Ignore)), c.ignoring);
        EXPECT_EQ(VnString(c.left).GetHash(ECase::Ignore) ==
                      VnString(c.right).GetHash(ECase::Ignore),
                  c.ignoring == 0);
    }
    EXPECT_LT(VnString(L"a"), L"b");
    EXPECT_EQ(L"a" + VnString(L"b") + std::wstring(L"c"), std::wstring_view(L"abc"));
    EXPECT_EQ(VnString(L"a").GetHash(), 0xAF63DC4C8601EC8Cu); // FNV-1a of the byte 0x61
    EXPECT_EQ((std::unordered_set<VnString>{L"x", L"y", L"x"}.size()), 2u);
}

TEST(VnString, SearchesIgnoringCase)
{
    VnString text(L"Stra\xDF"
                  L"e, STRASSE, strasse");
    EXPECT_EQ(text.Find(L"strasse", 0, ECase::Ignore), 8u);
    EXPECT_EQ(text.Find(L"STRASSE", 9, ECase::Ignore), 17u);
    EXPECT_EQ(text.FindLast(L"StrAsse", VnString::npos, ECase::Ignore), 17u);
    EXPECT_EQ(text.FindLast(L"strasse", 16, ECase::Ignore), 8u);
    EXPECT_EQ(text.Find(L"strasses", 0, ECase::Ignore), VnString::npos);
    EXPECT_TRUE(text.StartsWith(L"STRA", ECase::Ignore));
    EXPECT_TRUE(text.EndsWith(L"SSE", ECase::Ignore));
    EXPECT_EQ(text.ReplaceAll(L"STRASSE", L"x", ECase::Ignore), 2u);
    EXPECT_EQ(text.GetMid(6), L", x, x");
}

TEST(VnString, TrimsSplitsJoinsAndMapsCase)
{
    EXPECT_EQ(VnString(L" \t a b\r\n").Trim(), L"a b");
    EXPECT_EQ(VnString(L"xxayx").TrimLeft(L"xy"), L"ayx");
    EXPECT_EQ(VnString(L"xxayx").TrimRight(L"xy"), L"xxa");
    for (const char* locale : {"C", "", "Turkish_Turkey.1254"}) // the last on Windows only
    {
        if (std::setlocale(LC_ALL, locale) == nullptr)
            continue;
        EXPECT_EQ(VnString(L"gr\xFC\xDF\xFF \xD83D\xDE00i").MakeUpper(),
                  L"GR\xDC\xDF\x178 \xD83D\xDE00I");
        EXPECT_EQ(VnString(L"\x3A9\x42F\x178 ZI").MakeLower(), L"\x3C9\x44F\xFF zi");
    }
    std::setlocale(LC_ALL, "C");

    const struct
    {
        const wchar_t *text, *separator;
        std::vector<VnString> parts;
    } cases[] = {{L"a,b,,c", L",", {L"a", L"b", L"", L"c"}},
                 {L"", L",", {L""}},
                 {L",", L",", {L"", L""}},
                 {L"a--b---c", L"--", {L"a", L"b", L"-c"}},
                 {L"ab", L"", {L"ab"}}};
    for (const auto& c : cases)
    {
        const VnStringList parts = VnString(c.text).Split(c.separator);
        EXPECT_EQ(std::vector<VnString>(parts.begin(), parts.end()), c.parts) << c.text;
        EXPECT_EQ(parts.Join(c.separator), c.text);
    }
}

TEST(VnString, AListTakesMoreAfterItWasMovedOrAssigned)
{
    VnStringList given = VnString(L"a|b|c|d").Split(L"|");
    VnStringList moved(std::move(given));
    VnStringList assigned;
    assigned = moved;
    for (VnStringList* list : {&given, &moved, &assigned})
        for (int i = 0; i < 100; ++i)
            EXPECT_TRUE(list->Append(L"x"));
    EXPECT_EQ(given.GetCount(), 100u);
    EXPECT_EQ(moved.Join(L""), assigned.Join(L""));
}

TEST(VnString, FormatsAsPrintfDoes)
{
    const double infinity = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const struct
    {
        VnString formatted;
        const wchar_t* expected;
    } cases[] = {
        {VnString::Format(L"%d|%5d|%-05d|%05d|%+d|% d", 1, 2, 3, 4, 5, 6),
         L"1|    2|3    |00004|+5| 6"},
        {VnString::Format(L"%.3d|%8.3d|%-8.3d|%08.3d|%.0d|", 7, -7, 7, 7, 0),
         L"007|    -007|007     |     007||"},
        {VnString::Format(L"%u %x %X %#x %#X %#o %#x %o", 42u, 0xBEEFu, 0xBEEFu, 255u, 255u, 8u, 0u,
                          8u),
         L"42 beef BEEF 0xff 0XFF 010 0 10"},
        {VnString::Format(L"%hhd %hd %hhu %I64d %I32u %zu %jd", 0x1FF, 0x1FFFF, 0x1FF, LLONG_MIN,
                          7u, std::size_t{9}, INTMAX_MAX),
         L"-1 -1 255 -9223372036854775808 7 9 9223372036854775807"},
        {VnString::Format(L"%s|%.2s|%6s|%-6s|%hs|%c", L"wide", L"wide", L"r", L"l", "\xC3\xA4",
                          L'\xE9'),
         L"wide|wi|     r|l     |\xE4|\xE9"},
        {VnString::Format(L"%s %hs", static_cast<const wchar_t*>(nullptr),
                          static_cast<const char*>(nullptr)),
         L"(null) (null)"},
        {VnString::Format(L"%*d|%-*d|%*d|%.*f", 4, 1, 4, 2, -4, 3, 1, 2.24), L"   1|2   |3   |2.2"},
        {VnString::Format(L"%f %.2f %.0f %#.0f %+.1f %08.2f", 1.5, 2.376, 2.0, 2.0, 3.0, -1.5),
         L"1.500000 2.38 2 2. +3.0 -0001.50"},
        {VnString::Format(L"%e %.2E %g %g %G", 12345.678, 0.00012, 1e-5, 100000.0, 1e100),
         L"1.234568e+04 1.20E-04 1e-05 100000 1E+100"},
        {VnString::Format(L"%f %5f %F %05f", infinity, -infinity, nan, infinity),
         L"inf  -inf NAN   inf"},
        {VnString::Format(L"%p", reinterpret_cast<void*>(0xAB)), L"00000000000000AB"},
        {VnString::Format(L"100%% %y %", 1), L"100% %y %"},
        {VnString::Format(nullptr), L""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(c.formatted, VnString(c.expected));
    EXPECT_EQ(VnString::Format(L"%.1f", DBL_MAX).GetLength(), 311u);
    EXPECT_EQ(VnString::Format(L"%5000d", 1).GetLength(), 5000u);
    EXPECT_EQ(VnString(L"n=").AppendFormat(L"%d", 5), L"n=5");
}

TEST(VnString, WritesAndReadsNumbers)
{
    EXPECT_EQ(VnString::FromInt64(INT64_MIN), L"-9223372036854775808");
    EXPECT_EQ(VnString::FromInt64(-35, 36), L"-z");
    EXPECT_EQ(VnString::FromUInt64(UINT64_MAX, 2), std::wstring(64, L'1'));
    EXPECT_EQ(VnString::FromUInt64(5, 1), L"");

    const struct
    {
        const wchar_t* text;
        unsigned radix;
        bool fits;
        std::int64_t value;
    } integers[] = {
        {L" +7\n", 10, true, 7},
        {L"-9223372036854775808", 10, true, INT64_MIN},
        {L"9223372036854775807", 10, true, INT64_MAX},
        {L"9223372036854775808", 10, false, 0},
        {L"ff", 16, true, 255},
        {L"Zz", 36, true, 1295},
        {L"", 10, false, 0},
        {L"1 2", 10, false, 0},
        {L"\xFF11", 10, false, 0},
    };
    for (const auto& c : integers)
    {
        std::int64_t value = 4711;
        EXPECT_EQ(VnString(c.text).ToInt64(value, c.radix), c.fits) << c.text;
        EXPECT_EQ(value, c.fits ? c.value : 4711) << c.text;
    }
    std::uint64_t natural = 0;
    EXPECT_TRUE(VnString(L"18446744073709551615").ToUInt64(natural));
    EXPECT_FALSE(VnString(L"18446744073709551616").ToUInt64(natural));
    EXPECT_EQ(natural, UINT64_MAX);
    EXPECT_FALSE(VnString(L"-1").ToUInt64(natural));
}

// Also where the host has set a locale with a decimal comma, if the system has one.
TEST(VnString, ReadsAndWritesBrokenNumbersExactly)
{
    for (const char* locale : {"de_DE.UTF-8", "German_Germany.1252", "C"})
    {
        if (std::setlocale(LC_NUMERIC, locale) == nullptr)
            continue;
        for (const double value : {-0.0, 0.1, 1.0 / 3, 1e22, -2.5e-308, DBL_MAX, 5e-324, 123456.0})
        {
            double back = 1;
            const VnString text = VnString::FromDouble(value);
            EXPECT_TRUE(text.ToDouble(back)) << text;
            EXPECT_EQ(back, value) << text;
        }
        EXPECT_EQ(VnString::FromDouble(0.1), L"0.1");
        EXPECT_EQ(VnString::FromDouble(1e22), L"1e+22");
        EXPECT_EQ(VnString::Format(L"%.2f", 1.5), L"1.50");
    }
    double value = 4711;
    for (const wchar_t* text :
         {L"", L".", L"1.2.3", L"1e", L"e5", L"inf", L"0x1p3", L"1e999", L"1,5", L"1 2"})
        EXPECT_FALSE(VnString(text).ToDouble(value)) << text;
    EXPECT_EQ(value, 4711);
    EXPECT_TRUE(VnString(L" -.5E+1 ").ToDouble(value));
    EXPECT_EQ(value, -5);
}

} // namespace
