#include "zotracker/vnosal/VnPath.h"
#include "VnosalTest.h"

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
        const wchar_t* parts; // root, directory, title, extension, query
    } cases[] = {
        {L"", F::Empty, L"[][][][][]"},
        {L"a\\b/c", F::Relative, L"[][a\\b][c][][]"},
        {L"C:\\a\\b.tar.gz", F::DriveAbsolute, L"[C:\\][a][b.tar][.gz][]"},
        {L"c:/a/b/", F::DriveAbsolute, L"[c:/][a/b][][][]"},
        {L"C:a\\b", F::DriveRelative, L"[C:][a][b][][]"},
        {L"/usr/lib/x.so", F::Rooted, L"[/][usr/lib][x][.so][]"},
        {L"\\\\server\\share\\d\\f.x", F::Unc, L"[\\\\server\\share\\][d][f][.x][]"},
        {L"\\\\server", F::Unc, L"[\\\\server][][][][]"},
        {L"\\\\.\\unc\\s\\h\\a", F::Device, L"[\\\\.\\unc\\s\\h\\][][a][][]"},
        {L"//.", F::Device, L"[//.][][][][]"},
        {L"\\\\?\\C:\\a/b", F::Extended, L"[\\\\?\\C:\\][][a/b][][]"},
        {L"file:///C:/a/b%20c.txt", F::FileUrl, L"[file:///C:/][a][b%20c][.txt][]"},
        {L"FILE://server/share/x", F::FileUrl, L"[FILE://server/][share][x][][]"},
        {L"http://host:80/a/b.html?q=1/2#f", F::WebUrl,
         L"[http://host:80/][a][b][.html][?q=1/2#f]"},
        {L"https://host?q/x.y", F::WebUrl, L"[https://host][][][][?q/x.y]"},
        {L".gitignore", F::Relative, L"[][][][.gitignore][]"},
        {L"x\\.", F::Relative, L"[][x][.][][]"},
    };
    for (const auto& c : cases)
    {
        const VnPath path(c.path);
        VnString parts;
        for (const std::wstring_view part : {path.GetRoot(), path.GetDirectory(), path.GetTitle(),
                                             path.GetExtension(), path.GetQuery()})
            parts.Append(L"[").Append(part).Append(L"]");
        EXPECT_EQ(parts, c.parts);
        EXPECT_EQ(path.GetForm(), c.form) << path.GetText();
    }
    EXPECT_EQ(VnPath(L"C:\\a\\b\\").GetParent(), L"C:\\a\\b");
    EXPECT_EQ(VnPath(L"C:\\a").GetParent(), L"C:\\");
}

TEST(VnPath, PutsPartsTogether)
{
    const auto join = &VnPath::FromParts;
    EXPECT_EQ(join(L"C:\\", L"a\\b", L"c", L".txt").GetText(), L"C:\\a\\b\\c.txt");
    EXPECT_EQ(join(L"https://h/", L"a", L"b", L"c").GetText(), L"https://h/a/b.c");
    EXPECT_EQ(join(L"C:\\", L"a", L"", L"").GetText(), L"C:\\a");
}

VnPath Normal(VnPath path) { return path.Normalise(); }
VnPath Extended(VnPath path) { return path.MakeExtended(); }
VnPath Plain(VnPath path) { return path.RemoveExtended(); }
VnPath Local(VnPath path) { return path.MakeFilePath() ? path : VnPath(L"none"); }
VnPath Address(VnPath path) { return VnPath::FromFilePath(path); }

TEST(VnPath, TakesOtherForms)
{
    const std::wstring longest = L"C:\\a\\" + std::wstring(254, L'x');
    const struct
    {
        VnPath (*change)(VnPath path);
        std::wstring path, changed;
    } cases[] = {
        {Normal, L"", L""},
        {Normal, L"a\\..\\", L"."},
        {Normal, L"a/./b//c", L"a\\b\\c"},
        {Normal, L"..\\..\\a\\..", L"..\\.."},
        {Normal, L"C:\\a\\..\\..\\b", L"C:\\b"},
        {Normal, L"C:///a///", L"C:\\a\\"},
        {Normal, L"/usr/../../lib", L"\\lib"},
        {Normal, L"C:a\\.", L"C:a"},
        {Normal, L"C:\\a.\\b", L"C:\\a\\b"},     // one period at the end of a name
        {Normal, L"C:\\a \\b. .", L"C:\\a \\b"}, // periods and spaces at the path's end
        {Normal, L"C:\\a. \\", L"C:\\a. \\"},    // which this one does not have
        {Normal, L"C:\\a..\\. .", L"C:\\a..\\"}, // all of the last name, but not its separator
        {Normal, L"C:\\a..\\b\\..", L"C:\\a"},   // of the name that is the last one now
        {Normal, L"//./C:/a/../b", L"\\\\.\\C:\\b"},
        {Normal, L"\\\\?\\C:\\a\\..\\b/.", L"\\\\?\\C:\\a\\..\\b/."}, // never normalised
        {Normal, L"http://h/a/./b/../c?x=/../y", L"http://h/a/c?x=/../y"},

        {Extended, L"C:/a/./b", L"\\\\?\\C:\\a\\b"},
        {Extended, L"\\\\s\\h\\a", L"\\\\?\\UNC\\s\\h\\a"},
        {Extended, L"\\\\?\\C:\\a.", L"\\\\?\\C:\\a."},
        {Plain, L"\\\\?\\unc\\s\\h\\a", L"\\\\s\\h\\a"},
        {Plain, L"\\\\?\\" + longest, longest},
        {Plain, L"\\\\?\\" + longest + L"x", L"\\\\?\\" + longest + L"x"}, // these keep it
        {Plain, L"\\\\?\\C:\\a.", L"\\\\?\\C:\\a."},
        {Plain, L"\\\\?\\C:\\nul", L"\\\\?\\C:\\nul"},

        {Local, L"file:///C:/a%20b/%C3%A4%25.txt", L"C:\\a b\\\xE4%.txt"},
        {Local, L"file://localhost/C:/a", L"C:\\a"},
        {Local, L"file://server/share/a#x", L"\\\\server\\share\\a"},
        {Local, L"file:///home/u/%zz%4", L"\\home\\u\\%zz%4"},
        {Local, L"file:///C:/a%00b", L"none"},
        {Local, L"file:///C:/a%2Fb", L"none"},
        {Local, L"file:///C:/%FF", L"none"},
        {Address, L"C:\\a b\\\xE4%.txt", L"file:///C:/a%20b/%C3%A4%25.txt"},
        {Address, L"\\\\server\\share\\a", L"file://server/share/a"},
        {Address, L"\\home\\~u", L"file:///home/~u"},
        {Address, L"\\\\?\\C:\\a", L"file:///C:/a"},
        {Address, L"a\\b", L""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(c.change(VnPath(c.path)).GetText(), c.changed) << VnString(c.path);
}

VnPath Renamed(VnPath path, VnPath by) { return path.ReplaceFileName(by.GetText()); }
VnPath Retyped(VnPath path, VnPath by) { return path.ReplaceExtension(by.GetText()); }
VnPath Joined(VnPath path, VnPath by) { return path.Join(by); }
VnPath Complete(VnPath path, VnPath by) { return path.MakeAbsolute(by); }
VnPath Way(VnPath path, VnPath by)
{
    return path.MakeRelative(by) ? path : VnPath(L"none for " + path.GetText());
}
VnPath Relation(VnPath path, VnPath by)
{
    return VnPath(path.IsSame(by) ? L"same" : path.IsBelow(by) ? L"below" : L"none");
}

TEST(VnPath, IsSeenWithAnother)
{
    const struct
    {
        VnPath (*change)(VnPath path, VnPath by);
        const wchar_t *path, *by, *changed;
    } cases[] = {
        {Renamed, L"C:\\a\\b.txt", L"c", L"C:\\a\\c"},
        {Renamed, L"C:\\a\\", L"c", L"C:\\a\\c"},
        {Retyped, L"a.b\\c", L"d", L"a.b\\c.d"},
        {Retyped, L"a.tar.gz", L".xz", L"a.tar.xz"},
        {Retyped, L"a.b", L"", L"a"},
        {Retyped, L"C:\\", L"x", L"C:\\"},
        {Retyped, L"http://h/a.b?q", L"c", L"http://h/a.c?q"},

        {Joined, L"C:\\a\\", L"..\\b", L"C:\\a\\..\\b"},
        {Joined, L"C:\\a", L"\\b", L"C:\\b"},
        {Joined, L"C:\\a", L"c:b", L"C:\\a\\b"},
        {Joined, L"C:\\a", L"D:b", L"D:b"},
        {Joined, L"http://h/a?x", L"b?q", L"http://h/a/b?q"},
        {Joined, L"http://h/a?q", L"/b", L"http://h/b"},
        {Joined, L"", L"a", L"a"},
        {Joined, L"C:", L"a", L"C:a"},
        {Joined, L"a", L"\\b", L"\\b"},
        {Complete, L"..\\b", L"C:\\a\\", L"C:\\b"},
        {Complete, L"D:b", L"C:\\a", L"D:\\b"},
        {Complete, L"NUL", L"C:\\a", L"\\\\.\\NUL"},
        {Complete, L"d\\nul", L"C:\\a", L"C:\\a\\d\\nul"},
        {Complete, L"b", L"\\\\?\\C:\\a", L"\\\\?\\C:\\a\\b"},
        {Complete, L"b", L"a", L"b"}, // no absolute base

        {Way, L"C:\\a\\b", L"c:/A/", L"b"},
        {Way, L"C:\\a\\b", L"C:\\a\\c\\d", L"..\\..\\b"},
        {Way, L"C:\\", L"C:\\a\\b", L"..\\.."},
        {Way, L"http://h/a/b", L"http://h/A", L"../a/b"},
        {Way, L"D:\\a", L"C:\\a", L"none for D:\\a"},

        {Relation, L"C:\\A\\b", L"c:/a/B/", L"same"},
        {Relation, L"\\\\?\\C:\\a", L"C:\\a", L"same"},
        {Relation, L"C:", L"C:\\", L"none"},
        {Relation, L"\\\\?\\C:\\a.", L"C:\\a.", L"none"},
        {Relation, L"http://h/A", L"http://h/a", L"none"},
        {Relation, L"file:///C:/a%20b", L"c:\\A b", L"same"},
        {Relation, L"C:\\a\\b", L"c:\\A", L"below"},
        {Relation, L"C:\\a", L"C:\\", L"below"},
        {Relation, L"C:\\ab", L"C:\\a", L"none"},
        {Relation, L"C:\\a\\..\\b", L"C:\\a", L"none"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(c.change(VnPath(c.path), VnPath(c.by)).GetText(), c.changed)
            << VnString(c.path) << ' ' << VnString(c.by);
}

TEST(VnPath, KnowsDevicesAndValidNames)
{
    for (const wchar_t* device : {L"Com1", L"LPT9.txt", L"aux .x", L"com\xB9", L"NUL:", L"con",
                                  L"prn", L"CONIN$", L"conout$"})
        EXPECT_TRUE(VnPath::IsDeviceName(device)) << VnString(device);
    for (const wchar_t* name : {L"", L"nul2", L"com", L"com0", L"com10", L"xnul"})
        EXPECT_FALSE(VnPath::IsDeviceName(name)) << VnString(name);
    for (const wchar_t* name : {L"a", L".x", L"a b", L"\x416"})
        EXPECT_TRUE(VnPath::IsValidFileName(name)) << VnString(name);
    for (const wchar_t* name : {L"", L"...", L"a ", L"a:b", L"a\tb", L"nul.x"})
        EXPECT_FALSE(VnPath::IsValidFileName(name)) << VnString(name);
    EXPECT_FALSE(VnPath::IsValidFileName(std::wstring(256, L'a')));
}

} // namespace
