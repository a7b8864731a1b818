#include "platform/ProfileFile.h"
#include "tests/platform/System.h"

using namespace contract;

namespace {

using namespace std::string_literals;
using Files = CCase;

const std::wstring file = folder + L"\\Gr\u00F6\u00DFe.dat";

TEST_F(Files, AreReplacedWholeOrNotAtAll)
{
    for (const std::string& bytes : {"\0\r\n\x1A\xFF"s, ""s, std::string(70'000, 'x'), "old"s})
    {
        EXPECT_TRUE(platform::ReplaceFileContents(file, bytes));
        EXPECT_EQ(Read(file), bytes);
    }
    EXPECT_FALSE(platform::ReplaceFileContents(folder + L"\\none\\file.dat", "new"));
    EXPECT_FALSE(platform::ReplaceFileContents(folder, "new"));
    EXPECT_TRUE(platform::RemoveFile(file));
    EXPECT_FALSE(platform::FileSystemItemExists(file));
    EXPECT_FALSE(platform::RemoveFile(file));
    EXPECT_FALSE(platform::RemoveFile(folder));
    EXPECT_FALSE(platform::CreateFolder(folder)) << "it is there";
}

TEST_F(Files, AreReadByManyPathsWithinTheLimit)
{
    ASSERT_TRUE(platform::ReplaceFileContents(file, "12345"));
    EXPECT_EQ(Read(file, 4), "unread");
    EXPECT_EQ(Read(folder), "unread");
    EXPECT_EQ(Read(folder + L"\\Gr\u00F6\u00DFe"), "unread");
    EXPECT_EQ(Read(L"NUL"), "unread") << "a device";
    for (const std::wstring& path :
         {folder + L"\\\\Gr\u00F6\u00DFe.dat", folder + L"/gR\u00D6\u00DFE.DAT", L"\\\\?\\" + file})
        EXPECT_EQ(Read(path, 5), "12345") << testing::PrintToString(path);
    EXPECT_TRUE(platform::FileSystemItemExists(folder + L"\\"));
    EXPECT_FALSE(platform::FileSystemItemExists(L""));
}

TEST_F(Files, EnvironmentVariablesAreReplacedWhereTheyExistAndFit)
{
    const std::wstring text = L"%zo_contract% %ZO_NONE% 100%";
    std::wstring expanded = L"before";
    EXPECT_FALSE(platform::ExpandEnvironment(text, 21, expanded));
    EXPECT_EQ(expanded, L"before");
    EXPECT_TRUE(platform::ExpandEnvironment(text, 22, expanded));
    EXPECT_EQ(expanded, L"va%lue %ZO_NONE% 100%");
}

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
        {L"a", L"SPACED", L"12abc", 12},      {L"A", L"quoted", L"  in quotes  ", 0},
        {L"A", L"single", L"+8", 8},          {L"A", L"empty", L"", -9},
        {L"A", L"sign", L"-5=b;c", -5},       {L"A", L"twice", L"4294967295", -1},
        {L"A", L"bare", L"default", -9},      {L"A", L"hidden", L"default", -9},
        {L"A", L"latin", L"\u00E9\u20AC", 0}, {L"A", L"k", L"default", -9},
        {L"A", L"late", L"default", -9},      {L"B", L"k", L"017", 17},
        {L"C", L"last", L"whole", 0},
    };
    for (const auto& c : cases)
    {
        EXPECT_EQ(ReadText(c.section, c.key), c.text);
        EXPECT_EQ(platform::ReadProfileInt(c.section, c.key, -9, path), c.number) << c.text;
    }
    EXPECT_EQ(ReadText(L"C", L"last", 6), L"whole");
    EXPECT_EQ(ReadText(L"C", L"last", 5), L"whol");

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
