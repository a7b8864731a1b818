#include "zotracker/vnosal/VnPath.h"
#include "PrintText.h"

#include <gtest/gtest.h>

#include <string>

// The expected values follow Microsoft's "Naming Files, Paths, and Namespaces" and "File path
// formats on Windows systems", on both systems.
namespace {

using namespace VnOSAL;
using F = EPathForm;

TEST(VnPath, TakesPathsApart)
{
    const struct
    {
        const wchar_t* path;
        EPathForm form;
        const wchar_t *root, *directory, *title, *extension;
    } cases[] = {
        {L"", F::Empty, L"", L"", L"", L""},
        {L"a\\b/c", F::Relative, L"", L"a\\b", L"c", L""},
        {L"C:\\a\\b.tar.gz", F::DriveAbsolute, L"C:\\", L"a", L"b.tar", L".gz"},
        {L"c:/a/b/", F::DriveAbsolute, L"c:/", L"a/b", L"", L""},
        {L"C:a\\b", F::DriveRelative, L"C:", L"a", L"b", L""},
        {L"/usr/lib/x.so", F::Rooted, L"/", L"usr/lib", L"x", L".so"},
        {L"\\\\server\\share\\d\\f.x", F::Unc, L"\\\\server\\share\\", L"d", L"f", L".x"},
        {L"\\\\server", F::Unc, L"\\\\server", L"", L"", L""},
        {L"\\\\.\\COM1", F::Device, L"\\\\.\\COM1", L"", L"", L""},
        {L"\\\\.\\unc\\s\\h\\a", F::Device, L"\\\\.\\unc\\s\\h\\", L"", L"a", L""},
        {L"//.", F::Device, L"//.", L"", L"", L""},
        {L"\\\\?\\C:\\a/b", F::Extended, L"\\\\?\\C:\\", L"", L"a/b", L""},
        {L"\\\\?\\UNC\\s\\h\\a", F::Extended, L"\\\\?\\UNC\\s\\h\\", L"", L"a", L""},
        {L"file:///C:/a/b%20c.txt", F::FileUrl, L"file:///C:/", L"a", L"b%20c", L".txt"},
        {L"FILE://server/share/x", F::FileUrl, L"FILE://server/", L"share", L"x", L""},
        {L"http://host:80/a/b.html?q=1/2#f", F::WebUrl, L"http://host:80/", L"a", L"b", L".html"},
        {L"https://host?q/x.y", F::WebUrl, L"https://host", L"", L"", L""},
        {L"C:\\.gitignore", F::DriveAbsolute, L"C:\\", L"", L"", L".gitignore"},
        {L"x\\.", F::Relative, L"", L"x", L".", L""},
        {L"name.", F::Relative, L"", L"", L"name", L"."},
    };
    for (const auto& c : cases)
    {
        const VnPath path(c.path);
        EXPECT_EQ(path.GetForm(), c.form) << path.GetText();
        EXPECT_EQ(VnString(path.GetRoot()), c.root) << path.GetText();
        EXPECT_EQ(VnString(path.GetDirectory()), c.directory) << path.GetText();
        EXPECT_EQ(VnString(path.GetTitle()), c.title) << path.GetText();
        EXPECT_EQ(VnString(path.GetExtension()), c.extension) << path.GetText();
        EXPECT_EQ(VnString(path.GetFileName()), VnString(c.title) + c.extension);
    }
    EXPECT_EQ(VnPath(L"http://host/a?q#f").GetQuery(), L"?q#f");
    EXPECT_EQ(VnPath(L"C:\\a\\b\\").GetParent(), L"C:\\a\\b");
    EXPECT_EQ(VnPath(L"C:\\a").GetParent(), L"C:\\");
}

TEST(VnPath, PutsPartsTogether)
{
    const struct
    {
        const wchar_t *root, *directory, *title, *extension, *path;
    } cases[] = {
        {L"C:\\", L"a\\b", L"c", L".txt", L"C:\\a\\b\\c.txt"},
        {L"C:", L"a", L"b", L"", L"C:a\\b"},
        {L"\\\\s\\h", L"a", L"b", L"", L"\\\\s\\h\\a\\b"},
        {L"https://h/", L"a", L"b", L"c", L"https://h/a/b.c"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(VnPath::FromParts(c.root, c.directory, c.title, c.extension).GetText(), c.path);

    EXPECT_EQ(VnPath(L"C:\\a\\b.txt").ReplaceFileName(L"c").GetText(), L"C:\\a\\c");
    EXPECT_EQ(VnPath(L"C:\\a\\").ReplaceFileName(L"c").GetText(), L"C:\\a\\c");
    EXPECT_EQ(VnPath(L"C:\\a.b\\c").ReplaceExtension(L"d").GetText(), L"C:\\a.b\\c.d");
    EXPECT_EQ(VnPath(L"a.tar.gz").ReplaceExtension(L".xz").GetText(), L"a.tar.xz");
    EXPECT_EQ(VnPath(L"a.b").ReplaceExtension(L"").GetText(), L"a");
    EXPECT_EQ(VnPath(L"C:\\").ReplaceExtension(L"x").GetText(), L"C:\\");
    EXPECT_EQ(VnPath(L"http://h/a.b?q").ReplaceExtension(L"c").GetText(), L"http://h/a.c?q");
}

TEST(VnPath, Normalises)
{
    const struct
    {
        const wchar_t *path, *normal;
    } cases[] = {
        {L"", L""},
        {L"a\\..\\", L"."},
        {L"a/./b//c", L"a\\b\\c"},
        {L"..\\..\\a\\..", L"..\\.."},
        {L"C:\\a\\..\\..\\b", L"C:\\b"},
        {L"C:///a///", L"C:\\a\\"},
        {L"/usr/../lib", L"\\lib"},
        {L"\\\\server\\share\\a\\..\\..\\b", L"\\\\server\\share\\b"},
        {L"C:\\a.\\b", L"C:\\a\\b"},     // one period at the end of a name
        {L"C:\\...\\b", L"C:\\...\\b"},  // a valid name
        {L"C:\\a \\b. .", L"C:\\a \\b"}, // periods and spaces at the path's end
        {L"C:\\a. \\", L"C:\\a. \\"},    // which this one does not have
        {L"C:\\a\\.\\", L"C:\\a\\"},
        {L"C:\\a..\\. .", L"C:\\a..\\"}, // all of the last name, but not its separator
        {L"C:\\a..\\b\\..", L"C:\\a"},   // of the name that is the last one now
        {L"//./C:/a/../b", L"\\\\.\\C:\\b"},
        {L"\\\\?\\C:\\a\\..\\b/.", L"\\\\?\\C:\\a\\..\\b/."}, // never normalised
        {L"http://h/a/./b/../c?x=/../y", L"http://h/a/c?x=/../y"},
        {L"file:///C:/../a/", L"file:///C:/a/"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(VnPath(c.path).Normalise().GetText(), c.normal) << VnString(c.path);
}

TEST(VnPath, JoinsAndCompletes)
{
    const struct
    {
        const wchar_t *base, *tail, *joined;
        const wchar_t* absolute; // of the tail
    } cases[] = {
        {L"C:\\a\\", L"..\\b", L"C:\\a\\..\\b", L"C:\\b"},
        {L"C:\\a", L"\\b", L"C:\\b", L"C:\\b"},
        {L"C:\\a", L"c:b", L"C:\\a\\b", L"C:\\a\\b"},
        {L"C:\\a", L"D:b", L"D:b", L"D:\\b"},
        {L"C:\\a", L"NUL", L"C:\\a\\NUL", L"\\\\.\\NUL"},
        {L"C:\\a", L"d\\nul", L"C:\\a\\d\\nul", L"C:\\a\\d\\nul"},
        {L"http://h/a?x", L"b?q", L"http://h/a/b?q", L"http://h/a/b?q"},
        {L"http://h/a?q", L"/b", L"http://h/b", L"http://h/b"},
        {L"\\\\?\\C:\\a", L"b", L"\\\\?\\C:\\a\\b", L"\\\\?\\C:\\a\\b"},
    };
    for (const auto& c : cases)
    {
        EXPECT_EQ(VnPath(c.base).Join(c.tail).GetText(), c.joined) << VnString(c.tail);
        EXPECT_EQ(VnPath(c.tail).MakeAbsolute(c.base).GetText(), c.absolute) << VnString(c.tail);
    }
    EXPECT_EQ(VnPath().Join(L"a").GetText(), L"a");
    EXPECT_EQ(VnPath(L"C:").Join(L"a").GetText(), L"C:a");
    EXPECT_EQ(VnPath(L"a").Join(L"\\b").GetText(), L"\\b");
    EXPECT_EQ(VnPath(L"b").MakeAbsolute(L"a").GetText(), L"b"); // no absolute base
}

TEST(VnPath, FindsTheWayFromAFolder)
{
    const struct
    {
        const wchar_t *path, *base;
        const wchar_t* way; // null when there is none
    } cases[] = {
        {L"C:\\a\\b", L"c:/A/", L"b"},          {L"C:\\a\\b", L"C:\\a\\c\\d", L"..\\..\\b"},
        {L"C:\\", L"C:\\a\\b", L"..\\.."},      {L"D:\\a", L"C:\\a", nullptr},
        {L"\\\\s\\h\\a", L"\\\\s\\i", nullptr}, {L"http://h/a/b", L"http://h/A", L"../a/b"},
    };
    for (const auto& c : cases)
    {
        VnPath path(c.path);
        EXPECT_EQ(path.MakeRelative(c.base), c.way != nullptr) << VnString(c.path);
        EXPECT_EQ(path.GetText(), c.way ? c.way : c.path) << VnString(c.path);
    }
}

TEST(VnPath, ComparesAsTheFileSystemDoes)
{
    const struct
    {
        const wchar_t *left, *right;
        bool same;
    } cases[] = {
        {L"C:\\A\\b", L"c:/a/B/", true},
        {L"\\\\?\\C:\\a", L"C:\\a", true},
        {L"\\\\?\\UNC\\s\\h\\a", L"\\\\S\\h\\a", true},
        {L"C:\\", L"C:", false},
        {L"\\\\?\\C:\\a.", L"C:\\a.", false},
        {L"\xC4.txt", L"\xE4.TXT", true},
        {L"http://h/A", L"http://h/a", false},
        {L"file:///C:/a%20b", L"c:\\A b", true},
    };
    for (const auto& c : cases)
    {
        EXPECT_EQ(VnPath(c.left).IsSame(c.right), c.same) << VnString(c.left);
        EXPECT_EQ(VnPath(c.right).IsSame(c.left), c.same) << VnString(c.left);
    }
    EXPECT_TRUE(VnPath(L"C:\\a\\b").IsBelow(L"c:\\A"));
    EXPECT_TRUE(VnPath(L"C:\\a").IsBelow(L"C:\\"));
    EXPECT_FALSE(VnPath(L"C:\\ab").IsBelow(L"C:\\a"));
    EXPECT_FALSE(VnPath(L"C:\\a").IsBelow(L"C:\\a\\"));
    EXPECT_FALSE(VnPath(L"C:\\a\\..\\b").IsBelow(L"C:\\a"));
}

TEST(VnPath, PutsThePrefixForLongPathsOnAndOff)
{
    const std::wstring name(200, L'n');
    const std::wstring longest = L"C:\\" + std::wstring(256, L'x');
    const std::wstring deep = L"C:\\a\\" + name + L"\\" + name;
    const struct
    {
        std::wstring path, extended;
        std::wstring plain; // of the extended one
    } cases[] = {
        {L"C:/a/./b", L"\\\\?\\C:\\a\\b", L"C:\\a\\b"},
        {L"\\\\s\\h\\a", L"\\\\?\\UNC\\s\\h\\a", L"\\\\s\\h\\a"},
        {longest, L"\\\\?\\" + longest, longest},
        {longest + L"x", L"\\\\?\\" + longest + L"x", L"\\\\?\\" + longest + L"x"}, // these keep it
        {deep, L"\\\\?\\" + deep, L"\\\\?\\" + deep},
        {L"\\\\?\\C:\\a.", L"\\\\?\\C:\\a.", L"\\\\?\\C:\\a."},
        {L"C:\\nul", L"\\\\?\\C:\\nul", L"\\\\?\\C:\\nul"},
    };
    for (const auto& c : cases)
    {
        VnPath path(c.path);
        EXPECT_EQ(path.MakeExtended().GetText(), c.extended);
        EXPECT_EQ(path.RemoveExtended().GetText(), c.plain);
    }
}

TEST(VnPath, ConvertsFileAddresses)
{
    const struct
    {
        const wchar_t* address;
        const wchar_t* path; // null when it names no file
        const wchar_t* back;
    } cases[] = {
        {L"file:///C:/a%20b/%C3%A4%25.txt", L"C:\\a b\\\xE4%.txt",
         L"file:///C:/a%20b/%C3%A4%25.txt"},
        {L"file://localhost/C:/a", L"C:\\a", L"file:///C:/a"},
        {L"file://server/share/a#x", L"\\\\server\\share\\a", L"file://server/share/a"},
        {L"file:///home/u/%zz%4", L"\\home\\u\\%zz%4", L"file:///home/u/%25zz%254"},
        {L"file:///C:/a%00b", nullptr, nullptr},
        {L"file:///C:/a%2Fb", nullptr, nullptr},
        {L"file:///C:/%FF", nullptr, nullptr},
    };
    for (const auto& c : cases)
    {
        VnPath path(c.address);
        EXPECT_EQ(path.MakeFilePath(), c.path != nullptr) << VnString(c.address);
        EXPECT_EQ(path.GetText(), c.path ? c.path : c.address);
        if (c.back)
        {
            EXPECT_EQ(VnPath::FromFilePath(path).GetText(), c.back);
        }
    }
    EXPECT_EQ(VnPath::FromFilePath(L"\\\\?\\C:\\a").GetText(), L"file:///C:/a");
    EXPECT_TRUE(VnPath::FromFilePath(L"a\\b").IsEmpty());
}

TEST(VnPath, KnowsDevicesAndValidNames)
{
    for (const wchar_t* device : {L"Com1", L"LPT9.txt", L"aux .x", L"com\xB9", L"NUL:"})
        EXPECT_TRUE(VnPath::IsDeviceName(device)) << VnString(device);
    for (const wchar_t* name : {L"", L"nul2", L"com", L"com0", L"com10", L"xnul"})
        EXPECT_FALSE(VnPath::IsDeviceName(name)) << VnString(name);
    for (const wchar_t* name : {L"a", L".x", L"a b", L"\x416"})
        EXPECT_TRUE(VnPath::IsValidFileName(name)) << VnString(name);
    for (const wchar_t* name :
         {L"", L"...", L"a.", L"a ", L"a:b", L"a\\b", L"a?", L"a\tb", L"nul.x"})
        EXPECT_FALSE(VnPath::IsValidFileName(name)) << VnString(name);
    EXPECT_FALSE(VnPath::IsValidFileName(std::wstring(256, L'a')));
}

} // namespace
