#include "../VnosalTest.h"

#include <windows.h>

#include <process.h>

using namespace VnOSAL;
using NativeItems = vnosal_test::CTestFolder;

// Wine makes no links itself but shows those of the system below it.
void NativeItems::MakeFolderLink(std::wstring_view link, std::wstring_view target) const
{
    using GetUnixName = char*(CDECL*)(const wchar_t*);
    const auto getUnixName = reinterpret_cast<GetUnixName>(reinterpret_cast<void*>(
        ::GetProcAddress(::GetModuleHandleW(L"kernel32.dll"), "wine_get_unix_file_name")));
    const char* const at = getUnixName(NativeAt(link).c_str());
    const char* const to = getUnixName(NativeAt(target).c_str());
    ::_spawnl(_P_NOWAIT, "Z:\\bin\\ln", "ln", "-s", to, at, nullptr);
    for (int round = 0; round < 500 && !std::filesystem::exists(NativeAt(link)); ++round)
        ::Sleep(10); // a program of the system below cannot be waited for
}

namespace {

TEST_F(NativeItems, AreRecycled)
{
    WriteFile(L"f", "text");
    EXPECT_TRUE(Item(L"f").Recycle());
    EXPECT_EQ(List(), vnosal_test::Names());
    EXPECT_EQ(Item(L"f").Recycle().GetKind(), EError::NotFound);
}

// Signed by somebody whom the machine trusts, by a stranger, and not at all. A process reads once
// whom it trusts, so another one has it changed before.
TEST_F(NativeItems, HaveTheirSignaturesChecked)
{
    const auto check = [this](const char* built, bool isChanged = false) {
        std::ifstream file(built, std::ios::binary);
        std::string bytes(std::istreambuf_iterator<char>(file), {});
        if (isChanged)
            bytes.at(bytes.size() / 4) ^= 1;
        WriteFile(L"f.exe", bytes);
        return Item(L"f.exe").CheckSignature();
    };
    const char* const certificate = SIGNED_FOLDER "/signed.der";
    ASSERT_EQ(::_spawnl(_P_WAIT, PLAIN_PROGRAM, "zotrust", certificate, nullptr), 0);
    EXPECT_EQ(check(SIGNED_FOLDER "/signed.exe"), ESignature::Valid);
    EXPECT_EQ(check(SIGNED_FOLDER "/signed.exe", true), ESignature::Invalid);
    EXPECT_EQ(check(SIGNED_FOLDER "/stranger.exe"), ESignature::Invalid);
    EXPECT_EQ(check(PLAIN_PROGRAM), ESignature::None);
    WriteFile(L"text.txt", "text");
    EXPECT_EQ(Item(L"text.txt").CheckSignature(), ESignature::None);
    EXPECT_EQ(Item(L"none.exe").CheckSignature(), ESignature::CannotVerify);
    EXPECT_EQ(::_spawnl(_P_WAIT, PLAIN_PROGRAM, "zotrust", "--remove", certificate, nullptr), 0);
}

} // namespace
