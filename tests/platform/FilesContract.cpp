#include "tests/platform/System.h"

namespace contract {

namespace {

using namespace std::string_literals;
using Files = CCase;

const std::wstring file = folder + L"\\file.dat";

TEST_F(Files, AreReplacedWholeOrNotAtAll)
{
    for (const std::string& bytes : {"\0\r\n\x1A\xFF"s, ""s, std::string(70'000, 'x'), "old"s})
    {
        EXPECT_TRUE(platform::ReplaceFileContents(file, bytes));
        EXPECT_EQ(Read(file), bytes);
    }
    EXPECT_FALSE(platform::ReplaceFileContents(folder + L"\\none\\file.dat", "new"));
    EXPECT_FALSE(platform::ReplaceFileContents(folder, "new"));
    EXPECT_EQ(Read(file), "old");
}

TEST_F(Files, AreReadWithinTheLimitAndRemovedOnce)
{
    ASSERT_TRUE(platform::ReplaceFileContents(file, "12345"));
    EXPECT_EQ(Read(file, 4), "unread");
    EXPECT_EQ(Read(file, 5), "12345");
    EXPECT_EQ(Read(folder), "unread");
    EXPECT_EQ(Read(L"NUL"), "unread") << "a device";

    SetReadOnly(file, true);
    EXPECT_FALSE(platform::RemoveFile(file));
    EXPECT_EQ(Read(file), "12345");
    SetReadOnly(file, false);
    EXPECT_TRUE(platform::RemoveFile(file));
    EXPECT_EQ(Read(file), "unread");
    EXPECT_FALSE(platform::RemoveFile(file));
    EXPECT_FALSE(platform::RemoveFile(folder));
    EXPECT_FALSE(platform::CreateFolder(folder)) << "it is still there";
}

TEST_F(Files, OneItemHasManyPaths)
{
    ASSERT_TRUE(platform::ReplaceFileContents(folder + L"\\Gr\u00F6\u00DFe.dat", "x"));
    for (const std::wstring& path :
         {folder + L"\\\\Gr\u00F6\u00DFe.dat", folder + L"/gR\u00D6\u00DFE.DAT",
          L"\\\\?\\" + folder + L"\\Gr\u00F6\u00DFe.dat", folder + L"\\"})
        EXPECT_TRUE(platform::FileSystemItemExists(path)) << testing::PrintToString(path);
    EXPECT_FALSE(platform::FileSystemItemExists(folder + L"\\Gr\u00F6\u00DFe"));
    EXPECT_FALSE(platform::FileSystemItemExists(L""));
}

TEST_F(Files, EnvironmentVariablesAreReplacedWhereTheyExistAndFit)
{
    SetEnvironmentText(L"ZO_CONTRACT", L"va%lue");
    const struct
    {
        const wchar_t* text;
        std::size_t limit;
        const wchar_t* expanded; // what was there before when it does not fit
    } cases[] = {
        {L"a%ZO_CONTRACT%b", 9, L"ava%lueb"},
        {L"a%ZO_CONTRACT%b", 8, L"before"},
        {L"%zo_contract%%ZO_Contract%", 100, L"va%lueva%lue"},
        {L"%ZO_NONE%ZO_CONTRACT% 100%", 100, L"%ZO_NONE%ZO_CONTRACT% 100%"},
    };
    for (const auto& c : cases)
    {
        std::wstring expanded = L"before";
        const bool fits = platform::ExpandEnvironment(c.text, c.limit, expanded);
        EXPECT_EQ(expanded, c.expanded);
        EXPECT_EQ(fits, expanded != L"before");
    }
}

} // namespace

} // namespace contract
