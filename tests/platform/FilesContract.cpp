#include "platform/Files.h"
#include "tests/platform/System.h"

namespace contract {

namespace {

using namespace std::string_literals;
using Files = CFolderTest;

std::string Read(const std::wstring& path)
{
    std::string bytes = "nothing read";
    EXPECT_TRUE(platform::ReadWholeFile(path, 1'000'000, bytes));
    return bytes;
}

TEST_F(Files, AreReplacedWholeOrNotAtAll)
{
    const std::wstring file = PathOf(L"file.dat");
    for (const std::string& bytes : {"\0\r\n\x1A\xFF"s, ""s, std::string(70'000, 'x'), "old"s})
    {
        EXPECT_TRUE(platform::ReplaceFileContents(file, bytes));
        EXPECT_EQ(Read(file), bytes);
    }
    EXPECT_FALSE(platform::ReplaceFileContents(PathOf(L"none\\file.dat"), "new"));
    ASSERT_TRUE(platform::CreateFolder(PathOf(L"below")));
    EXPECT_FALSE(platform::ReplaceFileContents(PathOf(L"below"), "new"));
    RemoveFolder(PathOf(L"below"));
    EXPECT_EQ(ListFiles(folder), std::vector<std::wstring>{L"file.dat"});
    EXPECT_EQ(Read(file), "old");
}

TEST_F(Files, ReadingKeepsToTheLimitAndLeavesTheOutputAloneOnFailure)
{
    ASSERT_TRUE(platform::ReplaceFileContents(PathOf(L"file.dat"), "12345"));
    std::string bytes = "before";
    EXPECT_FALSE(platform::ReadWholeFile(PathOf(L"file.dat"), 4, bytes));
    EXPECT_FALSE(platform::ReadWholeFile(PathOf(L"none.dat"), 100, bytes));
    EXPECT_FALSE(platform::ReadWholeFile(folder, 100, bytes));
    EXPECT_FALSE(platform::ReadWholeFile(L"NUL", 100, bytes)) << "a device";
    EXPECT_EQ(bytes, "before");
    EXPECT_TRUE(platform::ReadWholeFile(PathOf(L"file.dat"), 5, bytes));
    EXPECT_EQ(bytes, "12345");
}

TEST_F(Files, OnlyWritableFilesAreRemovedAndOnlyOnce)
{
    const std::wstring file = PathOf(L"file.dat");
    ASSERT_TRUE(platform::ReplaceFileContents(file, "x"));
    SetReadOnly(file, true);
    EXPECT_FALSE(platform::RemoveFile(file));
    EXPECT_EQ(Read(file), "x");
    SetReadOnly(file, false);
    EXPECT_TRUE(platform::RemoveFile(file));
    EXPECT_FALSE(platform::FileSystemItemExists(file));
    EXPECT_FALSE(platform::RemoveFile(file));
    EXPECT_FALSE(platform::RemoveFile(folder));
    EXPECT_TRUE(platform::FileSystemItemExists(folder));
}

TEST_F(Files, OneItemHasManyPaths)
{
    ASSERT_TRUE(platform::ReplaceFileContents(PathOf(L"Gr\u00F6\u00DFe.dat"), "x"));
    for (const std::wstring& path :
         {folder + L"\\\\Gr\u00F6\u00DFe.dat", folder + L"/gR\u00D6\u00DFE.DAT",
          L"\\\\?\\" + folder + L"\\Gr\u00F6\u00DFe.dat", folder + L"\\"})
        EXPECT_TRUE(platform::FileSystemItemExists(path)) << testing::PrintToString(path);
    EXPECT_FALSE(platform::FileSystemItemExists(PathOf(L"Gr\u00F6\u00DFe")));
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
        {L"%ZO_NONE%ZO_CONTRACT%", 100, L"%ZO_NONE%ZO_CONTRACT%"},
        {L"%% 100%", 100, L"%% 100%"},
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
