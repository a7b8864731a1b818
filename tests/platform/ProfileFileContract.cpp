#include "platform/Files.h"
#include "platform/ProfileFile.h"
#include "tests/platform/System.h"

#include <array>
#include <string_view>

namespace contract {

namespace {

class ProfileFile : public CFolderTest
{
protected:
    void PutProfile(const std::string& bytes)
    {
        ASSERT_TRUE(platform::ReplaceFileContents(path, bytes));
    }

    std::wstring ReadText(const std::wstring& section, const std::wstring& key) const
    {
        std::array<wchar_t, 300> buffer;
        buffer.fill(L'#');
        const std::size_t length =
            platform::ReadProfileText(section, key, L"default", buffer, path);
        EXPECT_EQ(buffer.at(length), 0);
        return {buffer.data(), length};
    }

    std::int32_t ReadInt(const std::wstring& key) const
    {
        return platform::ReadProfileInt(L"A", key, -1, path);
    }

    std::string ReadBytes() const
    {
        std::string bytes = "nothing read";
        platform::ReadWholeFile(path, 10'000, bytes);
        return bytes;
    }

    const std::wstring path = folder + L"\\\\install.cfg"; // as the module forms it
};

TEST_F(ProfileFile, ReadsValues)
{
    PutProfile("k=before any section\r\n"
               "[A]\r\n"
               "  spaced  =  a value  \r\n"
               "quoted=\"  in quotes  \"\r\n"
               "single='in quotes'\r\n"
               "half=\"half\r\n"
               "empty=\r\n"
               "sign=a=b;c\r\n"
               "twice=first\r\n"
               "twice=second\r\n"
               "bare\r\n"
               ";hidden=1\r\n"
               "latin=\xE9\x80\r\n"
               "[ B ]  \r\n"
               "k=of B\n"
               "\n"
               "[A]\r\n"
               "late=of the second A\r\n"
               "[C]\r\n"
               "last=no line end");
    const struct
    {
        const wchar_t* section;
        const wchar_t* key;
        const wchar_t* value;
    } cases[] = {
        {L" a ", L" SPACED ", L"a value"},
        {L"A", L"quoted", L"  in quotes  "},
        {L"A", L"single", L"in quotes"},
        {L"A", L"half", L"\"half"},
        {L"A", L"empty", L""},
        {L"A", L"sign", L"a=b;c"},
        {L"A", L"twice", L"first"},
        {L"A", L"bare", L"default"},
        {L"A", L"hidden", L"default"},
        {L"A", L"latin", L"\u00E9\u20AC"},
        {L"A", L"k", L"default"},
        {L"A", L"late", L"default"},
        {L"B", L"k", L"of B"},
        {L"C", L"last", L"no line end"},
        {L"D", L"k", L"default"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(ReadText(c.section, c.key), c.value) << testing::PrintToString(c.key);
}

TEST_F(ProfileFile, AMissingFileGivesTheDefault)
{
    EXPECT_EQ(ReadText(L"A", L"k"), L"default");
    EXPECT_EQ(ReadInt(L"k"), -1);
    std::array<wchar_t, 20> buffer;
    EXPECT_EQ(platform::ReadProfileText(L"A", L"k", L"  blanks  ", buffer, path), 8u);
    EXPECT_STREQ(buffer.data(), L"  blanks") << "without the default's trailing blanks";
    EXPECT_FALSE(platform::FileSystemItemExists(path));
}

TEST_F(ProfileFile, CutsValuesToTheBuffer)
{
    PutProfile("[A]\r\nk=12345\r\n");
    const struct
    {
        std::size_t size;
        const wchar_t* value;
    } cases[] = {{1, L""}, {5, L"1234"}, {6, L"12345"}};
    for (const auto& c : cases)
    {
        std::wstring buffer(10, L'#');
        const std::size_t length =
            platform::ReadProfileText(L"A", L"k", L"", std::span(buffer.data(), c.size), path);
        EXPECT_EQ(buffer.substr(0, length), c.value) << c.size;
        EXPECT_EQ(buffer[length], 0) << c.size;
        EXPECT_EQ(buffer.substr(c.size), std::wstring(10 - c.size, L'#')) << c.size;
    }
    EXPECT_EQ(platform::ReadProfileText(L"A", L"k", L"", {}, path), 0u);
}

TEST_F(ProfileFile, ReadsNumbers)
{
    const struct
    {
        const char* value;
        std::int32_t number;
    } cases[] = {
        {"12abc", 12},      {"-5", -5}, {" +8", 8}, {"0x1F", 31}, {"017", 17},
        {"\"9\"", 9},       {"", -1},   {"abc", 0}, {"- 5", 0},   {"2147483647", 2147483647},
        {"4294967295", -1},
    };
    for (const auto& c : cases)
    {
        PutProfile(std::string("[A]\r\nk=") + c.value + "\r\n");
        EXPECT_EQ(ReadInt(L"k"), c.number) << c.value;
    }
    EXPECT_EQ(ReadInt(L"none"), -1);
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

TEST_F(ProfileFile, WritingFailsWhereNoFileCanBe)
{
    EXPECT_FALSE(platform::WriteProfileText(L"A", L"k", L"1", PathOf(L"none\\install.cfg")));
    EXPECT_FALSE(platform::WriteProfileText(L"A", L"k", L"1", folder));
    EXPECT_TRUE(ListFiles(folder).empty());
}

} // namespace

} // namespace contract
