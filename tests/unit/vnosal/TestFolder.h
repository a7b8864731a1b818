#pragma once

#include "zotracker/vnosal/VnFileSystemItem.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <vector>

// Files and folders of a test, made and looked at with the standard library, so that the tested
// one does not judge itself.
namespace vnosal_test {

// Makes a link to a folder, by the means of the system the test runs on.
void MakeFolderLink(const std::filesystem::path& link, const std::filesystem::path& target);

// Whether the system itself can delete such a link: Wine 8 cannot.
bool CanDeleteFolderLinks();

// An empty folder of its own, deleted with the object. Paths in it are separated by "/".
class CTestFolder
{
public:
    CTestFolder()
    {
        std::random_device random;
        root = std::filesystem::temp_directory_path() / ("vnosal-" + std::to_string(random()));
        std::filesystem::create_directory(root);
    }
    // The standard library of the Windows compiler takes links for folders and would run in
    // circles.
    ~CTestFolder() { VnOSAL::VnFileSystemItem(At(L"")).DeleteTree(); }
    CTestFolder(const CTestFolder&) = delete;
    CTestFolder& operator=(const CTestFolder&) = delete;

    std::filesystem::path NativeAt(std::wstring_view relative) const
    {
        return relative.empty() ? root : root / std::filesystem::path(std::wstring(relative));
    }
    VnOSAL::VnPath At(std::wstring_view relative) const
    {
        return VnOSAL::VnPath(NativeAt(relative).wstring());
    }

    void WriteFile(std::wstring_view relative, std::string_view bytes = "x") const // and folders
    {
        std::filesystem::create_directories(NativeAt(relative).parent_path());
        std::ofstream(NativeAt(relative), std::ios::binary) << bytes;
    }
    std::string ReadFile(std::wstring_view relative) const
    {
        std::ifstream file(NativeAt(relative), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    bool Has(std::wstring_view relative) const // also a link that leads nowhere
    {
        return std::filesystem::symlink_status(NativeAt(relative)).type() !=
               std::filesystem::file_type::not_found;
    }

    // All items below, sorted, separated by spaces, folders with "/" at the end; links are not
    // followed.
    std::string List(std::wstring_view relative = L"") const
    {
        const std::filesystem::path folder = NativeAt(relative);
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder))
            names.push_back(entry.path().lexically_relative(folder).generic_string() +
                            (entry.is_directory() && !entry.is_symlink() ? "/" : ""));
        std::sort(names.begin(), names.end());
        std::string all;
        for (const std::string& name : names)
            all += (all.empty() ? "" : " ") + name;
        return all;
    }

    void MakeFolderLink(std::wstring_view link, std::wstring_view target) const
    {
        vnosal_test::MakeFolderLink(NativeAt(link), NativeAt(target));
    }

private:
    std::filesystem::path root;
};

} // namespace vnosal_test
