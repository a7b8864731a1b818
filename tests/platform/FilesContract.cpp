#include "platform/Files.h"
#include "tests/platform/System.h"

#include <string_view>

namespace contract {

namespace {

using namespace std::string_literals;
using Names = std::vector<std::wstring>;
using Files = CFolderTest;

std::string Read(const std::wstring& path)
{
    std::string bytes = "nothing read";
    EXPECT_TRUE(platform::ReadWholeFile(path, 1'000'000, bytes));
    return bytes;
}

TEST_F(Files, ReplacedContentsAreReadBackAndNothingElseIsLeft)
{
    const std::string contents[] = {"first", "", "\0\r\n\x1A\xFF"s, std::string(70'000, 'x'), "y"};
    for (const std::string& bytes : contents)
    {
        EXPECT_TRUE(platform::ReplaceFileContents(PathOf(L"file.dat"), bytes));
        EXPECT_EQ(Read(PathOf(L"file.dat")), bytes);
    }
    EXPECT_EQ(ListFiles(folder), Names{L"file.dat"});
}

TEST_F(Files, AFailedReplacementChangesNothing)
{
    ASSERT_TRUE(platform::ReplaceFileContents(PathOf(L"file.dat"), "old"));
    EXPECT_FALSE(platform::ReplaceFileContents(PathOf(L"none\\file.dat"), "new"));
    EXPECT_FALSE(platform::ReplaceFileContents(PathOf(L"file.dat\\below"), "new"));
    ASSERT_TRUE(platform::CreateFolder(PathOf(L"below")));
    EXPECT_FALSE(platform::ReplaceFileContents(PathOf(L"below"), "new"));
    RemoveFolder(PathOf(L"below"));
    EXPECT_EQ(ListFiles(folder), Names{L"file.dat"});
    EXPECT_EQ(Read(PathOf(L"file.dat")), "old");
}

TEST_F(Files, ReadingKeepsToTheLimitAndLeavesTheOutputAloneOnFailure)
{
    ASSERT_TRUE(platform::ReplaceFileContents(PathOf(L"file.dat"), "12345"));
    std::string bytes = "before";
    EXPECT_FALSE(platform::ReadWholeFile(PathOf(L"file.dat"), 4, bytes));
    EXPECT_FALSE(platform::ReadWholeFile(PathOf(L"none.dat"), 100, bytes));
    EXPECT_FALSE(platform::ReadWholeFile(folder, 100, bytes));
    EXPECT_FALSE(platform::ReadWholeFile(L"", 100, bytes));
    EXPECT_FALSE(platform::ReadWholeFile(L"NUL", 100, bytes)) << "a device";
    EXPECT_EQ(bytes, "before");
    EXPECT_TRUE(platform::ReadWholeFile(PathOf(L"file.dat"), 5, bytes));
    EXPECT_EQ(bytes, "12345");
}

TEST_F(Files, FoldersAreCreatedOneAtATime)
{
    const std::wstring below = PathOf(L"below");
    EXPECT_FALSE(platform::CreateFolder(below + L"\\deeper"));
    EXPECT_FALSE(platform::FileSystemItemExists(below));
    EXPECT_TRUE(platform::CreateFolder(below));
    EXPECT_TRUE(platform::FileSystemItemExists(below));
    EXPECT_FALSE(platform::CreateFolder(below));
    RemoveFolder(below);
    ASSERT_TRUE(platform::ReplaceFileContents(below, ""));
    EXPECT_FALSE(platform::CreateFolder(below)) << "a file has the name";
}

TEST_F(Files, OnlyFilesAreRemovedAndOnlyOnce)
{
    ASSERT_TRUE(platform::ReplaceFileContents(PathOf(L"file.dat"), "x"));
    EXPECT_TRUE(platform::RemoveFile(PathOf(L"file.dat")));
    EXPECT_FALSE(platform::FileSystemItemExists(PathOf(L"file.dat")));
    EXPECT_FALSE(platform::RemoveFile(PathOf(L"file.dat")));
    EXPECT_FALSE(platform::RemoveFile(folder));
    EXPECT_TRUE(platform::FileSystemItemExists(folder));
}

TEST_F(Files, AReadOnlyFileIsReadAndNotRemoved)
{
    ASSERT_TRUE(platform::ReplaceFileContents(PathOf(L"file.dat"), "x"));
    SetReadOnly(PathOf(L"file.dat"), true);
    EXPECT_FALSE(platform::RemoveFile(PathOf(L"file.dat")));
    EXPECT_EQ(Read(PathOf(L"file.dat")), "x");
    SetReadOnly(PathOf(L"file.dat"), false);
    EXPECT_TRUE(platform::RemoveFile(PathOf(L"file.dat")));
}

TEST_F(Files, OneItemHasManyPaths)
{
    ASSERT_TRUE(platform::ReplaceFileContents(PathOf(L"Gr\u00F6\u00DFe.dat"), "x"));
    const struct
    {
        const char* what;
        std::wstring path;
        bool exists;
    } cases[] = {
        {"as created", folder + L"\\Gr\u00F6\u00DFe.dat", true},
        {"doubled backslash", folder + L"\\\\Gr\u00F6\u00DFe.dat", true},
        {"forward slash", folder + L"/Gr\u00F6\u00DFe.dat", true},
        {"other case", folder + L"\\gR\u00D6\u00DFE.DAT", true},
        {"literal", L"\\\\?\\" + folder + L"\\Gr\u00F6\u00DFe.dat", true},
        {"other name", folder + L"\\Gr\u00F6\u00DFe", false},
        {"folder with separator", folder + L"\\", true},
        {"nothing", L"", false},
    };
    for (const auto& c : cases)
        EXPECT_EQ(platform::FileSystemItemExists(c.path), c.exists) << c.what;
}

TEST_F(Files, EnvironmentVariablesAreReplacedWhereTheyExist)
{
    SetEnvironmentText(L"ZO_CONTRACT", L"va%lue");
    const struct
    {
        const wchar_t* text;
        const wchar_t* expanded;
    } cases[] = {
        {L"", L""},
        {L"plain", L"plain"},
        {L"a%ZO_CONTRACT%b", L"ava%lueb"},
        {L"%zo_contract%%ZO_Contract%", L"va%lueva%lue"},
        {L"%ZO_NONE%", L"%ZO_NONE%"},
        {L"%ZO_NONE%ZO_CONTRACT%", L"%ZO_NONE%ZO_CONTRACT%"},
        {L"100%", L"100%"},
        {L"%%", L"%%"},
    };
    for (const auto& c : cases)
    {
        std::wstring expanded = L"before";
        EXPECT_TRUE(platform::ExpandEnvironment(c.text, 100, expanded));
        EXPECT_EQ(expanded, c.expanded);
    }
}

TEST_F(Files, AnExpansionThatDoesNotFitChangesNothing)
{
    SetEnvironmentText(L"ZO_CONTRACT", L"12345");
    std::wstring expanded = L"before";
    EXPECT_FALSE(platform::ExpandEnvironment(L"%ZO_CONTRACT%", 5, expanded));
    EXPECT_EQ(expanded, L"before");
    EXPECT_TRUE(platform::ExpandEnvironment(L"%ZO_CONTRACT%", 6, expanded));
    EXPECT_EQ(expanded, L"12345");
}

} // namespace

} // namespace contract
