#include "PrintText.h"
#include "zotracker/vnosal/VnAString.h"
#include "zotracker/vnosal/VnWString.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace VnOSAL;
using namespace std::string_view_literals;

TEST(VnAString, DecodesUtf8AsTheUnicodeStandardRecommends)
{
    const struct
    {
        std::string_view bytes;
        std::wstring_view text;
        EConversion conversion;
    } cases[] = {
        {"az\0b"sv, L"az\0b"sv, EConversion::Exact},
        {"\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80", L"\xE4\x20AC\xD83D\xDE00", EConversion::Exact},
        {"\xE0\x80\xAF", L"\xFFFD\xFFFD\xFFFD", EConversion::Replaced},           // overlong
        {"\xF0\x8F\xBF\xBF", L"\xFFFD\xFFFD\xFFFD\xFFFD", EConversion::Replaced}, // overlong
        {"\xED\xA0\x80", L"\xFFFD\xFFFD\xFFFD", EConversion::Replaced},           // surrogate
        {"\xF4\x90\x80\x80", L"\xFFFD\xFFFD\xFFFD\xFFFD", EConversion::Replaced}, // too large
        {"\xE2\x82", L"\xFFFD", EConversion::Replaced},                           // cut off
        {"\xF4\x8F\xBF\xBF", L"\xDBFF\xDFFF", EConversion::Exact},
        // the standard's own example, table 3-8
        {"\x61\xF1\x80\x80\xE1\x80\xC2\x62\x80\x63\x80\xBF\x64",
         L"a\xFFFD\xFFFD\xFFFD"
         L"b\xFFFD"
         L"c\xFFFD\xFFFD"
         L"d",
         EConversion::Replaced},
    };
    for (const auto& c : cases)
    {
        EConversion conversion = EConversion::UnknownCodePage;
        EXPECT_EQ(VnAString::FromBytes(c.bytes, codePageUtf8).ToString(&conversion), c.text);
        EXPECT_EQ(conversion, c.conversion) << c.bytes;
    }
}

TEST(VnAString, EncodesInTheGivenCodePage)
{
    const struct
    {
        std::wstring_view text;
        std::uint32_t page;
        std::string_view bytes;
        EConversion conversion;
    } cases[] = {
        {L"\xE4\x20AC\xD83D\xDE00", codePageUtf8, "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80",
         EConversion::Exact},
        {L"a\xD83D", codePageUtf8, "a\xEF\xBF\xBD", EConversion::Replaced},
        {L"\xDE00\xD83D", codePageUtf8, "\xEF\xBF\xBD\xEF\xBF\xBD", EConversion::Replaced},
        {L"\xE4\x20AC\x100", 1252, "\xE4\x80?", EConversion::Replaced}, // no best fit to "A"
        {L"\xE4\x20AC", codePageLatin1, "\xE4?", EConversion::Replaced},
        {L"\x416\x44F", 1251, "\xC6\xFF", EConversion::Exact},
        {L"\x3042\x4E9C", 932, "\x82\xA0\x88\x9F", EConversion::Exact},
        {L"x", 4711, "", EConversion::UnknownCodePage},
    };
    for (const auto& c : cases)
    {
        const VnAString narrow(c.text, c.page);
        EXPECT_EQ(std::string_view(narrow), c.bytes) << c.page;
        EXPECT_EQ(narrow.GetConversion(), c.conversion) << c.page << c.bytes;
        EXPECT_EQ(narrow.GetText()[narrow.GetLength()], '\0');
        EXPECT_EQ(narrow.ToString() == c.text, c.conversion == EConversion::Exact) << c.page;
    }
    EConversion conversion = EConversion::Exact;
    EXPECT_EQ(VnAString::FromBytes("x", 4711).ToString(&conversion), L"");
    EXPECT_EQ(conversion, EConversion::UnknownCodePage);
    VnAString::FromBytes("\x82", 932).ToString(&conversion); // half a character
    EXPECT_EQ(conversion, EConversion::Replaced);
}

TEST(VnWString, HoldsTheSystemsOwnWideText)
{
    const VnString text(L"a\xD83D\xDE00z\xD83D");
    const VnWString wide(text);
    if constexpr (sizeof(wchar_t) == 2)
    {
        EXPECT_EQ(wide.GetText(), text.GetText());
    }
    else
    {
        const wchar_t expected[] = {L'a', static_cast<wchar_t>(0x1F600), L'z', 0xD83D, 0};
        EXPECT_EQ(std::wstring_view(wide.GetText()), expected);
    }
    EXPECT_EQ(wide.ToString(), text);
    EXPECT_EQ(VnWString::FromWide(wide.GetText()).ToString(), text);
    EXPECT_TRUE(VnWString::FromWide(nullptr).IsEmpty());
}

} // namespace
