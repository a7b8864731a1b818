#include "env/SystemDescription.h"
#include "env/FileSystem.h"
#include "env/LanguageTable.h"
#include "env/ModuleVersion.h"
#include "env/ProcessCache.h"
#include "net/Md5.h"
#include "tests/simulated/Files.h"
#include "tests/simulated/Simulated.h"
#include "tests/simulated/SystemFacts.h"

#include <gtest/gtest.h>

#include <cstdio>

namespace {

class SystemDescriptionTest : public testing::Test
{
protected:
    void SetUp() override
    {
        simulated::Reset();
        env::ResetProcessCache();
    }
};

TEST_F(SystemDescriptionTest, NamesVersionAndArchitecture)
{
    const struct
    {
        std::optional<std::uint16_t> architecture;
        std::optional<platform::SystemVersion> version;
        const wchar_t* description;
    } cases[] = {
        {9, platform::SystemVersion{10, 0}, L"Windows NT 10.0; WOW64"},
        {12, std::nullopt, L"Windows NT 6.2"}, // ARM64
        {std::nullopt, std::nullopt, L"Windows NT 6.2"},
    };
    simulated::facts->packedVersion = 0x1DB10206;
    std::size_t queries = 0;
    for (const auto& c : cases)
    {
        env::ResetProcessCache();
        simulated::facts->architecture = c.architecture;
        simulated::facts->version = c.version;
        EXPECT_EQ(env::DescribeSystem(), c.description);
        EXPECT_EQ(env::DescribeSystem(), c.description);
        EXPECT_EQ(simulated::facts->architectureQueries, ++queries); // once per process
    }
}

// All identifiers that have a code, in order and in one text: "0401 ar_SA; 0402 bg_BG; ...".
TEST_F(SystemDescriptionTest, KeepsTheVocabularyOfLanguagesWhole)
{
    int known = 0;
    std::string table;
    for (int id = 0; id <= 0xFFFF; ++id)
    {
        const VnOSAL::VnString code = env::GetLanguageCode(static_cast<std::uint16_t>(id));
        if (code.StartsWith(L"["))
            continue;
        char number[8];
        std::snprintf(number, sizeof(number), "%04X ", static_cast<unsigned>(id));
        table +=
            (known++ ? "; " : "") + std::string(number) + std::string(code.begin(), code.end());
    }
    EXPECT_EQ(known, 189);
    EXPECT_EQ(net::Md5Hex(table.c_str()), L"b8ad335a76cfc2ba20fa7872401f2385");

    for (const auto& [id, code] : {std::pair(0x042E, L"hsb_DE"), std::pair(0x0455, L"[455]"),
                                   std::pair(0, L"[0]"), std::pair(0xFFFF, L"[FFFF]")})
    {
        simulated::facts->languageId = static_cast<std::uint16_t>(id);
        EXPECT_EQ(env::GetUserLanguageCode(), code);
    }
}

TEST_F(SystemDescriptionTest, LooksForAPathWhereTheSystemMayKeepIt)
{
    simulated::PutFile(L"C:\\Data\\file.txt", "");
    simulated::PutFile(L"C:\\Windows\\SysNative\\only64.dll", "");
    for (const wchar_t* name : {L"DATA", L"LONGVARIABLE"})
        simulated::PutEnvironmentVariable(name, L"C:\\Data");
    const std::wstring name246(246, L'x');
    const std::wstring edge = L"C:\\" + std::wstring(257, L'x');
    const std::wstring longer = L"\\\\?\\" + edge + L"x";
    const struct
    {
        std::wstring path;
        bool exists;
        std::vector<std::wstring> asked;
    } cases[] = {
        {L"", false, {}},
        {L"C:\\Data", true, {L"C:\\Data"}},
        {L"%DATA%\\file.txt", true, {L"C:\\Data\\file.txt"}},
        {L"%LONGVARIABLE%\\" + name246, false, {L"\\\\?\\C:\\Data\\" + name246}},
        {edge, false, {edge}},
        {edge + L"x", false, {longer}},
        {longer, false, {longer}},
        {L"C:\\Windows\\System32\\only64.dll",
         true,
         {L"C:\\Windows\\System32\\only64.dll", L"C:\\WINDOWS\\SYSNATIVE\\ONLY64.DLL"}},
        {L"C:\\system32\\xsystem32x\\System32",
         false,
         {L"C:\\system32\\xsystem32x\\System32", L"C:\\SYSNATIVE\\XSYSNATIVEX\\SYSNATIVE"}},
    };
    for (const auto& c : cases)
    {
        EXPECT_EQ(env::PathExists(c.path), c.exists);
        EXPECT_EQ(std::exchange(simulated::disk->statusQueries, {}), c.asked);
    }
    simulated::disk->expandingFails = true;
    EXPECT_FALSE(env::PathExists(L"%DATA%"));
    env::ResetProcessCache();
    simulated::facts->architecture = 12;
    EXPECT_FALSE(env::PathExists(L"C:\\Windows\\System32\\only64.dll"));
}

TEST_F(SystemDescriptionTest, ReadsProductNamesFromTheFirstTranslation)
{
    const auto install = [](const wchar_t* name, const wchar_t* version) {
        simulated::SetVersionInfo(L"C:\\Host\\Host.exe",
                                  {{{0x0009, 0x04B0}, {0x0407, 0x04E4}},
                                   {{L"\\StringFileInfo\\000904b0\\ProductName", name},
                                    {L"\\StringFileInfo\\000904b0\\ProductVersion", version},
                                    {L"\\StringFileInfo\\040704e4\\ProductName", L"Paket"}}});
    };
    EXPECT_EQ(env::GetApplicationProductVersion(), L"");
    install(L"Suite", L"1.2");
    EXPECT_EQ(env::GetApplicationProductVersion(), L"1.2");
    EXPECT_EQ(env::GetApplicationProductName(), L"Suite");
    install(L"Suite Pro", L"1.3");
    EXPECT_EQ(env::GetApplicationProductVersion(), L"1.2"); // read once per process
    EXPECT_EQ(env::GetApplicationProductName(), L"Suite Pro");

    simulated::SetVersionInfo(L"C:\\App.exe",
                              {{}, {{L"\\StringFileInfo\\040904b0\\ProductName", L"Suite"}}});
    EXPECT_EQ(env::GetFileProductName(L"C:\\App.exe"), L"");
}

} // namespace
