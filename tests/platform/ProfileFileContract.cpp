#include "platform/Files.h"
#include "platform/ProfileFile.h"
#include "tests/platform/System.h"

#include <span>

namespace contract {

namespace {

class ProfileFile : public CFolderTest
{
protected:
    void PutProfile(const std::string& bytes)
    {
        ASSERT_TRUE(platform::ReplaceFileContents(path, bytes));
    }

    std::wstring ReadText(const std::wstring& section, const std::wstring& key,
                          std::size_t room = 30) const
    {
        std::wstring buffer(40, L'#');
        const std::size_t length = platform::CopyProfileText(section, key, L"  default  ",
                                                             std::span(buffer.data(), room), path);
        EXPECT_EQ(buffer.at(length), 0);
        EXPECT_EQ(buffer.substr(room), std::wstring(buffer.size() - room, L'#'));
        return buffer.substr(0, length);
    }

    std::string ReadBytes() const
    {
        std::string bytes = "nothing read";
        platform::ReadWholeFile(path, 10'000, bytes);
        return bytes;
    }

    const std::wstring path = folder + L"\\\\install.cfg"; // as the module forms it
};

TEST_F(ProfileFile, ReadsValuesAsTextsAndNumbers)
{
    PutProfile("k=before any section\r\n"
               "[A]\r\n"
               "  spaced  =  12abc  \r\n"
               "quoted=\"  in quotes  \"\r\n"
               "single='+8'\r\n"
               "half=\"half\r\n"
               "empty=\r\n"
               "sign=-5=b;c\r\n"
               "twice=0x1F\r\n"
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
               "last=4294967295");
    const wchar_t* const byDefault = L"  default"; // loses its trailing blanks
    const struct
    {
        const wchar_t *section, *key, *text;
        std::int32_t number;
    } cases[] = {
        {L" a ", L" SPACED ", L"12abc", 12},
        {L"A", L"quoted", L"  in quotes  ", 0},
        {L"A", L"single", L"+8", 8},
        {L"A", L"half", L"\"half", 0},
        {L"A", L"empty", L"", -1},
        {L"A", L"sign", L"-5=b;c", -5},
        {L"A", L"twice", L"0x1F", 31},
        {L"A", L"bare", byDefault, -1},
        {L"A", L"hidden", byDefault, -1},
        {L"A", L"latin", L"\u00E9\u20AC", 0},
        {L"A", L"k", byDefault, -1},
        {L"A", L"late", byDefault, -1},
        {L"B", L"k", L"017", 17},
        {L"C", L"last", L"4294967295", -1},
        {L"D", L"k", byDefault, -1},
    };
    for (const auto& c : cases)
    {
        EXPECT_EQ(ReadText(c.section, c.key), c.text) << testing::PrintToString(c.key);
        EXPECT_EQ(platform::ReadProfileInt(c.section, c.key, -1, path), c.number)
            << testing::PrintToString(c.key);
    }
    EXPECT_EQ(ReadText(L"C", L"last", 11), L"4294967295");
    EXPECT_EQ(ReadText(L"C", L"last", 10), L"429496729");
    EXPECT_EQ(ReadText(L"C", L"last", 1), L"");
}

TEST_F(ProfileFile, ReadsUtf16WithAByteOrderMark)
{
    PutProfile(std::string("\xFF\xFE[\0A\0]\0\r\0\n\0k\0=\0\x16\x04\r\0\n\0", 22));
    EXPECT_EQ(ReadText(L"A", L"k"), L"\u0416");
    EXPECT_TRUE(platform::WriteProfileText(L"A", L"k2", L"\u0436", path));
    EXPECT_EQ(ReadText(L"A", L"k"), L"\u0416");
    EXPECT_EQ(ReadText(L"A", L"k2"), L"\u0436");
}

TEST_F(ProfileFile, WritingCreatesWhatIsMissingAndKeepsTheRest)
{
    EXPECT_TRUE(platform::WriteProfileText(L"A", L"k", L"1", path));
    EXPECT_EQ(ReadBytes(), "[A]\r\nk=1\r\n");
    EXPECT_EQ(ListFiles(folder), std::vector<std::wstring>{L"install.cfg"});

    PutProfile("; head\r\n[A]\r\nk=1\r\n;k2=2\r\n[B]\r\nk=3");
    EXPECT_TRUE(platform::WriteProfileText(L"A", L"k", L"\u00E9\u20AC", path));
    EXPECT_TRUE(platform::WriteProfileText(L"a", L"K3", L"", path));
    EXPECT_TRUE(platform::WriteProfileText(L"B", L"k2", L"4", path));
    EXPECT_TRUE(platform::WriteProfileText(L"C", L"k", L"5", path));
    EXPECT_EQ(ReadBytes(), "; head\r\n[A]\r\nk=\xE9\x80\r\n;k2=2\r\nK3=\r\n"
                           "[B]\r\nk=3\r\nk2=4\r\n[C]\r\nk=5\r\n");
}

} // namespace

} // namespace contract
