#include "zotracker/vnosal/VnAString.h"
#include "zotracker/vnosal/VnCriticalSection.h"
#include "zotracker/vnosal/VnFile.h"
#include "zotracker/vnosal/VnFileFind.h"
#include "zotracker/vnosal/VnFileSystemItem.h"
#include "zotracker/vnosal/VnPath.h"
#include "zotracker/vnosal/VnString.h"
#include "zotracker/vnosal/VnStringList.h"
#include "zotracker/vnosal/VnWString.h"

#include <gtest/gtest.h>

#include <cstdlib>

// A host of the string and path library alone: it uses every exported class as an application
// would, on Windows from the module's import library.
namespace {

using namespace VnOSAL;

VnPath GetTemporaryFolder()
{
    for (const char* variable : {"TEMP", "TMPDIR"})
        if (const char* const value = std::getenv(variable))
            return VnPath(VnAString::FromBytes(value).ToString());
    return VnPath(L"/tmp");
}

TEST(VnOsalHost, UsesStringsAndTheirForms)
{
    VnString line = VnString::Format(L"%s has %d entries", L"log", 3);
    const VnString before = line;
    line.ReplaceAll(L"log", L"journal");
    EXPECT_EQ(line, L"journal has 3 entries");
    EXPECT_EQ(before, L"log has 3 entries");
    const VnStringList words = line.Split(L" ");
    EXPECT_EQ(words.GetCount(), 4u);
    EXPECT_EQ(words.Join(L"-"), L"journal-has-3-entries");
    EXPECT_STREQ(VnAString(L"\xE4", codePageUtf8).GetText(), "\xC3\xA4");
    EXPECT_EQ(VnWString(before).ToString(), before);
}

TEST(VnOsalHost, WorksWithAFolderOfItsOwn)
{
    VnCriticalSection section;
    const VnCriticalSectionLock lock(section);
    VnPath folder = GetTemporaryFolder();
    folder.Join(VnPath(VnString::Format(L"vnosal-host-%p", static_cast<const void*>(&folder))));
    const VnFileSystemItem item(folder);
    item.DeleteTree();
    ASSERT_TRUE(item.CreateFolderTree()) << VnAString(item.GetPath().GetText()).GetText();

    const VnPath file = VnPath(folder).Join(L"report.txt");
    EXPECT_EQ(file.GetFileName(), L"report.txt");
    EXPECT_TRUE(VnFile::ReplaceText(file, L"first line\r\n"));
    VnFile opened;
    EXPECT_TRUE(opened.Open(file, EAccess::ReadWrite));
    EXPECT_TRUE(opened.Seek(0, ESeek::End));
    EXPECT_TRUE(opened.Write("second", 6));
    opened.Close();
    VnString text;
    EXPECT_TRUE(VnFile::ReadText(file, text, 1000));
    EXPECT_EQ(text, L"first line\r\nsecond");

    VnFileFind find(folder, L"*.TXT");
    EXPECT_TRUE(find.Next());
    EXPECT_TRUE(find.GetPath().IsSame(file));
    EXPECT_FALSE(find.Next());
    const VnResult refused = VnFileSystemItem(file).Copy(file);
    EXPECT_EQ(refused.GetKind(), EError::Exists);
    EXPECT_FALSE(refused.GetText().IsEmpty());
    EXPECT_TRUE(item.DeleteTree());
    EXPECT_FALSE(item.Exists());
}

} // namespace
