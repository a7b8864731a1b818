#include "zotracker/vnosal/VnFileSystemItem.h"
#include "VnosalTest.h"
#include "zotracker/vnosal/VnFileFind.h"

#include <functional>
#include <vector>

namespace {

using namespace VnOSAL;
using vnosal_test::Names;
using Items = vnosal_test::CTestFolder;

// Notes what it is told; cancels or goes on as it is told.
class CFollower : public IVnProgress
{
public:
    explicit CFollower(int cancelled = 0) : cancelAt(cancelled) {}

    bool ReportProgress(const VnProgress& progress) noexcept override
    {
        ++reports;
        items = progress.itemCount;
        bytes = progress.byteCount;
        if (meanwhile)
            meanwhile(VnPath(progress.item));
        return reports != cancelAt;
    }
    bool ReportFailure(const VnResult& failure) noexcept override
    {
        failures.push_back(VnString(VnPath(failure.GetItem()).GetFileName()));
        return goesOn;
    }

    std::function<void(const VnPath& item)> meanwhile;
    bool goesOn = true;
    int reports = 0;
    std::uint64_t items = 0;
    std::uint64_t bytes = 0;
    std::vector<VnString> failures;
    const int cancelAt;
};

TEST_F(Items, HaveFactsThatCanBeReadAndSet)
{
    WriteFile(L"a/file.txt", "12345");
    const VnFileSystemItem item = Item(L"a/file.txt");
    constexpr std::int64_t written = 12'345'678'901'234'567; // 2009-02-13 23:31:30.1234567
    EXPECT_TRUE(item.SetAttributes(attributeReadOnly));
    EXPECT_TRUE(item.SetAttributes(attributeNormal));
    EXPECT_TRUE(item.SetTimes({.written = written}));
    EXPECT_TRUE(item.SetTimes({.accessed = -10'000'001})); // before 1970
    VnItemFacts facts;
    EXPECT_TRUE(item.ReadFacts(facts));
    EXPECT_EQ(facts.kind, EItemKind::File);
    EXPECT_EQ(facts.size, 5u);
    EXPECT_EQ(facts.attributes & (attributeFolder | attributeReadOnly), 0u);
    EXPECT_EQ(facts.times.written, written);
    EXPECT_EQ(facts.times.accessed, -10'000'001);

    EXPECT_TRUE(Item(L"a").ReadFacts(facts));
    EXPECT_EQ(facts.kind, EItemKind::Folder);
    EXPECT_NE(facts.attributes & attributeFolder, 0u);
    const VnResult missing = Item(L"a/none").ReadFacts(facts);
    EXPECT_EQ(missing.GetKind(), EError::NotFound);
    EXPECT_TRUE(missing.GetText().StartsWith(At(L"a/none").GetText() + L": "));
    EXPECT_FALSE(Item(L"a/none").Exists());
}

TEST_F(Items, AreCreatedAsFoldersAndDeletedOneByOne)
{
    EXPECT_TRUE(Item(L"a/b/c").CreateFolderTree());
    EXPECT_TRUE(Item(L"a/b/c").CreateFolderTree());
    EXPECT_EQ(List(), (Names{"a/", "a/b/", "a/b/c/"}));
    WriteFile(L"a/f");
    EXPECT_FALSE(Item(L"a/f/g").CreateFolderTree());
    EXPECT_EQ(Item(L"a/b").Delete().GetKind(), EError::NotEmpty);
    EXPECT_TRUE(Item(L"a/b/c").Delete());
    EXPECT_TRUE(Item(L"a/f").Delete());
    EXPECT_EQ(List(), (Names{"a/", "a/b/"}));
    for (const wchar_t* path : {L"", L"/", L"..", L"http://host/a"})
    {
        CFollower follower(1); // so that a fault deletes nothing
        EXPECT_EQ(VnFileSystemItem(path).DeleteTree(&follower).GetKind(), EError::BadPath)
            << VnString(path);
    }
}

TEST_F(Items, AreCopiedAsATree)
{
    WriteFile(L"s/one", "1");
    WriteFile(L"s/d/e/three", std::string(700'000, '3'));
    Item(L"s/d/empty").CreateFolderTree();
    EXPECT_TRUE(Item(L"s/one").SetTimes({.written = 12'345'678'900'000'000}));
    EXPECT_TRUE(Item(L"s/one").SetAttributes(attributeReadOnly));
    CFollower follower;
    EXPECT_TRUE(Item(L"s").Copy(At(L"t"), EReplace::Refuse, &follower));
    EXPECT_EQ(List(L"t"), (Names{"d/", "d/e/", "d/e/three", "d/empty/", "one"}));
    EXPECT_EQ(ReadFile(L"t/d/e/three"), std::string(700'000, '3'));
    EXPECT_EQ(follower.bytes, 700'001u);
    VnItemFacts facts;
    EXPECT_TRUE(Item(L"t/one").ReadFacts(facts));
    EXPECT_EQ(facts.times.written, 12'345'678'900'000'000);
    EXPECT_NE(facts.attributes & attributeReadOnly, 0u);
    EXPECT_TRUE(Item(L"t").DeleteTree()); // with the read-only file
    EXPECT_FALSE(Item(L"t").Exists());
}

TEST_F(Items, ThatAreThereAreReplacedOnlyIfTold)
{
    WriteFile(L"s/a", "new");
    WriteFile(L"s/d/b", "new");
    WriteFile(L"t/a", "old");
    WriteFile(L"t/c", "kept");
    EXPECT_EQ(Item(L"s").Copy(At(L"t")).GetKind(), EError::Exists);
    EXPECT_EQ(Item(L"s/a").Copy(At(L"t/a")).GetKind(), EError::Exists);
    EXPECT_EQ(ReadFile(L"t/a"), "old");
    EXPECT_TRUE(Item(L"s").Copy(At(L"t"), EReplace::Existing));
    EXPECT_EQ(List(L"t"), (Names{"a", "c", "d/", "d/b"}));
    EXPECT_EQ(ReadFile(L"t/a"), "new");

    VnFileSystemItem moved = Item(L"s/a");
    EXPECT_EQ(moved.Move(At(L"t/c")).GetKind(), EError::Exists);
    EXPECT_TRUE(moved.Move(At(L"t/c"), EReplace::Existing));
    EXPECT_EQ(ReadFile(L"t/c"), "new");
    EXPECT_TRUE(moved.Rename(L"e"));
    EXPECT_EQ(moved.GetPath().GetFileName(), L"e");
    EXPECT_EQ(moved.Rename(L"../x").GetKind(), EError::BadPath);
    EXPECT_EQ(moved.Rename(L"a").GetKind(), EError::Exists);
    EXPECT_EQ(List(L"t"), (Names{"a", "d/", "d/b", "e"}));
}

TEST_F(Items, NeverComeIntoTheirOwnCopy)
{
    WriteFile(L"s/d/f");
    MakeFolderLink(L"alias", L"s/d");
    for (const wchar_t* target : {L"s/d/copy", L"s", L"alias/copy"}) // the last by another name
        EXPECT_EQ(Item(L"s").Copy(At(target), EReplace::Existing).GetKind(), EError::BadPath);
    EXPECT_EQ(Item(L"s").Copy(L"").GetKind(), EError::BadPath);
    EXPECT_EQ(ReadFile(L"s/d/f"), "x");
    EXPECT_FALSE(Item(L"s/d/copy/d/copy/d").Exists());
}

// Not even through one that somebody puts in a folder's place just before it is entered.
TEST_F(Items, AreNotReachedThroughALink)
{
    WriteFile(L"outside/precious", "kept");
    WriteFile(L"tree/d/f");
    MakeFolderLink(L"tree/d/link", L"outside");
    ASSERT_EQ(Item(L"tree/d/link").ReadKind(), EItemKind::Link);
    EXPECT_EQ(Item(L"tree/d/link").ReadKind(ELinks::Follow), EItemKind::Folder);
    WriteFile(L"source/link/f", "new");
    EXPECT_FALSE(Item(L"source").Copy(At(L"tree/d"), EReplace::Existing));
    EXPECT_EQ(List(L"outside"), Names{"precious"});

    CFollower follower;
    follower.meanwhile = [this](const VnPath& item) {
        if (!item.IsSame(At(L"tree/d")))
            return;
        Item(L"tree/d").Move(At(L"away"));
        MakeFolderLink(L"tree/d", L"outside");
    };
    EXPECT_FALSE(Item(L"tree").DeleteTree(&follower));
    EXPECT_TRUE(Item(L"away/f").Exists());
    Item(L"away").DeleteTree(); // Wine 8 cannot delete such a link
    Item(L"tree/d").DeleteTree();
    EXPECT_EQ(ReadFile(L"outside/precious"), "kept");
}

TEST_F(Items, AreLeftWhenAnOperationIsCancelled)
{
    for (const wchar_t* name : {L"s/a", L"s/b", L"s/c"})
        WriteFile(name, "contents");
    CFollower copying(3);
    EXPECT_EQ(Item(L"s").Copy(At(L"t"), EReplace::Refuse, &copying).GetKind(), EError::Cancelled);
    EXPECT_EQ(copying.reports, 3);
    EXPECT_LE(List(L"t").size(), 1u); // nothing of a file that was begun
    CFollower deleting(3);
    EXPECT_EQ(Item(L"s").DeleteTree(&deleting).GetKind(), EError::Cancelled);
    EXPECT_EQ(deleting.items, 1u);
    EXPECT_EQ(List(L"s").size(), 2u);
}

TEST_F(Items, AreCopiedBesideThoseThatFailIfTold)
{
    WriteFile(L"t/d", "in the way of a folder");
    WriteFile(L"t/e/f", "in a folder in the way of a file");
    for (const wchar_t* name : {L"s/a", L"s/b", L"s/d/f", L"s/e", L"s/z"})
        WriteFile(name);
    CFollower patient;
    const VnResult copied = Item(L"s").Copy(At(L"t"), EReplace::Existing, &patient);
    ASSERT_EQ(patient.failures.size(), 2u);
    EXPECT_EQ(VnPath(copied.GetItem()).GetFileName(), patient.failures[0]);
    EXPECT_EQ(List(L"t"), (Names{"a", "b", "d", "e/", "e/f", "z"}));
    CFollower impatient;
    impatient.goesOn = false;
    EXPECT_FALSE(Item(L"s").Copy(At(L"t"), EReplace::Existing, &impatient));
    EXPECT_EQ(impatient.failures.size(), 1u);
}

// Deeper than a process may have files open, with paths longer than the system takes in one call.
// Wine has to find them in one call of the system below it.
TEST_F(Items, MayLieDeep)
{
    const std::size_t depth = sizeof(wchar_t) == 2 ? 30 : 1100;
    for (std::size_t level = 0; level < depth; ++level)
    {
        const VnPath above = At(L"above").Join(VnString(100, L'n'));
        EXPECT_TRUE(VnFileSystemItem(VnPath(above.GetParent())).CreateFolderTree());
        EXPECT_TRUE(level == 0 || Item(L"deep").Move(above));
        EXPECT_TRUE(Item(L"above").Move(At(L"deep")));
    }
    EXPECT_TRUE(Item(L"deep").Copy(At(L"copy")));
    std::size_t found = 0;
    for (VnFileFind find(At(L"copy"), L"*", {.recursive = true}); find.Next(); ++found)
        EXPECT_EQ(find.GetDepth(), found);
    EXPECT_EQ(found, depth - 1);
    EXPECT_TRUE(Item(L"copy").DeleteTree());
    EXPECT_TRUE(Item(L"deep").DeleteTree());
    EXPECT_EQ(List(), Names());
}

TEST_F(Items, MayBeLibraries)
{
    WriteFile(
        L"Work.library-ms",
        "\xEF\xBB\xBF<?xml version=\"1.0\"?><!-- <url>no</url> --><libraryDescription x=\"y\">"
        "<name>@x</name><url>not here</url>"
        "<simpleLocation p=\"M\"><url> C:\\A &amp; B\\\xC3\xA4 </url><x>M</x></simpleLocation>"
        "<s:simpleLocation><s:url>file:///C:/c%20d</s:url></s:simpleLocation>"
        "<simpleLocation><url>knownfolder:{00000000-0000-0000-0000-000000000001}</url>");
    WriteFile(L"wrong.library-ms", "<other/>");
    WriteFile(L"cut.library-ms", "<libraryDescription><simpleLocation><url>x</url");
    WriteFile(L"Work.xml", "<libraryDescription/>");
    VnStringList folders;
    EXPECT_TRUE(Item(L"Work.library-ms").ReadLibraryFolders(folders));
    EXPECT_EQ(folders.Join(L"|"),
              L"C:\\A & B\\\xE4|C:\\c d|knownfolder:{00000000-0000-0000-0000-000000000001}");
    for (const wchar_t* name : {L"wrong.library-ms", L"Work.xml", L"none.library-ms"})
        EXPECT_FALSE(Item(name).IsLibrary()) << VnString(name);
    EXPECT_TRUE(Item(L"cut.library-ms").ReadLibraryFolders(folders));
    EXPECT_EQ(folders.Join(L"|"), L"");
}

} // namespace
