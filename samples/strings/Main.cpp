// A host of the string, path and file library alone: it keeps a report in a folder of its own.
// Built with the compiler of the module, for the classes are exported as that compiler names them.
#include <zotracker/vnosal/VnAString.h>
#include <zotracker/vnosal/VnCriticalSection.h>
#include <zotracker/vnosal/VnFile.h>
#include <zotracker/vnosal/VnFileFind.h>
#include <zotracker/vnosal/VnFileSystemItem.h>
#include <zotracker/vnosal/VnStringList.h>
#include <zotracker/vnosal/VnWString.h>

#include <cstdio>
#include <cstdlib>

using namespace VnOSAL;

namespace {

VnPath GetTemporaryFolder()
{
    for (const char* variable : {"TEMP", "TMPDIR"})
        if (const char* const value = std::getenv(variable))
            return VnPath(VnAString::FromBytes(value).ToString());
    return VnPath(L"/tmp");
}

VnString MakeLine()
{
    VnString line = VnString::Format(L"%s has %d entries \x20AC", L"log", 3);
    line.ReplaceAll(L"log", L"journal");
    return VnWString(line).ToString().Split(L" ").Join(L"-");
}

// Writes a report in two steps and finds it again; its text.
VnResult KeepReport(const VnPath& folder, VnString& text)
{
    const VnPath file = VnPath(folder).Join(L"report.txt");
    if (VnResult written = VnFile::ReplaceText(file, MakeLine() + L"\r\n"); !written)
        return written;
    VnFile opened;
    if (VnResult result = opened.Open(file, EAccess::ReadWrite); !result)
        return result;
    opened.Seek(0, ESeek::End);
    opened.Write("second", 6);
    opened.Close();
    VnFileFind find(folder, L"*.TXT");
    return find.Next() ? VnFile::ReadText(find.GetPath(), text, 1000) : find.GetResult();
}

} // namespace

int main()
{
    VnCriticalSection section;
    const VnCriticalSectionLock lock(section);
    VnPath folder = GetTemporaryFolder();
    folder.Join(VnPath(VnString::Format(L"vnosal-host-%p", static_cast<const void*>(&folder))));
    const VnFileSystemItem item(folder);
    item.CreateFolderTree();
    VnString text;
    const VnResult kept = KeepReport(folder, text);
    std::puts(VnAString(kept ? text : kept.GetText(), codePageUtf8).GetText());
    return item.DeleteTree() && text == L"journal-has-3-entries-\x20AC\r\nsecond" ? 0 : 1;
}
