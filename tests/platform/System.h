#pragma once

#include "platform/Files.h"
#include "platform/Registry.h"
#include "platform/SystemPaths.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

// What the contract cases need of a system beyond the seam they test, on either system.
namespace contract {

// Begins a case: on the simulation with everything in its first state.
void BeginCase();

std::vector<std::wstring> ListFiles(const std::wstring& folder);

// Removes a folder and the files in it, if there.
void RemoveFolder(const std::wstring& folder);

// Sets or clears a file's read-only attribute.
void SetReadOnly(const std::wstring& path, bool readOnly);

void SetEnvironmentText(const std::wstring& name, const std::wstring& value);

// Removes a key without keys below it, if there.
void RemoveKey(platform::ERegistryRoot root, const std::wstring& subKey,
               platform::ERegistryView view);

// A case with a folder of its own, empty at the start and gone at the end.
class CFolderTest : public testing::Test
{
protected:
    CFolderTest() : folder((BeginCase(), platform::GetSpecialFolder(35) + L"\\ZoTracker contract"))
    {
        RemoveFolder(folder);
        EXPECT_TRUE(platform::CreateFolder(folder));
    }
    ~CFolderTest() override { RemoveFolder(folder); }

    std::wstring PathOf(const std::wstring& name) const { return folder + L"\\" + name; }

    const std::wstring folder;
};

} // namespace contract
