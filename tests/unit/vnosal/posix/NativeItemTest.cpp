#include "../PrintText.h"
#include "../TestFolder.h"
#include "zotracker/vnosal/VnFileFind.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using namespace VnOSAL;
using vnosal_test::CTestFolder;

// Deeper than a process may have files open, with paths longer than the system takes in one call.
TEST(VnFileSystemItem, ReachesEveryDepth)
{
    constexpr std::size_t depth = 3000;
    const CTestFolder folder;
    int current = open(folder.NativeAt(L"").c_str(), O_RDONLY | O_DIRECTORY);
    for (std::size_t level = 0; level < depth; ++level)
    {
        mkdirat(current, "deep", 0700);
        const int next = openat(current, "deep", O_RDONLY | O_DIRECTORY);
        close(current);
        current = next;
    }
    close(current);
    EXPECT_TRUE(VnFileSystemItem(folder.At(L"deep")).Copy(folder.At(L"copy")));
    std::size_t found = 0;
    for (VnFileFind find(folder.At(L"copy"), L"*", {.recursive = true}); find.Next(); ++found)
        EXPECT_EQ(find.GetDepth(), found);
    EXPECT_EQ(found, depth - 1);
    EXPECT_TRUE(VnFileSystemItem(folder.At(L"copy")).DeleteTree());
    EXPECT_TRUE(VnFileSystemItem(folder.At(L"deep")).DeleteTree());
    EXPECT_EQ(folder.List(), "");
}

TEST(VnFileSystemItem, KeepsNamesThatAreNotUtf8)
{
    const CTestFolder folder;
    std::ofstream(folder.NativeAt(L"").string() + "/\xFF\xC3\xA4\xE2\x82.x") << "bytes";
    VnFileFind find(folder.At(L""), L"*.x");
    ASSERT_TRUE(find.Next());
    EXPECT_EQ(find.GetName(), L"\xDCFF\xE4\xDCE2\xDC82.x");
    EXPECT_TRUE(VnFileSystemItem(find.GetPath()).Copy(folder.At(L"copy")));
    EXPECT_EQ(folder.ReadFile(L"copy"), "bytes");
    EXPECT_TRUE(VnFileSystemItem(find.GetPath()).Delete());
    EXPECT_EQ(folder.List(), "copy");
}

TEST(VnFileSystemItem, CopiesRightsAndLinksAndRefusesDevices)
{
    const CTestFolder folder;
    folder.WriteFile(L"s/f");
    chmod(folder.NativeAt(L"s/f").c_str(), 0751);
    folder.MakeFolderLink(L"s/nowhere", L"none");
    EXPECT_TRUE(VnFileSystemItem(folder.At(L"s")).Copy(folder.At(L"t")));
    struct stat status;
    EXPECT_EQ(stat(folder.NativeAt(L"t/f").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0751u);
    EXPECT_EQ(std::filesystem::read_symlink(folder.NativeAt(L"t/nowhere")),
              folder.NativeAt(L"none"));
    mkfifo(folder.NativeAt(L"pipe").c_str(), 0600);
    EXPECT_EQ(VnFileSystemItem(folder.At(L"pipe")).ReadKind(), EItemKind::Other);
    EXPECT_EQ(VnFileSystemItem(folder.At(L"pipe")).Copy(folder.At(L"p2")).GetKind(),
              EError::NotSupported);
    for (const wchar_t* foreign : {L"C:\\a", L"C:a", L"\\\\server\\share\\a", L"\\\\?\\C:\\a"})
        EXPECT_EQ(VnFileSystemItem(foreign).CreateFolderTree().GetKind(), EError::BadPath);
    EXPECT_EQ(VnFileSystemItem(folder.At(L"s/f")).CheckSignature(), ESignature::CannotVerify);
}

} // namespace
