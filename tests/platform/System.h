#pragma once

#include "platform/Files.h"

#include <gtest/gtest.h>

#include <string>

// What the contract cases need of a system beyond the seam they test, on either system.
namespace contract {

// What the cases may create: this folder with files in it, and these keys.
inline const std::wstring folder = L"C:\\ProgramData\\ZoTracker contract";
inline const std::wstring classKey = L"CLSID\\{B2C64E0F-9A17-4D33-8F5B-60E1A7D2C984}";
inline const std::wstring otherKey = L"Software\\ZoTracker contract";

// Removes all that, in both views, and puts the whole simulation into its first state. The variable
// ZO_CONTRACT of the environment is "va%lue".
void Clean();

// A case that begins with the empty folder.
class CCase : public testing::Test
{
protected:
    CCase()
    {
        Clean();
        EXPECT_TRUE(platform::CreateFolder(folder));
    }
    ~CCase() override { Clean(); }

    // The contents of a file, "unread" when it cannot be read.
    static std::string Read(const std::wstring& path, std::uint64_t limit = 1'000'000)
    {
        std::string bytes = "unread";
        const bool isRead = platform::ReadWholeFile(path, limit, bytes);
        EXPECT_EQ(isRead, bytes != "unread");
        return bytes;
    }
};

} // namespace contract
