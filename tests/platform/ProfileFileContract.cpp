#include "platform/ProfileFile.h"
#include "tests/platform/System.h"

namespace contract {

namespace {

using ProfileFile = CCase;

const std::wstring path = folder + L"\\\\install.cfg"; // as the module forms it

std::wstring ReadText(const wchar_t* section, const wchar_t* key, std::size_t room = 30)
{
    std::wstring buffer(room, L'#');
    buffer.resize(platform::CopyProfileText(section, key, L"default", buffer, path));
    return buffer;
}

TEST_F(ProfileFile, ReadsValuesAsTextsAndNumbers)
{
    platform::ReplaceFileContents(path, "k=before any section\r\n"
                                        "[A]\r\n"
                                        "  spaced  =  12abc  \r\n"
                                        "quoted=\"  in quotes  \"\r\n"
                                        "single='+8'\r\n"
                                        "half=\"half\r\n"
                                        "empty=\r\n"
                                        "sign=-5=b;c\r\n"
                                        "twice=4294967295\r\n"
                                        "twice=second\r\n"
                                        "bare\r\n"
                                        ";hidden=1\r\n"
                                        "latin=\xE9\x80\r\n"
                                        "[ B ]  \r\n"
                                        "k=017\n"
                                        "\n"
                                        "[A]\r\n"
                                        "late=of the second A\r\n"
                                        "[C]\r\n"
                                        "last=whole");
    const struct
    {
        const wchar_t *section, *key, *text;
        std::int32_t number;
    } cases[] = {
        {L"a", L"SPACED", L"12abc", 12},
        {L"A", L"quoted", L"  in quotes  ", 0},
        {L"A", L"single", L"+8", 8},
        {L"A", L"half", L"\"half", 0},
        {L"A", L"empty", L"", -9},
        {L"A", L"sign", L"-5=b;c", -5},
        {L"A", L"twice", L"4294967295", -1},
        {L"A", L"bare", L"default", -9},
        {L"A", L"hidden", L"default", -9},
        {L"A", L"latin", L"\u00E9\u20AC", 0},
        {L"A", L"k", L"default", -9},
        {L"A", L"late", L"default", -9},
        {L"B", L"k", L"017", 17},
        {L"C", L"last", L"whole", 0},
        {L"D", L"k", L"default", -9},
    };
    for (const auto& c : cases)
    {
        EXPECT_EQ(ReadText(c.section, c.key), c.text) << testing::PrintToString(c.key);
        EXPECT_EQ(platform::ReadProfileInt(c.section, c.key, -9, path), c.number)
            << testing::PrintToString(c.key);
    }
    EXPECT_EQ(ReadText(L"C", L"last", 6), L"whole");
    EXPECT_EQ(ReadText(L"C", L"last", 5), L"whol");
}

TEST_F(ProfileFile, ReadsUtf16WithAByteOrderMark)
{
    platform::ReplaceFileContents(
        path, std::string("\xFF\xFE[\0A\0]\0\r\0\n\0k\0=\0\x16\x04\r\0\n\0", 22));
    EXPECT_EQ(ReadText(L"A", L"k"), L"\u0416");
}

TEST_F(ProfileFile, WritingCreatesWhatIsMissingAndKeepsTheRest)
{
    EXPECT_TRUE(platform::WriteProfileText(L"A", L"k", L"1", path));
    EXPECT_EQ(Read(path), "[A]\r\nk=1\r\n");

    platform::ReplaceFileContents(path, "; head\r\n[A]\r\nk=1\r\n;k2=2\r\n[B]\r\nk=3");
    EXPECT_TRUE(platform::WriteProfileText(L"A", L"k", L"\u00E9\u20AC", path));
    EXPECT_TRUE(platform::WriteProfileText(L"a", L"K3", L"", path));
    EXPECT_TRUE(platform::WriteProfileText(L"B", L"k2", L"4", path));
    EXPECT_TRUE(platform::WriteProfileText(L"C", L"k", L"5", path));
    EXPECT_EQ(Read(path), "; head\r\n[A]\r\nk=\xE9\x80\r\n;k2=2\r\nK3=\r\n"
                          "[B]\r\nk=3\r\nk2=4\r\n[C]\r\nk=5\r\n");
}

} // namespace

} // namespace contract
