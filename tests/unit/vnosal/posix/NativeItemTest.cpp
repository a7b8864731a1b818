#include "../VnosalTest.h"
#include "zotracker/vnosal/VnFileFind.h"

#include <sys/stat.h>

using namespace VnOSAL;
using NativeItems = vnosal_test::CTestFolder;

void NativeItems::MakeFolderLink(std::wstring_view link, std::wstring_view target) const
{
    std::filesystem::create_directory_symlink(NativeAt(target), NativeAt(link));
}

namespace {

TEST_F(NativeItems, KeepNamesThatAreNotUtf8)
{
    std::ofstream(NativeAt(L"").string() + "/\xFF\xC3\xA4\xE2\x82.x") << "bytes";
    VnFileFind find(At(L""), L"*.x");
    ASSERT_TRUE(find.Next());
    EXPECT_EQ(find.GetName(), L"\xDCFF\xE4\xDCE2\xDC82.x");
    EXPECT_TRUE(VnFileSystemItem(find.GetPath()).Copy(At(L"copy")));
    EXPECT_EQ(ReadFile(L"copy"), "bytes");
    EXPECT_TRUE(VnFileSystemItem(find.GetPath()).Delete());
    EXPECT_EQ(List(), vnosal_test::Names{"copy"});
}

TEST_F(NativeItems, AreCopiedWithRightsAndLinksUnlessTheyAreDevices)
{
    WriteFile(L"s/f");
    chmod(NativeAt(L"s/f").c_str(), 0751);
    MakeFolderLink(L"s/nowhere", L"none");
    EXPECT_TRUE(Item(L"s").Copy(At(L"t")));
    struct stat status = {};
    EXPECT_EQ(stat(NativeAt(L"t/f").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0751u);
    EXPECT_EQ(std::filesystem::read_symlink(NativeAt(L"t/nowhere")), NativeAt(L"none"));
    EXPECT_TRUE(Item(L"t").DeleteTree());
    mkfifo(NativeAt(L"pipe").c_str(), 0600);
    EXPECT_EQ(Item(L"pipe").ReadKind(), EItemKind::Other);
    EXPECT_EQ(Item(L"pipe").Copy(At(L"copy")).GetKind(), EError::NotSupported);
    EXPECT_EQ(List(), (vnosal_test::Names{"pipe", "s/", "s/f", "s/nowhere"}));
    for (const wchar_t* foreign : {L"C:\\a", L"C:a", L"\\\\server\\share\\a", L"\\\\?\\C:\\a"})
        EXPECT_EQ(VnFileSystemItem(foreign).CreateFolderTree().GetKind(), EError::BadPath);
    EXPECT_EQ(Item(L"s/f").CheckSignature(), ESignature::CannotVerify);
}

} // namespace
