#include "zotracker/vnosal/VnFile.h"
#include "PrintText.h"
#include "TestFolder.h"
#include "zotracker/vnosal/VnFileFind.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace {

using namespace VnOSAL;
using vnosal_test::CTestFolder;

TEST(VnFile, ReadsWritesAndSeeks)
{
    const CTestFolder folder;
    VnFile file;
    ASSERT_TRUE(file.Open(folder.At(L"f"), EAccess::ReadWrite, EOpen::New));
    EXPECT_TRUE(file.Write("0123456789", 10));
    std::uint64_t number = 0;
    EXPECT_TRUE(file.Seek(-4, ESeek::End, &number));
    EXPECT_EQ(number, 6u);
    char buffer[8] = "";
    std::size_t done = 0;
    EXPECT_TRUE(file.Read(buffer, 8, done));
    EXPECT_EQ(std::string(buffer, done), "6789");
    EXPECT_TRUE(file.Read(buffer, 8, done));
    EXPECT_EQ(done, 0u);
    EXPECT_TRUE(file.Seek(2));
    EXPECT_TRUE(file.SetSize(5));
    EXPECT_TRUE(file.Seek(0, ESeek::Current, &number));
    EXPECT_EQ(number, 2u);
    EXPECT_TRUE(file.SetSize(7));
    EXPECT_TRUE(file.ReadSize(number));
    EXPECT_EQ(number, 7u);
    EXPECT_TRUE(file.Flush());
    EXPECT_FALSE(file.Seek(-1));
    VnFile moved(static_cast<VnFile&&>(file));
    EXPECT_FALSE(file.IsOpen());
    moved.Close();
    EXPECT_EQ(folder.ReadFile(L"f"), std::string("01234\0\0", 7));
}

TEST(VnFile, OpensAsItIsTold)
{
    const CTestFolder folder;
    folder.WriteFile(L"f", "old");
    VnFile file;
    EXPECT_EQ(file.Open(folder.At(L"f"), EAccess::Write, EOpen::New).GetKind(), EError::Exists);
    EXPECT_TRUE(file.Open(folder.At(L"f"), EAccess::Write, EOpen::OpenOrCreate));
    EXPECT_TRUE(file.Write("n", 1));
    file.Close();
    EXPECT_EQ(folder.ReadFile(L"f"), "nld");
    EXPECT_TRUE(file.Open(folder.At(L"f"), EAccess::Write, EOpen::Truncate));
    file.Close();
    EXPECT_EQ(folder.ReadFile(L"f"), "");
    EXPECT_EQ(file.Open(folder.At(L"none"), EAccess::Read).GetKind(), EError::NotFound);
    EXPECT_EQ(file.Open(folder.At(L""), EAccess::Read).GetKind(), EError::Denied); // a folder
    EXPECT_EQ(file.Write("x", 1).GetKind(), EError::BadPath);

    VnFile second;
    const struct
    {
        EAccess access;
        ESharing sharing;
        EAccess secondAccess;
        EError expected;
    } cases[] = {
        {EAccess::Write, ESharing::None, EAccess::Read, EError::InUse},
        {EAccess::Read, ESharing::Read, EAccess::Read, EError::None},
        {EAccess::Read, ESharing::Read, EAccess::Write, EError::InUse},
    };
    for (const auto& c : cases)
    {
        EXPECT_TRUE(file.Open(folder.At(L"f"), c.access, EOpen::Existing, c.sharing));
        EXPECT_EQ(second.Open(folder.At(L"f"), c.secondAccess).GetKind(), c.expected);
        file.Close();
        EXPECT_TRUE(second.Open(folder.At(L"f"), c.secondAccess));
        second.Close();
    }
}

TEST(VnFile, ReadsTextByItsByteOrderMark)
{
    const CTestFolder folder;
    const struct
    {
        std::string_view bytes;
        std::uint32_t codePage;
        std::wstring_view text;
    } cases[] = {
        {"\xE4\x80", 1252, L"\xE4\x20AC"},
        {"\xEF\xBB\xBF\xC3\xA4", 1252, L"\xE4"},
        {{"\xFF\xFE\xE4\0\x3D\xD8\0\xDE", 8}, codePageUtf8, L"\xE4\xD83D\xDE00"},
        {{"\xFE\xFF\0\xE4!", 5}, codePageUtf8, L"\xE4"},
    };
    for (const auto& c : cases)
    {
        VnString text(L"before");
        folder.WriteFile(L"t", c.bytes);
        EXPECT_TRUE(VnFile::ReadText(folder.At(L"t"), text, c.bytes.size(), c.codePage));
        EXPECT_EQ(text, c.text);
        folder.WriteFile(L"t", std::string(c.bytes) + "x");
        EXPECT_EQ(VnFile::ReadText(folder.At(L"t"), text, c.bytes.size()).GetKind(),
                  EError::TooLarge);
        EXPECT_EQ(text, c.text);
    }
}

TEST(VnFile, ReplacesContentsInOneStep)
{
    const CTestFolder folder;
    EXPECT_TRUE(VnFile::ReplaceText(folder.At(L"f"), L"\xE4\n"));
    EXPECT_EQ(folder.ReadFile(L"f"), "\xC3\xA4\n");
    EXPECT_TRUE(VnFile::ReplaceContents(folder.At(L"f"), std::string(100'000, 'b')));
    EXPECT_EQ(folder.ReadFile(L"f"), std::string(100'000, 'b'));
    EXPECT_EQ(VnFile::ReplaceText(folder.At(L"f"), L"x", 4711).GetKind(), EError::NotSupported);

    folder.WriteFile(L"d/x");
    const VnResult refused = VnFile::ReplaceContents(folder.At(L"d"), "x");
    EXPECT_FALSE(refused);
    EXPECT_EQ(refused.GetItem(), folder.At(L"d").GetText());
    EXPECT_EQ(VnFile::ReplaceContents(folder.At(L"none/f"), "x").GetKind(), EError::NotFound);
    EXPECT_EQ(folder.List(), "d/ d/x f"); // and no temporary file
}

// The names that are found, each with its depth.
using Names = std::set<std::string>;
Names FindAll(VnFileFind& find)
{
    Names found;
    while (find.Next())
        found.insert(std::string(VnAString(find.GetName(), codePageUtf8)) + "@" +
                     std::to_string(find.GetDepth()));
    return found;
}

TEST(VnFileFind, FindsByPatternAndDepth)
{
    const CTestFolder folder;
    for (const wchar_t* name : {L"a.txt", L"B.TXT", L"c.log", L"d.txt/e.txt", L"d.txt/f/g.txt"})
        folder.WriteFile(name);
    VnFileFind flat(folder.At(L""), L"*.txt");
    EXPECT_EQ(FindAll(flat), (Names{"a.txt@0", "B.TXT@0", "d.txt@0"}));
    VnFileFind deep(folder.At(L""), L"?.txt", {.recursive = true});
    EXPECT_EQ(FindAll(deep), (Names{"a.txt@0", "B.TXT@0", "d.txt@0", "e.txt@1", "g.txt@2"}));
    EXPECT_TRUE(deep.GetResult());
    EXPECT_FALSE(deep.Next());

    VnFileFind skipping(folder.At(L""), L"*", {.recursive = true});
    while (skipping.Next())
    {
        EXPECT_EQ(skipping.GetDepth(), 0u);
        if (skipping.GetKind() != EItemKind::Folder)
            continue;
        VnItemFacts facts;
        EXPECT_TRUE(skipping.ReadFacts(facts));
        EXPECT_EQ(facts.kind, EItemKind::Folder);
        EXPECT_TRUE(skipping.GetPath().IsSame(folder.At(L"d.txt")));
        skipping.SkipFolder();
    }

    VnFileFind missing(folder.At(L"none"));
    EXPECT_FALSE(missing.Next());
    EXPECT_EQ(missing.GetResult().GetKind(), EError::NotFound);
    EXPECT_EQ(missing.GetResult().GetItem(), folder.At(L"none").GetText());
}

TEST(VnFileFind, FollowsLinksOnlyIfToldAndNeverInCircles)
{
    const CTestFolder folder;
    folder.WriteFile(L"t/d/f");
    folder.WriteFile(L"outside/o");
    folder.MakeFolderLink(L"t/out", L"outside");
    folder.MakeFolderLink(L"t/d/up", L"t");
    VnFileFind plain(folder.At(L"t"), L"*", {.recursive = true});
    EXPECT_EQ(FindAll(plain), (Names{"d@0", "f@1", "up@1", "out@0"}));
    VnFileFind following(folder.At(L"t"), L"*", {.recursive = true, .followLinks = true});
    EXPECT_EQ(FindAll(following), (Names{"d@0", "f@1", "up@1", "out@0", "o@1"}));
    EXPECT_TRUE(following.GetResult()) << following.GetResult().GetText();
}

TEST(VnFileFind, MatchesPatterns)
{
    const struct
    {
        const wchar_t *name, *pattern;
        bool matches;
    } cases[] = {
        {L"abc", L"AB?", true},   {L"abc", L"a*", true},    {L"abc", L"*b", false},
        {L"abc", L"????", false}, {L"abc", L"", false},     {L"", L"*", true},
        {L"abc", L"*.*", true},   {L"a.b.c", L"*.c", true}, {L"aaab", L"*a*a*b", true},
        {L"ab", L"a*?b", false},  {L"aab", L"*ab", true},   {L"\xC4.x", L"\xE4.*", true},
    };
    for (const auto& c : cases)
        EXPECT_EQ(VnFileFind::MatchesPattern(c.name, c.pattern), c.matches)
            << VnString(c.name) << ' ' << VnString(c.pattern);
    EXPECT_FALSE(
        VnFileFind::MatchesPattern(std::wstring(5000, L'a'), std::wstring(50, L'*') + L"b"));
}

} // namespace
