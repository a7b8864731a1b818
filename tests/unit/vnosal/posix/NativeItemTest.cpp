#include "../VnosalTest.h"

#include <sys/stat.h>

using namespace VnOSAL;
using NativeItems = vnosal_test::CTestFolder;

void NativeItems::MakeFolderLink(std::wstring_view link, std::wstring_view target) const
{
    std::filesystem::create_directory_symlink(NativeAt(target), NativeAt(link));
}

namespace {

TEST_F(NativeItems, AreCopiedWithLinksUnlessTheyAreDevices)
{
    const std::string name = "\xFF\xC3\xA4\xE2\x82"; // partly UTF-8
    std::filesystem::create_directory(NativeAt(L"s"));
    std::filesystem::create_directory_symlink("none", NativeAt(L"s") / name);
    EXPECT_TRUE(Item(L"s").Copy(At(L"t")));
    EXPECT_EQ(std::filesystem::read_symlink(NativeAt(L"t") / name), "none");
    EXPECT_TRUE(Item(L"s").DeleteTree());
    EXPECT_TRUE(Item(L"t").DeleteTree());
    mkfifo(NativeAt(L"pipe").c_str(), 0600);
    EXPECT_EQ(Item(L"pipe").ReadKind(), EItemKind::Other);
    EXPECT_EQ(Item(L"pipe").Copy(At(L"copy")).GetKind(), EError::NotSupported);
    EXPECT_EQ(List(), vnosal_test::Names{"pipe"});
    for (const wchar_t* foreign : {L"C:\\a", L"C:a", L"\\\\server\\share\\a", L"\\\\?\\C:\\a"})
        EXPECT_EQ(VnFileSystemItem(foreign).CreateFolderTree().GetKind(), EError::BadPath);
    EXPECT_EQ(Item(L"pipe").CheckSignature(), ESignature::CannotVerify);
}

} // namespace
