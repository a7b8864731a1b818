#include "../PrintText.h"
#include "../TestFolder.h"
#include "zotracker/vnosal/VnFileSystemItem.h"

#include <gtest/gtest.h>

#include <windows.h>

namespace {

using namespace VnOSAL;

VnString AskSystem(const wchar_t* path)
{
    wchar_t full[MAX_PATH] = L"";
    ::GetFullPathNameW(path, MAX_PATH, full, nullptr);
    return full;
}

// The system completes paths from its current folder as the library does from the same one.
TEST(VnPath, CompletesAsTheSystemDoes)
{
    const VnPath current(AskSystem(L"."));
    for (const wchar_t* path :
         {L"a", L"a\\..\\b", L"..\\a", L"./a//b/", L"C:\\a\\..\\..\\b", L"C:/a/./b",
          L"C:\\a\\b\\..", L"C:\\..", L"C:\\a.", L"C:\\a. .", L"\\\\server\\share\\..\\a",
          L"//server/share/a/../..", L"\\\\.\\C:\\a\\..\\b", L"\\a", L"Q:\\a", L"nul",
          L"C:\\a\\b\\.", L"..\\..\\..\\..\\..\\..\\x"})
        EXPECT_EQ(VnPath(path).MakeAbsolute(current).GetText(), AskSystem(path)) << VnString(path);
}

TEST(VnPath, FindsSpecialFolders)
{
    constexpr int localApplicationData = 0x1C;
    const VnPath folder = VnPath::GetSpecialFolder(localApplicationData);
    EXPECT_FALSE(folder.GetFileName().empty());
    EXPECT_NE(folder.GetForm(), EPathForm::Relative);
    EXPECT_TRUE(VnPath::GetSpecialFolder(0x7F).IsEmpty());
}

TEST(VnFileSystemItem, RecyclesWhatThereIs)
{
    const vnosal_test::CTestFolder folder;
    folder.WriteFile(L"f", "text");
    EXPECT_TRUE(VnFileSystemItem(folder.At(L"f")).Recycle());
    EXPECT_EQ(folder.List(L""), "");
    EXPECT_EQ(VnFileSystemItem(folder.At(L"f")).Recycle().GetKind(), EError::NotFound);
}

} // namespace
