#include "zotracker/vnosal/VnFile.h"
#include "VnosalTest.h"
#include "zotracker/vnosal/VnFileFind.h"

#include <tuple>

namespace {

using namespace VnOSAL;
using vnosal_test::Names;
using Files = vnosal_test::CTestFolder;

TEST_F(Files, AreReadWrittenAndCut)
{
    VnFile file;
    ASSERT_TRUE(file.Open(At(L"f"), EAccess::ReadWrite, EOpen::New));
    EXPECT_TRUE(file.Write("0123456789", 10));
    std::uint64_t number = 0;
    EXPECT_TRUE(file.Seek(-4, ESeek::End, &number));
    EXPECT_EQ(number, 6u);
    char buffer[8] = "";
    std::size_t done = 0;
    EXPECT_TRUE(file.Read(buffer, 8, done));
    EXPECT_EQ(std::string(buffer, done), "6789");
    EXPECT_TRUE(file.Seek(2));
    EXPECT_TRUE(file.SetSize(5));
    EXPECT_TRUE(file.SetSize(7));
    EXPECT_TRUE(file.ReadSize(number));
    EXPECT_EQ(number, 7u);
    EXPECT_TRUE(file.Seek(0, ESeek::Current, &number));
    EXPECT_EQ(number, 2u);
    EXPECT_FALSE(file.Seek(-1));
    EXPECT_TRUE(file.Flush());
    VnFile moved(std::move(file));
    EXPECT_FALSE(file.IsOpen());
    moved.Close();
    EXPECT_EQ(ReadFile(L"f"), std::string("01234\0\0", 7));
}

TEST_F(Files, AreOpenedAsTold)
{
    VnFile file;
    const auto open = [&](const wchar_t* name, EAccess access, EOpen mode = EOpen::Existing) {
        return file.Open(At(name), access, mode).GetKind();
    };
    WriteFile(L"f", "old");
    EXPECT_EQ(open(L"f", EAccess::Write, EOpen::New), EError::Exists);
    EXPECT_EQ(open(L"f", EAccess::Write, EOpen::OpenOrCreate), EError::None);
    EXPECT_TRUE(file.Write("n", 1));
    EXPECT_EQ(ReadFile(L"f"), "nld");
    EXPECT_EQ(open(L"f", EAccess::Write, EOpen::Truncate), EError::None);
    EXPECT_EQ(ReadFile(L"f"), "");
    EXPECT_EQ(open(L"none", EAccess::Read), EError::NotFound);
    EXPECT_EQ(open(L"", EAccess::Read), EError::Denied); // a folder
    EXPECT_EQ(file.Write("x", 1).GetKind(), EError::BadPath);

    const auto openTwice = [this](EAccess access, ESharing sharing, EAccess second) {
        VnFile first;
        EXPECT_TRUE(first.Open(At(L"f"), access, EOpen::Existing, sharing));
        return VnFile().Open(At(L"f"), second).GetKind();
    };
    EXPECT_EQ(openTwice(EAccess::Write, ESharing::None, EAccess::Read), EError::InUse);
    EXPECT_EQ(openTwice(EAccess::Read, ESharing::Read, EAccess::Read), EError::None);
    EXPECT_EQ(openTwice(EAccess::Read, ESharing::Read, EAccess::Write), EError::InUse);
}

TEST_F(Files, AreReadByTheirByteOrderMark)
{
    const auto expectText = [this](std::string_view bytes, const wchar_t* expected) {
        VnString text(L"before");
        WriteFile(L"t", bytes);
        EXPECT_EQ(VnFile::ReadText(At(L"t"), text, bytes.size() - 1).GetKind(), EError::TooLarge);
        EXPECT_EQ(text, L"before");
        EXPECT_TRUE(VnFile::ReadText(At(L"t"), text, bytes.size(), 1252));
        EXPECT_EQ(text, expected);
    };
    expectText("\xE4\x80", L"\xE4\x20AC");
    expectText("\xEF\xBB\xBF\xC3\xA4", L"\xE4");
    expectText({"\xFF\xFE\xE4\0\x3D\xD8\0\xDE", 8}, L"\xE4\xD83D\xDE00");
    expectText({"\xFE\xFF\0\xE4!", 5}, L"\xE4");
}

TEST_F(Files, AreReplacedInOneStep)
{
    EXPECT_TRUE(VnFile::ReplaceText(At(L"f"), L"\xE4\n"));
    EXPECT_EQ(ReadFile(L"f"), "\xC3\xA4\n");
    EXPECT_TRUE(VnFile::ReplaceContents(At(L"f"), std::string(100'000, 'b')));
    EXPECT_EQ(ReadFile(L"f"), std::string(100'000, 'b'));
    EXPECT_EQ(VnFile::ReplaceText(At(L"f"), L"x", 4711).GetKind(), EError::NotSupported);

    WriteFile(L"d/x");
    EXPECT_EQ(VnFile::ReplaceContents(At(L"d"), "x").GetItem(), At(L"d").GetText());
    EXPECT_EQ(VnFile::ReplaceContents(At(L"none/f"), "x").GetKind(), EError::NotFound);
    EXPECT_EQ(List(), (Names{"d/", "d/x", "f"})); // and no temporary file
}

using Searches = vnosal_test::CTestFolder;

// The names that are found, each with its depth.
Names Find(const VnPath& folder, std::wstring_view pattern, VnFindOptions options = {})
{
    Names found;
    VnFileFind find(folder, pattern, options);
    while (find.Next())
        found.insert(std::string(VnAString(find.GetName(), codePageUtf8)) + "@" +
                     std::to_string(find.GetDepth()));
    EXPECT_TRUE(find.GetResult()) << find.GetResult().GetText();
    EXPECT_FALSE(find.Next());
    return found;
}

TEST_F(Searches, GoByPatternAndDepth)
{
    for (const wchar_t* name : {L"a.txt", L"B.TXT", L"c.log", L"d.txt/e.txt", L"d.txt/f/g.txt"})
        WriteFile(name);
    EXPECT_EQ(Find(At(L""), L"*.txt"), (Names{"a.txt@0", "B.TXT@0", "d.txt@0"}));
    EXPECT_EQ(Find(At(L""), L"?.txt", {.recursive = true}),
              (Names{"a.txt@0", "B.TXT@0", "d.txt@0", "e.txt@1", "g.txt@2"}));

    VnFileFind skipping(At(L""), L"d*", {.recursive = true});
    ASSERT_TRUE(skipping.Next());
    VnItemFacts facts;
    EXPECT_TRUE(skipping.ReadFacts(facts));
    EXPECT_EQ(facts.kind, EItemKind::Folder);
    EXPECT_TRUE(skipping.GetPath().IsSame(At(L"d.txt")));
    skipping.SkipFolder();
    EXPECT_FALSE(skipping.Next());

    VnFileFind missing(At(L"none"));
    EXPECT_FALSE(missing.Next());
    EXPECT_EQ(missing.GetResult().GetKind(), EError::NotFound);
    EXPECT_EQ(missing.GetResult().GetItem(), At(L"none").GetText());
}

TEST_F(Searches, FollowLinksOnlyIfToldAndNeverInCircles)
{
    WriteFile(L"t/d/f");
    WriteFile(L"outside/o");
    MakeFolderLink(L"t/out", L"outside");
    MakeFolderLink(L"t/d/up", L"t");
    EXPECT_EQ(Find(At(L"t"), L"*", {.recursive = true}), (Names{"d@0", "f@1", "up@1", "out@0"}));
    EXPECT_EQ(Find(At(L"t"), L"*", {.recursive = true, .followLinks = true}),
              (Names{"d@0", "f@1", "up@1", "out@0", "o@1"}));
}

TEST_F(Searches, MatchNamesWithPatterns)
{
    const std::tuple<const wchar_t*, const wchar_t*, bool> cases[] = {
        {L"abc", L"AB?", true},   {L"abc", L"a*", true},    {L"abc", L"*b", false},
        {L"abc", L"????", false}, {L"abc", L"", false},     {L"", L"*", true},
        {L"abc", L"*.*", true},   {L"a.b.c", L"*.c", true}, {L"aaab", L"*a*a*b", true},
        {L"ab", L"a*?b", false},  {L"aab", L"*ab", true},   {L"\xC4.x", L"\xE4.*", true},
    };
    for (const auto& [name, pattern, matches] : cases)
        EXPECT_EQ(VnFileFind::MatchesPattern(name, pattern), matches)
            << VnString(name) << ' ' << VnString(pattern);
    EXPECT_FALSE(
        VnFileFind::MatchesPattern(std::wstring(5000, L'a'), std::wstring(50, L'*') + L"b"));
}

} // namespace
