#include "platform/CodePage.h"
#include "tests/platform/System.h"

#include <clocale>

namespace contract {

namespace {

// Both bytes and units on both systems; a pair of units is one character beyond U+FFFF.
const struct
{
    const char* bytes;
    std::wstring text;
} wellFormed[] = {
    {"A\x7F", L"A\x7F"},
    {"\xC2\x80\xDF\xBF", {0x80, 0x7FF}},
    {"\xE0\xA0\x80\xEF\xBF\xBF", {0x800, 0xFFFF}},
    {"\xED\x9F\xBF\xEE\x80\x80", {0xD7FF, 0xE000}},
    {"\xF0\x90\x80\x80\xF4\x8F\xBF\xBF", {0xD800, 0xDC00, 0xDBFF, 0xDFFF}},
};

class CodePage : public testing::Test
{
protected:
    CodePage() { BeginCase(); }
};

TEST_F(CodePage, Utf8GoesBothWays)
{
    for (const auto& c : wellFormed)
    {
        std::wstring text = L"before";
        EXPECT_EQ(platform::EncodeUtf8(c.text), c.bytes);
        EXPECT_EQ(platform::DecodeUtf8(c.bytes, text), c.text.size());
        EXPECT_EQ(text, c.text);
    }
    using namespace std::string_view_literals;
    EXPECT_EQ(platform::EncodeUtf8(L"a\0b"sv), "a\0b"sv);
    EXPECT_EQ(platform::EncodeUtf8(L""), "");
}

TEST_F(CodePage, UnpairedSurrogatesBecomeTheReplacementCharacter)
{
    const std::wstring cases[] = {{0xD800}, {0xDC00}, {0xDBFF}, {0xDFFF}};
    for (const std::wstring& text : cases)
    {
        EXPECT_EQ(platform::EncodeUtf8(text), "\xEF\xBF\xBD");
        EXPECT_EQ(platform::EncodeUtf8(text + L"x"), "\xEF\xBF\xBDx");
    }
    EXPECT_EQ(platform::EncodeUtf8(std::wstring{0xD800, 0xD800, 0xDC00}),
              "\xEF\xBF\xBD\xF0\x90\x80\x80");
}

TEST_F(CodePage, BrokenUtf8BecomesReplacementCharacters)
{
    const struct
    {
        const char* what;
        const char* bytes;
        std::wstring text;
    } cases[] = {
        {"no first byte",
         "a\xFF"
         "b",
         {'a', 0xFFFD, 'b'}},
        {"lone continuation", "\x80", {0xFFFD}},
        {"cut at the end", "a\xC3", {'a', 0xFFFD}},
        {"cut by ASCII", "\xE2\x82(", {0xFFFD, '('}},
        {"cut by a first byte", "\xF0\x9F\x98\xC3\xA9", {0xFFFD, 0xE9}},
    };
    for (const auto& c : cases)
    {
        std::wstring text;
        EXPECT_EQ(platform::DecodeUtf8(c.bytes, text), c.text.size()) << c.what;
        EXPECT_EQ(text, c.text) << c.what;
    }
    for (const char* bytes : {"\xC0\xAF", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xE0\x80\xAF"})
    {
        std::wstring text;
        EXPECT_GT(platform::DecodeUtf8(bytes, text), 0u);
        EXPECT_EQ(text.find_first_not_of(L'\xFFFD'), text.npos) << "overlong, surrogate, too high";
    }
}

TEST_F(CodePage, NoBytesDecodeToNothing)
{
    std::wstring text = L"before";
    EXPECT_EQ(platform::DecodeUtf8("", text), 0u);
    EXPECT_EQ(text, L"before");
    EXPECT_EQ(platform::DecodeAnsi(""), L"");
}

TEST_F(CodePage, TheDefaultCodePageIs1252)
{
    EXPECT_EQ(platform::DecodeAnsi("A\x80\x85\x9F\xA0\xE9\xFF"),
              (std::wstring{'A', 0x20AC, 0x2026, 0x178, 0xA0, 0xE9, 0xFF}));
}

const struct
{
    wchar_t unit;
    bool isAlphanumeric;
    wchar_t upper;
    wchar_t lower;
} samples[] = {
    {'a', true, 'A', 'a'},           {'Z', true, 'Z', 'z'},       {'0', true, '0', '0'},
    {'9', true, '9', '9'},           {'/', false, '/', '/'},      {':', false, ':', ':'},
    {'@', false, '@', '@'},          {'[', false, '[', '['},      {'`', false, '`', '`'},
    {'{', false, '{', '{'},          {'_', false, '_', '_'},      {' ', false, ' ', ' '},
    {0x7F, false, 0x7F, 0x7F},       {0xA0, false, 0xA0, 0xA0},   {0xB2, true, 0xB2, 0xB2},
    {0xB7, false, 0xB7, 0xB7},       {0xBD, false, 0xBD, 0xBD},   {0xC0, true, 0xC0, 0xE0},
    {0xD7, false, 0xD7, 0xD7},       {0xDE, true, 0xDE, 0xFE},    {0xDF, true, 0xDF, 0xDF},
    {0xE9, true, 0xC9, 0xE9},        {0xF7, false, 0xF7, 0xF7},   {0xFF, true, 0x178, 0xFF},
    {0x391, true, 0x391, 0x3B1},     {0x3C9, true, 0x3A9, 0x3C9}, {0x410, true, 0x410, 0x430},
    {0x44F, true, 0x42F, 0x44F},     {0x451, true, 0x401, 0x451}, {0x20AC, false, 0x20AC, 0x20AC},
    {0xD800, false, 0xD800, 0xD800},
};

TEST_F(CodePage, ClassesAndCasesDoNotFollowTheHostsLocale)
{
    for (const char* locale : {"C", "", "Turkish_Turkey.1254"})
    {
        if (std::setlocale(LC_ALL, locale) == nullptr)
            continue; // the last one has this name on Windows only
        for (const auto& c : samples)
        {
            EXPECT_EQ(platform::IsAlphanumeric(c.unit), c.isAlphanumeric)
                << locale << ' ' << +c.unit;
            EXPECT_EQ(platform::ToUpper(c.unit), c.upper) << locale << ' ' << +c.unit;
            EXPECT_EQ(platform::ToLower(c.unit), c.lower) << locale << ' ' << +c.unit;
        }
        EXPECT_EQ(platform::ToUpper(L'i'), L'I') << locale;
    }
    std::setlocale(LC_ALL, "C");
}

} // namespace

} // namespace contract
