#include "env/Text.h"
#include "platform/TraceMessage.h"
#include "tests/simulated/Simulated.h"
#include "tests/simulated/SystemFacts.h"
#include "text/Decimal.h"

#include <gtest/gtest.h>

namespace {

class TextTest : public testing::Test
{
protected:
    void SetUp() override { simulated::Reset(); }
};

TEST_F(TextTest, ConvertsBetweenUnitsAndUtf8)
{
    // "ü€😀" and a zero, the third character as a surrogate pair.
    const std::wstring units(L"\x00FC\x20AC\xD83D\xDE00\0z", 6);
    const std::string bytes("\xC3\xBC\xE2\x82\xAC\xF0\x9F\x98\x80\0z", 11);
    EXPECT_EQ(env::Utf16ToUtf8(units), bytes);
    EXPECT_EQ(env::Utf8ToUtf16(bytes), units);
    EXPECT_EQ(env::Md5OfText(units), L"267ea7ce5d600bbfc13a075d494f7617"); // up to the zero
}

TEST_F(TextTest, ReadsOneLengthInTheDefaultCodePage)
{
    // The euro sign: one unit in UTF-8, three in the default code page.
    const std::string euro = "\xE2\x82\xAC";
    const std::string filler(65'532, 'x');
    EXPECT_EQ(env::Utf8ToUtf16(filler + euro).substr(65'532), L"\x00E2\x201A\x00AC");
    EXPECT_EQ(env::Utf8ToUtf16(filler.substr(1) + euro).substr(65'531), L"\x20AC");
    EXPECT_EQ(env::Utf8ToUtf16(filler + "x" + euro).substr(65'533), L"\x20AC");
}

TEST_F(TextTest, EscapesQueryValuesUnitByUnit)
{
    const struct
    {
        std::wstring text;
        bool keepAlphanumerics;
        const wchar_t* expected;
    } cases[] = {
        {L"azAZ09", true, L"azAZ09"},
        {L"A1", false, L"%41%31"},
        {L"\t\n", true, L"%9%A"},
        {L"/0:9@A[`a{z", true, L"%2F0%3A9%40A%5B%60a%7Bz"},
        {L"\x7F\x80\xA0", true, L"%7F%80%A0"},
        {L"\x00E9\x0416", true, L"\x00E9\x0416"}, // letters beyond ASCII stay, as they are
        {L"\x20AC\x0FFF\x0100", false, L"%20AC%FFF%100"},
        {L"\xD83D\xDE00", true, L"%D83D%DE00"},
        {std::wstring(1, L'\0'), true, L"%0"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(env::EncodeQueryText(c.text, c.keepAlphanumerics), c.expected) << c.text;
}

TEST_F(TextTest, ReadsLeadingDecimals)
{
    const struct
    {
        const wchar_t* text;
        std::int32_t number;
        std::int64_t wide;
    } cases[] = {
        {L" \t\n\v\f\r+7", 7, 7},
        {L"-5 6", -5, -5},
        {L"- 5", 0, 0},
        {L"+-5", 0, 0},
        {L"2147483648", INT32_MAX, 2147483648},
        {L"-2147483649", INT32_MIN, -2147483649},
        {L"9223372036854775808", INT32_MAX, INT64_MAX},
        {L"-99999999999999999999999", INT32_MIN, INT64_MIN},
    };
    for (const auto& c : cases)
    {
        EXPECT_EQ(text::ReadDecimal(c.text), c.number) << c.text;
        EXPECT_EQ(text::ReadDecimal64(c.text), c.wide) << c.text;
    }
}

TEST_F(TextTest, TracesLinesOfBoundedLength)
{
    platform::TraceMessage(3, L"HTTPCOM: inncorrect URL %s", L"ftp://a");
    platform::TraceMessage(9, L"%s", std::wstring(1024, L'x'));
    platform::TraceMessage(9, L"%s", std::wstring(1025, L'x'));
    const std::wstring longest = L"ZoTracker 9 " + std::wstring(1024, L'x') + L"\n";
    EXPECT_EQ(simulated::TakeDebugOutput(),
              (std::vector<std::wstring>{L"ZoTracker 3 HTTPCOM: inncorrect URL ftp://a\n", longest,
                                         longest}));
}

} // namespace
