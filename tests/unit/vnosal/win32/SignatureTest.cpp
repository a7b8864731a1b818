#include "../TestFolder.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <fstream>
#include <iterator>

namespace {

using namespace VnOSAL;

// A built file, by its path for the programs of the build machine's Windows.
std::string PathOf(const char* name) { return std::string(ZO_SIGNED_FOLDER "/") + name; }

// Has the machine trust an authority, or with the option "--remove" no longer; true when it does.
bool ChangeTrust(const char* option, const char* authority)
{
    std::string command =
        "\"" ZO_TRUST_PROGRAM "\" " + std::string(option) + " \"" + PathOf(authority) + "\"";
    STARTUPINFOA start = {};
    start.cb = sizeof(start);
    PROCESS_INFORMATION process = {};
    if (!::CreateProcessA(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                          &start, &process))
        return false;
    DWORD result = 1;
    ::WaitForSingleObject(process.hProcess, INFINITE);
    ::GetExitCodeProcess(process.hProcess, &result);
    ::CloseHandle(process.hThread);
    ::CloseHandle(process.hProcess);
    return result == 0;
}

std::string ReadBuilt(const char* name)
{
    std::ifstream file(PathOf(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// An executable without a signature, signed by somebody whom a trusted authority certifies, and by
// a stranger. A process reads once whom it trusts, so another one has it changed before.
TEST(VnFileSystemItem, ChecksSignatures)
{
    ASSERT_TRUE(ChangeTrust("", "signed.der"));
    const vnosal_test::CTestFolder folder;
    std::string bytes = ReadBuilt("signed.exe");
    ASSERT_FALSE(bytes.empty());
    folder.WriteFile(L"signed.exe", bytes);
    folder.WriteFile(L"stranger.exe", ReadBuilt("stranger.exe"));
    folder.WriteFile(L"plain.exe", ReadBuilt("plain.exe"));
    folder.WriteFile(L"text.txt", "text");
    bytes[bytes.size() / 4] ^= 1;
    folder.WriteFile(L"changed.exe", bytes);
    const auto check = [&folder](const wchar_t* name) {
        return VnFileSystemItem(folder.At(name)).CheckSignature();
    };
    EXPECT_EQ(check(L"signed.exe"), ESignature::Valid);
    EXPECT_EQ(check(L"changed.exe"), ESignature::Invalid);
    EXPECT_EQ(check(L"stranger.exe"), ESignature::Invalid);
    EXPECT_EQ(check(L"plain.exe"), ESignature::None);
    EXPECT_EQ(check(L"text.txt"), ESignature::None);
    EXPECT_EQ(check(L"none.exe"), ESignature::CannotVerify);
    EXPECT_TRUE(ChangeTrust("--remove", "signed.der"));
}

} // namespace
