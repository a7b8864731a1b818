#pragma once

#include "zotracker/vnosal/VnAString.h"
#include "zotracker/vnosal/VnFileSystemItem.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <ostream>
#include <random>
#include <set>
#include <string>
#include <string_view>

// How failed expectations show text.
namespace VnOSAL {

inline std::ostream& operator<<(std::ostream& out, const VnString& text)
{
    return out << std::string_view(VnAString(text, codePageUtf8));
}

} // namespace VnOSAL

namespace vnosal_test {

using Names = std::set<std::string>;

// Cases with an empty folder of their own. What is in it is made and looked at with the standard
// library, so that the tested one does not judge itself; paths in it are separated by "/".
class CTestFolder : public testing::Test
{
protected:
    void SetUp() override { std::filesystem::create_directory(root); }
    // The standard library would run in circles on Windows, where it takes links for folders.
    void TearDown() override { Item(L"").DeleteTree(); }

    std::filesystem::path NativeAt(std::wstring_view relative) const
    {
        return relative.empty() ? root : root / std::filesystem::path(std::wstring(relative));
    }
    VnOSAL::VnPath At(std::wstring_view relative) const
    {
        return VnOSAL::VnPath(NativeAt(relative).wstring());
    }
    VnOSAL::VnFileSystemItem Item(std::wstring_view relative) const
    {
        return VnOSAL::VnFileSystemItem(At(relative));
    }

    void WriteFile(std::wstring_view relative, std::string_view bytes = "x") const // and folders
    {
        std::filesystem::create_directories(NativeAt(relative).parent_path());
        std::ofstream(NativeAt(relative), std::ios::binary) << bytes;
    }
    void MakeFolderLink(std::wstring_view link, std::wstring_view target) const;

    std::string ReadFile(std::wstring_view relative) const
    {
        std::ifstream file(NativeAt(relative), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    // All items below, folders with "/" at the end; links are not followed.
    Names List(std::wstring_view relative = L"") const
    {
        const std::filesystem::path folder = NativeAt(relative);
        Names names;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder))
            names.insert(entry.path().lexically_relative(folder).generic_string() +
                         (entry.is_directory() && !entry.is_symlink() ? "/" : ""));
        return names;
    }

private:
    const std::filesystem::path root = std::filesystem::temp_directory_path() /
                                       ("vnosal-" + std::to_string(std::random_device()()));
};

} // namespace vnosal_test
