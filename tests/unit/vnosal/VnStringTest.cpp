#include "zotracker/vnosal/VnString.h"
#include "StringModel.h"
#include "VnosalTest.h"
#include "zotracker/vnosal/VnCriticalSection.h"
#include "zotracker/vnosal/VnStringList.h"

#include <atomic>
#include <cfloat>
#include <climits>
#include <clocale>
#include <cmath>
#include <future>
#include <random>
#include <thread>
#include <tuple>
#include <vector>

namespace {

using namespace VnOSAL;
using namespace std::string_view_literals;

TEST(VnString, AgreesWithTheStandardStringUnderRandomOperations)
{
    std::mt19937 random(20240229);
    for (int round = 0; round < 300; ++round)
    {
        std::string script(1500, ' ');
        for (char& byte : script)
            byte = static_cast<char>(random());
        EXPECT_EQ(vnosal_test::CompareWithModel({script}), "") << "round " << round;
    }
}

TEST(VnString, StaysInvalidWithoutMemoryUntilItIsAssigned)
{
    VnString text(VnString::maxLength + 1, L'x');
    EXPECT_FALSE(text.IsValid());
    EXPECT_FALSE(text.Append(L"more").IsValid());
    EXPECT_FALSE((VnString(text) + L"more").IsValid());
    EXPECT_FALSE(text.GetMid(0).IsValid());
    EXPECT_EQ(text, L"");
    EXPECT_TRUE(text.Assign(L"again").IsValid());
    EXPECT_FALSE(text.Reserve(VnString::npos));
    EXPECT_EQ(text, L"again");
}

TEST(VnString, ComparesAndSearchesWithAndWithoutCase)
{
    const auto expectOrder = [](VnString left, VnString right, int respecting, int ignoring) {
        EXPECT_EQ(left.Compare(right), respecting) << left;
        EXPECT_EQ(left.Compare(right, ECase::Ignore), ignoring) << left;
        EXPECT_EQ(left.GetHash(ECase::Ignore) == right.GetHash(ECase::Ignore), ignoring == 0);
    };
    expectOrder(L"ABC", L"abc", -1, 0);
    expectOrder(L"_", L"a", -1, 1); // upper-case forms are compared: '_' lies between the cases
    expectOrder(L"\xE4", L"\xC4", 1, 0);
    expectOrder(L"\xD83D\xDE00", L"\xFFFD", -1, -1);          // by units, not by characters
    EXPECT_EQ(VnString(L"a").GetHash(), 0xAF63DC4C8601EC8Cu); // FNV-1a of the byte 0x61

    VnString text(L"Stra\xDF-e, STRASSE, strasse");
    EXPECT_EQ(text.Find(L"strasse", 0, ECase::Ignore), 9u);
    EXPECT_EQ(text.Find(L"STRASSE", 10, ECase::Ignore), 18u);
    EXPECT_EQ(text.FindLast(L"strasse", 17, ECase::Ignore), 9u);
    EXPECT_TRUE(text.StartsWith(L"STRA", ECase::Ignore));
    EXPECT_TRUE(text.EndsWith(L"SSE", ECase::Ignore));
    EXPECT_EQ(text.ReplaceAll(L"STRASSE", L"x", ECase::Ignore), 2u);
    EXPECT_EQ(text.GetMid(7), L", x, x");
}

TEST(VnString, TrimsAndMapsCase)
{
    EXPECT_EQ(VnString(L" \t a b\r\n").Trim(), L"a b");
    EXPECT_EQ(VnString(L"xxayx").Trim(L"xy"), L"a");
    std::setlocale(LC_ALL, "Turkish_Turkey.1254"); // where there is one
    EXPECT_EQ(VnString(L"g\xFC\xDF\xFF \xD83D\xDE00i").MakeUpper(),
              L"G\xDC\xDF\x178 \xD83D\xDE00I");
    EXPECT_EQ(VnString(L"\x3A9\x42F\x178 ZI").MakeLower(), L"\x3C9\x44F\xFF zi");
    std::setlocale(LC_ALL, "C");
}

TEST(VnString, SplitsAndJoins)
{
    EXPECT_EQ(VnString(L"a,b,,").Split(L",").Join(L"|"), L"a|b||");
    EXPECT_EQ(VnString(L"a--b---c").Split(L"--").Join(L"|"), L"a|b|-c");
    EXPECT_EQ(VnString(L"ab").Split(L"").Join(L"|"), L"ab");
    EXPECT_EQ(VnString(nullptr).Split(L",").GetCount(), 1u);

    VnStringList given = VnString(L"a|b|c|d").Split(L"|");
    VnStringList moved(std::move(given));
    VnStringList assigned;
    assigned = moved;
    moved.Clear();
    for (VnStringList* list : {&given, &moved, &assigned})
        EXPECT_TRUE(list->Append(L"e"));
    EXPECT_EQ(given.Join(L"") + moved.Join(L"") + assigned.Join(L""), L"eeabcde");
}

TEST(VnString, FormatsAsPrintfDoes)
{
    const auto format = &VnString::Format;
    const auto* const noText = static_cast<const wchar_t*>(nullptr);
    const std::pair<VnString, const wchar_t*> cases[] = {
        {format(L"%d|%5d|%-05d|%05d|%+d|% d", 1, 2, 3, 4, 5, 6), L"1|    2|3    |00004|+5| 6"},
        {format(L"%.3d|%-8.3d|%08.3d|%.0d|", 7, 7, -7, 0), L"007|007     |    -007||"},
        {format(L"%u %x %#X %#o %#x", 42u, 0xBEEFu, 255u, 8u, 0u), L"42 beef 0XFF 010 0"},
        {format(L"%hhd %hd %hhu %I32u", 0x1FF, 0x1FFFF, 0x1FF, 7u), L"-1 -1 255 7"},
        {format(L"%I64d %zu %jd", LLONG_MIN, std::size_t{9}, INTMAX_MAX),
         L"-9223372036854775808 9 9223372036854775807"},
        {format(L"%s|%.2s|%6s|%-6s", L"wide", L"wide", L"r", L"l"), L"wide|wi|     r|l     "},
        {format(L"%hs|%c|%s", "\xC3\xA4", L'\xE9', noText), L"\xE4|\xE9|(null)"},
        {format(L"%*d|%*d|%.*f", 4, 1, -4, 3, 1, 2.24), L"   1|3   |2.2"},
        {format(L"%f %.0f %#.0f %+.1f %08.2f", 1.5, 2.0, 2.0, 3.0, -1.5),
         L"1.500000 2 2. +3.0 -0001.50"},
        {format(L"%e %.2E %g %G", 12345.678, 0.00012, 1e-5, 1e100),
         L"1.234568e+04 1.20E-04 1e-05 1E+100"},
        {format(L"%5f %F %05f", -HUGE_VAL, NAN, HUGE_VAL), L" -inf NAN   inf"},
        {format(L"%p", reinterpret_cast<void*>(0xAB)), L"00000000000000AB"},
        {format(L"100%% %y %", 1), L"100% %y %"},
        {format(nullptr), L""},
        {VnString(L"n=").AppendFormat(L"%d", 5), L"n=5"},
    };
    for (const auto& [formatted, expected] : cases)
        EXPECT_EQ(formatted, VnString(expected));
    EXPECT_EQ(format(L"%.1f", DBL_MAX).GetLength(), 311u);
    EXPECT_EQ(format(L"%5000d", 1).GetLength(), 5000u);
}

TEST(VnString, WritesAndReadsWholeNumbers)
{
    std::int64_t number = 0;
    const auto expectBothWays = [&number](std::int64_t written, unsigned radix, VnString text) {
        EXPECT_EQ(VnString::FromInt64(written, radix), text);
        EXPECT_TRUE(text.ToInt64(number, radix)) << text;
        EXPECT_EQ(number, written);
    };
    expectBothWays(INT64_MIN, 10, L"-9223372036854775808");
    expectBothWays(INT64_MAX, 10, L"9223372036854775807");
    expectBothWays(-1295, 36, L"-zz");
    EXPECT_EQ(VnString::FromUInt64(UINT64_MAX, 2), std::wstring(64, L'1'));
    EXPECT_EQ(VnString::FromUInt64(5, 1), L"");

    EXPECT_TRUE(VnString(L" +Ff\n").ToInt64(number, 16));
    for (const wchar_t* text : {L"9223372036854775808", L"", L"1 2", L"-", L"\xFF11"})
        EXPECT_FALSE(VnString(text).ToInt64(number)) << text;
    EXPECT_EQ(number, 255);
    std::uint64_t natural = 0;
    EXPECT_TRUE(VnString(L"18446744073709551615").ToUInt64(natural));
    EXPECT_FALSE(VnString(L"18446744073709551616").ToUInt64(natural));
    EXPECT_FALSE(VnString(L"-1").ToUInt64(natural));
    EXPECT_EQ(natural, UINT64_MAX);
}

// Also where the host has set a locale with a decimal comma, if the system has one.
TEST(VnString, WritesAndReadsBrokenNumbersExactly)
{
    const std::pair<double, const wchar_t*> cases[] = {
        {0.1, L"0.1"},       {1.0 / 3, L"0.3333333333333333"},
        {-0.0, L"-0"},       {DBL_MAX, L"1.7976931348623157e+308"},
        {1e22, L"1e+22"},    {5e-324, L"4.94065645841247e-324"},
        {123456., L"123456"}};
    for (const char* locale : {"de_DE.UTF-8", "German_Germany.1252", "C"})
    {
        if (std::setlocale(LC_NUMERIC, locale) == nullptr)
            continue;
        double number = 1;
        for (const auto& [expected, text] : cases)
        {
            EXPECT_EQ(VnString::FromDouble(expected), text);
            EXPECT_TRUE(VnString(text).ToDouble(number)) << text;
            EXPECT_EQ(number, expected) << text;
        }
        EXPECT_EQ(VnString::Format(L"%.2f", 1.5), L"1.50");
        EXPECT_TRUE(VnString(L" -.5E+1 ").ToDouble(number));
        for (const wchar_t* text :
             {L"", L".", L"1.2.3", L"1e", L"e5", L"inf", L"0x1p3", L"1e999", L"1,5", L"1 2"})
            EXPECT_FALSE(VnString(text).ToDouble(number)) << text;
        EXPECT_EQ(number, -5);
    }
}

TEST(VnAString, DecodesAndEncodes)
{
    using enum EConversion;
    EConversion conversion = UnknownCodePage;
    const auto expectText = [&](std::uint32_t page, std::string_view bytes, std::wstring_view text,
                                EConversion expected = Replaced) {
        EXPECT_EQ(VnAString::FromBytes(bytes, page).ToString(&conversion), text);
        EXPECT_EQ(conversion, expected) << bytes;
    };
    const auto expectBytes = [](std::uint32_t page, std::wstring_view text, std::string_view bytes,
                                EConversion expected = Replaced) {
        const VnAString narrow(text, page);
        EXPECT_EQ(std::string_view(narrow), bytes) << page;
        EXPECT_EQ(narrow.GetConversion(), expected) << page << bytes;
        EXPECT_EQ(narrow.GetText()[narrow.GetLength()], '\0');
    };
    const std::tuple<std::uint32_t, std::string_view, std::wstring_view> exact[] = {
        {codePageUtf8, "az\0b"sv, L"az\0b"sv},
        {codePageUtf8, "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80", L"\xE4\x20AC\xD83D\xDE00"},
        {codePageUtf8, "\xF4\x8F\xBF\xBF", L"\xDBFF\xDFFF"},
        {codePageUtf8, "\xEF\xBF\xBD", L"\xFFFD"}, // no replacement but the text's own
        {932, "\x82\xA0\x88\x9F", L"\x3042\x4E9C"},
    };
    for (const auto& [page, bytes, text] : exact)
    {
        expectText(page, bytes, text, Exact);
        expectBytes(page, text, bytes, Exact);
    }
    expectBytes(codePageUtf8, L"\xDE00\xD83D", "\xEF\xBF\xBD\xEF\xBF\xBD");
    expectBytes(codePageLatin1, L"\xE4\x20AC", "\xE4?");
    expectBytes(1252, L"\xE4\x20AC\x100", "\xE4\x80?"); // no best fit to "A"
    expectBytes(4711, L"x", "", UnknownCodePage);
    // as the Unicode standard recommends: overlong, surrogate, too large, cut off, table 3-8
    expectText(codePageUtf8, "\xE0\x80\xAF", L"\xFFFD\xFFFD\xFFFD");
    expectText(codePageUtf8, "\xF0\x8F\xBF\xBF", L"\xFFFD\xFFFD\xFFFD\xFFFD");
    expectText(codePageUtf8, "\xED\xA0\x80", L"\xFFFD\xFFFD\xFFFD");
    expectText(codePageUtf8, "\xF4\x90\x80\x80", L"\xFFFD\xFFFD\xFFFD\xFFFD");
    expectText(codePageUtf8, "\xE2\x82", L"\xFFFD");
    expectText(codePageUtf8, "\x61\xF1\x80\x80\xE1\x80\xC2\x62\x80\x63\x80\xBF\x64",
               L"\x61\xFFFD\xFFFD\xFFFD\x62\xFFFD\x63\xFFFD\xFFFD\x64");
    VnAString::FromBytes("\x82", 932).ToString(&conversion); // half a character
    EXPECT_EQ(conversion, Replaced);
    expectText(4711, "x", L"", UnknownCodePage);
}

// All threads change copies of shared texts from every pool, and take the blocks that others give
// back: a text changes under nobody, and no block is handed out twice.
TEST(VnStringThreads, HaveTextsAndBlocksOfTheirOwn)
{
    std::vector<VnString> shared;
    for (std::size_t length = 1; length < 600; length += 37)
        shared.emplace_back(length, L's');
    std::atomic<int> faults{0};
    const auto work = [&](wchar_t own) {
        std::vector<VnString> held(50);
        for (std::size_t round = 0; round < 20000; ++round)
        {
            VnString& text = held[round * 7 % held.size()];
            faults += text != std::wstring(text.GetLength(), text[0]);
            text = VnString(1 + round % 130, own);
            const VnString& original = shared[round % shared.size()];
            VnString copy = original;
            copy.SetAt(0, own).Append(own);
            faults += copy[0] != own || copy[original.GetLength()] != own;
            faults += original != std::wstring(original.GetLength(), L's');
        }
    };
    std::thread threads[] = {std::thread(work, L'a'), std::thread(work, L'b'),
                             std::thread(work, L'c')};
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(faults, 0);
}

TEST(VnCriticalSection, AdmitsOneThreadAtATimeAndItsHolderAgain)
{
    VnCriticalSection section;
    const auto isFreeForOthers = [&section] {
        const auto tries = [&] { return bool(VnCriticalSectionLock(section, EEnter::Try)); };
        return std::async(std::launch::async, tries).get();
    };
    VnCriticalSectionLock outer(section);
    VnCriticalSectionLock(section).Leave();
    EXPECT_FALSE(isFreeForOthers()); // the inner one has left once
    outer.Leave();
    EXPECT_TRUE(isFreeForOthers());
}

} // namespace
