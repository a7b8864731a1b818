#pragma once

#include "zotracker/vnosal/VnFileSystemItem.h"

#include <filesystem>
#include <string>
#include <string_view>

// Files and folders of a test, made and looked at with the standard library, so that the tested
// one does not judge itself.
namespace vnosal_test {

// An empty folder of its own, deleted with the object.
class CTestFolder
{
public:
    CTestFolder();
    ~CTestFolder();
    CTestFolder(const CTestFolder&) = delete;
    CTestFolder& operator=(const CTestFolder&) = delete;

    VnOSAL::VnPath At(std::wstring_view relative) const; // separated by "/"
    std::filesystem::path NativeAt(std::wstring_view relative) const;

    void WriteFile(std::wstring_view relative, std::string_view bytes = "x") const; // and folders
    std::string ReadFile(std::wstring_view relative) const;
    bool Has(std::wstring_view relative) const; // also a link that leads nowhere

    // All items below, sorted, separated by spaces, folders with "/" at the end; links are not
    // followed.
    std::string List(std::wstring_view relative = L"") const;

    void MakeFolderLink(std::wstring_view link, std::wstring_view target) const;

private:
    std::filesystem::path root;
};

// Makes a link to a folder, by the means of the system the test runs on.
void MakeFolderLink(const std::filesystem::path& link, const std::filesystem::path& target);

// Whether the system itself can delete such a link: Wine 8 cannot.
bool CanDeleteFolderLinks();

} // namespace vnosal_test
