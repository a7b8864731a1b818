#include "env/Text.h"
#include "net/Md5.h"
#include "platform/TraceMessage.h"
#include "tests/simulated/Simulated.h"
#include "tests/simulated/SystemFacts.h"
#include "text/Decimal.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

TEST(Text, ConvertsBetweenUnitsAndUtf8)
{
    // "ü€😀" and a zero, the third character as a surrogate pair.
    const std::wstring units(L"\x00FC\x20AC\xD83D\xDE00\0z", 6);
    const std::string bytes("\xC3\xBC\xE2\x82\xAC\xF0\x9F\x98\x80\0z", 11);
    EXPECT_EQ(env::Utf16ToUtf8(units), bytes);
    EXPECT_EQ(env::Utf8ToUtf16(bytes), units);
    EXPECT_EQ(env::Md5OfText(units), L"267ea7ce5d600bbfc13a075d494f7617"); // up to the zero

    // One length is read in the default code page, where the euro sign has three units.
    const std::string euro = "\xE2\x82\xAC";
    const std::string filler(65'532, 'x');
    EXPECT_EQ(env::Utf8ToUtf16(filler + euro).substr(65'532), L"\x00E2\x201A\x00AC");
    EXPECT_EQ(env::Utf8ToUtf16(filler.substr(1) + euro).substr(65'531), L"\x20AC");
    EXPECT_EQ(env::Utf8ToUtf16(filler + "x" + euro).substr(65'533), L"\x20AC");
}

TEST(Text, EscapesQueryValuesUnitByUnit)
{
    const std::tuple<std::wstring, bool, const wchar_t*> cases[] = {
        {L"/09:@AZ[`az{", true, L"%2F09%3A%40AZ%5B%60az%7B"},
        {std::wstring(L"\t\n\0", 3), true, L"%9%A%0"},
        {L"\x7F\x80\xA0\xD83D", true, L"%7F%80%A0%D83D"},
        {L"\x00E9\x0416", true, L"\x00E9\x0416"}, // letters beyond ASCII stay, as they are
        {L"A1\x20AC\x0FFF\x0100", false, L"%41%31%20AC%FFF%100"},
    };
    for (const auto& [text, keepAlphanumerics, expected] : cases)
        EXPECT_EQ(env::EncodeQueryText(text, keepAlphanumerics), expected) << text;
}

TEST(Text, ReadsLeadingDecimals)
{
    const std::tuple<const wchar_t*, std::int32_t, std::int64_t> cases[] = {
        {L" \t\n\v\f\r+7", 7, 7},
        {L"-5 6", -5, -5},
        {L"+-5", 0, 0},
        {L"2147483648", INT32_MAX, 2147483648},
        {L"-2147483649", INT32_MIN, -2147483649},
        {L"9223372036854775808", INT32_MAX, INT64_MAX},
        {L"-99999999999999999999999", INT32_MIN, INT64_MIN},
    };
    for (const auto& [text, number, wide] : cases)
    {
        EXPECT_EQ(text::ReadDecimal(text), number) << text;
        EXPECT_EQ(text::ReadDecimal64(text), wide) << text;
    }
}

TEST(Text, TracesLinesOfBoundedLength)
{
    simulated::Reset();
    platform::TraceMessage(9, L"%s", std::wstring(1024, L'x'));
    platform::TraceMessage(9, L"%s", std::wstring(1025, L'x'));
    const std::wstring longest = L"ZoTracker 9 " + std::wstring(1024, L'x') + L"\n";
    EXPECT_EQ(simulated::TakeDebugOutput(), std::vector<std::wstring>(2, longest));
}

TEST(Md5, TakesAMessageInPiecesOfAnySizeAndKeepsNothingButTheDigest)
{
    const std::pair<std::string, const wchar_t*> cases[] = {
        {"", L"d41d8cd98f00b204e9800998ecf8427e"},
        {"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789",
         L"d174ab98d277d9f5a5611c2c9f419d9f"},
        {std::string(55, 'a'), L"ef1772b6dff9a122358552954ad0df65"},
        {std::string(56, 'a'), L"3b0c8ac703f828b04c6c197006d17218"},
        {std::string(64, 'a'), L"014842d480b571495a4a0363793f7367"},
        {std::string(1000, 'a'), L"cabe45dcc9ae5b66ba86600cca6b8ba8"}};
    for (const auto& [message, digest] : cases)
        for (const std::size_t piece : {1u, 63u, 65u, 128u, 1000u})
        {
            net::Md5Context context;
            context.Initialize();
            const std::vector<std::uint8_t> bytes(message.begin(), message.end());
            for (std::size_t at = 0; at < bytes.size(); at += piece)
                context.Update(std::span(bytes).subspan(at, std::min(piece, bytes.size() - at)));
            context.Finish();
            EXPECT_EQ(net::DigestToHex(context.digest), digest) << piece << " of " << message;
            EXPECT_EQ(context.block, (std::array<std::uint8_t, 64>{}));
        }
}

} // namespace
