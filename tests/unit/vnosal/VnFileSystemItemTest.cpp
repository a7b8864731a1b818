#include "PrintText.h"
#include "TestFolder.h"

#include <gtest/gtest.h>

#include <ctime>
#include <vector>

namespace {

using namespace VnOSAL;
using vnosal_test::CTestFolder;

VnFileSystemItem Item(const CTestFolder& folder, std::wstring_view relative)
{
    return VnFileSystemItem(folder.At(relative));
}

// Notes what it is told; cancels or goes on as it is told.
class CFollower : public IVnProgress
{
public:
    bool ReportProgress(const VnProgress& progress) noexcept override
    {
        ++reports;
        items = progress.itemCount;
        bytes = progress.byteCount;
        return reports != cancelAt;
    }
    bool ReportFailure(const VnResult& failure) noexcept override
    {
        failures.push_back(VnString(VnPath(failure.GetItem()).GetFileName()));
        return goesOn;
    }

    int reports = 0;
    int cancelAt = 0;
    bool goesOn = false;
    std::uint64_t items = 0;
    std::uint64_t bytes = 0;
    std::vector<VnString> failures;
};

TEST(VnFileSystemItem, ReadsAndSetsTheFactsOfAnItem)
{
    const CTestFolder folder;
    folder.WriteFile(L"a/file.txt", "12345");
    const VnFileSystemItem item = Item(folder, L"a/file.txt");
    VnItemFacts facts;
    EXPECT_TRUE(item.SetAttributes(attributeReadOnly));
    EXPECT_TRUE(item.ReadFacts(facts));
    EXPECT_EQ(facts.kind, EItemKind::File);
    EXPECT_EQ(facts.size, 5u);
    EXPECT_NEAR(static_cast<double>(facts.times.written), 1e7 * static_cast<double>(std::time({})),
                60e7);
    EXPECT_EQ(facts.attributes & (attributeFolder | attributeReadOnly), attributeReadOnly);
    EXPECT_TRUE(item.SetAttributes(attributeNormal));

    const std::int64_t written = 12'345'678'901'234'567; // 2009-02-13 23:31:30.1234567
    EXPECT_TRUE(item.SetTimes({.written = written}));
    EXPECT_TRUE(item.SetTimes({.accessed = -10'000'001})); // before 1970
    EXPECT_TRUE(item.ReadFacts(facts));
    EXPECT_EQ(facts.attributes & attributeReadOnly, 0u);
    EXPECT_EQ(facts.times.written, written);
    EXPECT_EQ(facts.times.accessed, -10'000'001);

    EXPECT_TRUE(Item(folder, L"a").ReadFacts(facts));
    EXPECT_EQ(facts.kind, EItemKind::Folder);
    EXPECT_EQ(facts.size, 0u);
    EXPECT_NE(facts.attributes & attributeFolder, 0u);
    const VnResult missing = Item(folder, L"a/none").ReadFacts(facts);
    EXPECT_EQ(Item(folder, L"a/none").ReadKind(), EItemKind::None);
    EXPECT_EQ(missing.GetKind(), EError::NotFound);
    EXPECT_EQ(missing.GetItem(), folder.At(L"a/none").GetText());
    EXPECT_TRUE(missing.GetText().StartsWith(missing.GetItem() + L": "));
    EXPECT_NE(missing.GetSystemError(), 0u);
}

TEST(VnFileSystemItem, CreatesFoldersAndDeletesSingleItems)
{
    const CTestFolder folder;
    EXPECT_TRUE(Item(folder, L"a/b/c").CreateFolderTree());
    EXPECT_TRUE(Item(folder, L"a/b/c").CreateFolderTree());
    EXPECT_EQ(folder.List(), "a/ a/b/ a/b/c/");
    folder.WriteFile(L"a/f");
    EXPECT_FALSE(Item(folder, L"a/f/g").CreateFolderTree());
    EXPECT_EQ(Item(folder, L"a/b").Delete().GetKind(), EError::NotEmpty);
    EXPECT_TRUE(Item(folder, L"a/b/c").Delete());
    EXPECT_TRUE(Item(folder, L"a/f").Delete());
    EXPECT_EQ(Item(folder, L"a/f").Delete().GetKind(), EError::NotFound);
    EXPECT_EQ(folder.List(), "a/ a/b/");

    for (const wchar_t* path : {L"", L"/", L"..", L"http://host/a"})
    {
        CFollower follower;
        follower.cancelAt = 1; // so that a fault deletes nothing
        EXPECT_EQ(VnFileSystemItem(path).DeleteTree(&follower).GetKind(), EError::BadPath)
            << VnString(path);
    }
    EXPECT_EQ(Item(folder, L"a").Copy(L"").GetKind(), EError::BadPath);
}

TEST(VnFileSystemItem, CopiesATree)
{
    const CTestFolder folder;
    folder.WriteFile(L"s/one", "1");
    folder.WriteFile(L"s/d/two", "22");
    folder.WriteFile(L"s/d/e/three", std::string(700'000, '3'));
    Item(folder, L"s/d/empty").CreateFolderTree();
    EXPECT_TRUE(Item(folder, L"s/one").SetTimes({.written = 12'345'678'900'000'000}));
    EXPECT_TRUE(Item(folder, L"s/one").SetAttributes(attributeReadOnly));
    CFollower follower;
    EXPECT_TRUE(Item(folder, L"s").Copy(folder.At(L"t"), EReplace::Refuse, &follower));
    EXPECT_EQ(folder.List(L"t"), folder.List(L"s"));
    EXPECT_EQ(folder.ReadFile(L"t/d/e/three"), std::string(700'000, '3'));
    EXPECT_EQ(follower.bytes, 700'003u);
    VnItemFacts facts;
    EXPECT_TRUE(Item(folder, L"t/one").ReadFacts(facts));
    EXPECT_EQ(facts.times.written, 12'345'678'900'000'000);
    EXPECT_NE(facts.attributes & attributeReadOnly, 0u);
    EXPECT_TRUE(Item(folder, L"t").DeleteTree()); // with the read-only file
    EXPECT_FALSE(folder.Has(L"t"));
}

TEST(VnFileSystemItem, RefusesOrReplacesWhatIsThere)
{
    const CTestFolder folder;
    folder.WriteFile(L"s/a", "new");
    folder.WriteFile(L"s/d/b", "new");
    folder.WriteFile(L"t/a", "old");
    folder.WriteFile(L"t/c", "kept");
    EXPECT_EQ(Item(folder, L"s").Copy(folder.At(L"t")).GetKind(), EError::Exists);
    EXPECT_EQ(Item(folder, L"s/a").Copy(folder.At(L"t/a")).GetKind(), EError::Exists);
    EXPECT_EQ(folder.ReadFile(L"t/a"), "old");
    EXPECT_TRUE(Item(folder, L"s").Copy(folder.At(L"t"), EReplace::Existing));
    EXPECT_EQ(folder.List(L"t"), "a c d/ d/b");
    EXPECT_EQ(folder.ReadFile(L"t/a"), "new");

    folder.WriteFile(L"file/d", "in the way of a folder");
    folder.WriteFile(L"m/d/f");
    for (const wchar_t* name : {L"m/a", L"m/b", L"m/c", L"m/e", L"m/z"})
        folder.WriteFile(name);
    CFollower follower;
    follower.goesOn = true;
    EXPECT_FALSE(Item(folder, L"m").Copy(folder.At(L"file"), EReplace::Existing, &follower));
    EXPECT_EQ(follower.failures, std::vector<VnString>{L"d"});
    EXPECT_EQ(folder.List(L"file"), "a b c d e z");

    VnFileSystemItem moved = Item(folder, L"s/a");
    EXPECT_EQ(moved.Move(folder.At(L"t/c")).GetKind(), EError::Exists);
    EXPECT_EQ(moved.GetPath().GetText(), folder.At(L"s/a").GetText());
    EXPECT_TRUE(moved.Move(folder.At(L"t/c"), EReplace::Existing));
    EXPECT_EQ(folder.ReadFile(L"t/c"), "new");
    EXPECT_TRUE(moved.Rename(L"e"));
    EXPECT_EQ(moved.GetPath().GetText(), VnPath(folder.At(L"t/c")).ReplaceFileName(L"e").GetText());
    EXPECT_EQ(moved.Rename(L"../x").GetKind(), EError::BadPath);
    EXPECT_EQ(moved.Rename(L"a").GetKind(), EError::Exists);
    EXPECT_EQ(folder.List(L"t"), "a d/ d/b e");
}

TEST(VnFileSystemItem, NeverCopiesATreeIntoItself)
{
    const CTestFolder folder;
    folder.WriteFile(L"s/d/f");
    folder.MakeFolderLink(L"alias", L"s/d");
    const auto copyTo = [&folder](const wchar_t* target) {
        return Item(folder, L"s").Copy(folder.At(target), EReplace::Existing).GetKind();
    };
    EXPECT_EQ(copyTo(L"s/d/copy"), EError::BadPath);
    EXPECT_EQ(copyTo(L"s"), EError::BadPath);
    EXPECT_EQ(folder.List(L"s"), "d/ d/f");
    EXPECT_EQ(folder.ReadFile(L"s/d/f"), "x");
    EXPECT_EQ(copyTo(L"alias/copy"), EError::BadPath); // the same folder by another name
    EXPECT_FALSE(folder.Has(L"s/d/copy/d/copy/d"));
}

TEST(VnFileSystemItem, NeverLeavesATreeThroughALink)
{
    const CTestFolder folder;
    folder.WriteFile(L"outside/precious", "kept");
    folder.WriteFile(L"tree/d/f");
    folder.MakeFolderLink(L"tree/d/link", L"outside");
    ASSERT_EQ(Item(folder, L"tree/d/link").ReadKind(), EItemKind::Link);
    EXPECT_EQ(Item(folder, L"tree/d/link").ReadKind(ELinks::Follow), EItemKind::Folder);

    // a folder of the copy is already there as a link
    folder.WriteFile(L"source/link/f", "new");
    EXPECT_FALSE(Item(folder, L"source").Copy(folder.At(L"tree/d"), EReplace::Existing));
    EXPECT_EQ(folder.List(L"outside"), "precious");

    const bool linksGo = vnosal_test::CanDeleteFolderLinks();
    const VnResult deleted = Item(folder, L"tree").DeleteTree();
    EXPECT_EQ(static_cast<bool>(deleted), linksGo) << deleted.GetText();
    EXPECT_EQ(folder.Has(L"tree"), !linksGo);
    folder.MakeFolderLink(L"direct", L"outside");
    EXPECT_EQ(static_cast<bool>(Item(folder, L"direct").DeleteTree()), linksGo);
    EXPECT_EQ(folder.ReadFile(L"outside/precious"), "kept");
}

// Somebody puts a link in a folder's place just before the operation enters it.
class CSwapper : public IVnProgress
{
public:
    explicit CSwapper(const CTestFolder& used) : folder(used) {}
    bool ReportProgress(const VnProgress& progress) noexcept override
    {
        if (VnPath(progress.item).IsSame(folder.At(L"tree/d")) && !folder.Has(L"away"))
        {
            VnFileSystemItem(folder.At(L"tree/d")).Move(folder.At(L"away"));
            folder.MakeFolderLink(L"tree/d", L"outside");
        }
        return true;
    }
    bool ReportFailure(const VnResult&) noexcept override { return false; }

private:
    const CTestFolder& folder;
};

TEST(VnFileSystemItem, NeverEntersALinkThatTakesAFoldersPlace)
{
    const CTestFolder folder;
    folder.WriteFile(L"outside/precious", "kept");
    folder.WriteFile(L"tree/d/f");
    CSwapper swapper(folder);
    EXPECT_FALSE(Item(folder, L"tree").DeleteTree(&swapper));
    EXPECT_TRUE(folder.Has(L"away/f"));
    EXPECT_EQ(folder.ReadFile(L"outside/precious"), "kept");
}

TEST(VnFileSystemItem, CanBeCancelled)
{
    const CTestFolder folder;
    for (const wchar_t* name : {L"s/a", L"s/b", L"s/c"})
        folder.WriteFile(name, "contents");
    CFollower follower;
    follower.cancelAt = 3;
    const VnResult copied = Item(folder, L"s").Copy(folder.At(L"t"), EReplace::Refuse, &follower);
    EXPECT_EQ(copied.GetKind(), EError::Cancelled);
    EXPECT_EQ(follower.reports, 3);
    EXPECT_TRUE(follower.failures.empty());
    EXPECT_LE(folder.List(L"t").size(), 1u); // nothing of a file that was begun

    CFollower second;
    second.cancelAt = 3;
    EXPECT_EQ(Item(folder, L"s").DeleteTree(&second).GetKind(), EError::Cancelled);
    EXPECT_EQ(second.items, 1u);
    EXPECT_EQ(folder.List(L"s").size(), 3u); // two of three are left
}

// The second copy finds the first one's files, and goes on only if it is told to.
TEST(VnFileSystemItem, GoesOnAfterFailuresIfTold)
{
    const CTestFolder folder;
    folder.WriteFile(L"s/d/a");
    folder.WriteFile(L"s/d/b");
    folder.WriteFile(L"t/a/in-the-way");
    CFollower follower;
    follower.goesOn = true;
    const VnResult copied =
        Item(folder, L"s/d").Copy(folder.At(L"t"), EReplace::Existing, &follower);
    EXPECT_FALSE(copied);
    EXPECT_EQ(VnPath(copied.GetItem()).GetFileName(), L"a");
    EXPECT_EQ(follower.failures, std::vector<VnString>{L"a"});
    EXPECT_EQ(folder.List(L"t"), "a/ a/in-the-way b");
}

TEST(VnFileSystemItem, WorksOnDeepTrees)
{
    const CTestFolder folder;
    VnPath deep = folder.At(L"deep");
    const VnString name(100, L'n');
    for (int level = 0; level < 30; ++level)
        deep.Join(name);
    ASSERT_TRUE(VnFileSystemItem(deep).CreateFolderTree());
    EXPECT_EQ(VnFileSystemItem(deep).ReadKind(), EItemKind::Folder);
    EXPECT_TRUE(Item(folder, L"deep").Copy(folder.At(L"copy")));
    EXPECT_TRUE(Item(folder, L"copy").DeleteTree());
    EXPECT_TRUE(Item(folder, L"deep").DeleteTree());
    EXPECT_EQ(folder.List(), "");
}

TEST(VnFileSystemItem, ReadsTheFoldersOfALibrary)
{
    const CTestFolder folder;
    folder.WriteFile(
        L"Work.library-ms",
        "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<!-- <url>no</url> --><libraryDescription xmlns=\"http://x/2009/library\">"
        "<name>@x</name><iconReference>i</iconReference><url>not here</url>"
        "<searchConnectorDescriptionList><searchConnectorDescription publisher=\"M\">"
        "<simpleLocation><url> C:\\A &amp; B\\\xC3\xA4 </url><serialized>M</serialized>"
        "</simpleLocation></searchConnectorDescription><s:searchConnectorDescription>"
        "<s:simpleLocation><s:url>file:///C:/c%20d</s:url></s:simpleLocation>"
        "<simpleLocation><url>knownfolder:{00000000-0000-0000-0000-000000000001}</url>"
        "</simpleLocation></searchConnectorDescriptionList></libraryDescription>");
    folder.WriteFile(L"wrong.library-ms", "<other/>");
    folder.WriteFile(L"cut.library-ms", "<libraryDescription><simpleLocation><url>x</url");
    folder.WriteFile(L"Work.xml", "<libraryDescription/>");
    VnStringList folders;
    EXPECT_TRUE(Item(folder, L"Work.library-ms").ReadLibraryFolders(folders));
    EXPECT_EQ(folders.Join(L"|"),
              L"C:\\A & B\\\xE4|C:\\c d|knownfolder:{00000000-0000-0000-0000-000000000001}");
    EXPECT_FALSE(Item(folder, L"wrong.library-ms").IsLibrary());
    EXPECT_FALSE(Item(folder, L"Work.xml").IsLibrary());
    EXPECT_TRUE(Item(folder, L"cut.library-ms").ReadLibraryFolders(folders));
    EXPECT_EQ(folders.Join(L"|"), L"");
    EXPECT_EQ(Item(folder, L"none.library-ms").ReadLibraryFolders(folders).GetKind(),
              EError::NotFound);
}

} // namespace
