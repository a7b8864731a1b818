#include "TestFolder.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <random>
#include <vector>

namespace vnosal_test {

namespace fs = std::filesystem;

CTestFolder::CTestFolder()
{
    std::random_device random;
    root = fs::temp_directory_path() / ("vnosal-" + std::to_string(random()));
    fs::create_directory(root);
}

// The standard library of the Windows compiler takes links for folders and would run in circles.
CTestFolder::~CTestFolder() { VnOSAL::VnFileSystemItem(At(L"")).DeleteTree(); }

fs::path CTestFolder::NativeAt(std::wstring_view relative) const
{
    return relative.empty() ? root : root / fs::path(std::wstring(relative));
}

VnOSAL::VnPath CTestFolder::At(std::wstring_view relative) const
{
    return VnOSAL::VnPath(NativeAt(relative).wstring());
}

void CTestFolder::WriteFile(std::wstring_view relative, std::string_view bytes) const
{
    fs::create_directories(NativeAt(relative).parent_path());
    std::ofstream(NativeAt(relative), std::ios::binary) << bytes;
}

std::string CTestFolder::ReadFile(std::wstring_view relative) const
{
    std::ifstream file(NativeAt(relative), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

bool CTestFolder::Has(std::wstring_view relative) const
{
    return fs::symlink_status(NativeAt(relative)).type() != fs::file_type::not_found;
}

std::string CTestFolder::List(std::wstring_view relative) const
{
    std::vector<std::string> names;
    for (const auto& entry : fs::recursive_directory_iterator(NativeAt(relative)))
        names.push_back(entry.path().lexically_relative(NativeAt(relative)).generic_string() +
                        (entry.is_directory() && !entry.is_symlink() ? "/" : ""));
    std::sort(names.begin(), names.end());
    std::string all;
    for (const std::string& name : names)
        all += (all.empty() ? "" : " ") + name;
    return all;
}

void CTestFolder::MakeFolderLink(std::wstring_view link, std::wstring_view target) const
{
    vnosal_test::MakeFolderLink(NativeAt(link), NativeAt(target));
}

} // namespace vnosal_test
