#include "env/SystemDescription.h"
#include "env/FileSystem.h"
#include "env/LanguageTable.h"
#include "env/ModuleVersion.h"
#include "env/ProcessCache.h"
#include "net/Md5.h"
#include "tests/simulated/Files.h"
#include "tests/simulated/HostPaths.h"
#include "tests/simulated/Simulated.h"
#include "tests/simulated/SystemFacts.h"
#include "tests/simulated/VersionResource.h"

#include <gtest/gtest.h>

#include <cstdio>

namespace {

using Paths = std::vector<std::wstring>;

class SystemDescriptionTest : public testing::Test
{
protected:
    void SetUp() override
    {
        simulated::Reset();
        env::ResetProcessCache();
    }
};

TEST_F(SystemDescriptionTest, NamesTheWindowsVersion)
{
    simulated::SetVersionEx(platform::SystemVersion{10, 0});
    EXPECT_EQ(env::GetOsVersionString(), L"10.0");
    simulated::SetVersionEx(std::nullopt);
    simulated::SetPackedVersion(0x1DB10206);
    EXPECT_EQ(env::GetOsVersionString(), L"6.2");
}

TEST_F(SystemDescriptionTest, KnowsAnX64System)
{
    const struct
    {
        std::optional<std::uint16_t> architecture;
        bool expected;
        const wchar_t* description;
    } cases[] = {
        {9, true, L"Windows NT 6.1; WOW64"},
        {12, false, L"Windows NT 6.1"}, // ARM64
        {0, false, L"Windows NT 6.1"},
        {std::nullopt, false, L"Windows NT 6.1"},
    };
    std::size_t queries = 0;
    for (const auto& c : cases)
    {
        env::ResetProcessCache();
        simulated::SetNativeArchitecture(c.architecture);
        EXPECT_EQ(env::Is64BitWindows(), c.expected);
        EXPECT_EQ(env::DescribeSystem(), c.description);
        EXPECT_EQ(simulated::CountArchitectureQueries(), ++queries); // asked once per process
    }
}

TEST_F(SystemDescriptionTest, GivesTheCodeOfEachLanguage)
{
    const struct
    {
        std::uint16_t id;
        const wchar_t* code;
    } cases[] = {
        {0x0401, L"ar_SA"},  {0x0409, L"en_US"}, {0x0407, L"de_DE"},  {0x042E, L"hsb_DE"},
        {0x540A, L"es_US"},  {0x041B, L"sk_K"},  {0x043C, L"gd"},     {0x043D, L"yi"},
        {0x0809, L"en_UK"},  {0x0818, L"ro_MO"}, {0x0819, L"ru_MO"},  {0x0431, L"ts_TS"},
        {0x0453, L"kh_KH"},  {0x2409, L"en_CB"}, {0x081A, L"sr_SP"},  {0x0C1A, L"sr_SP"},
        {0x0C0A, L"es_ES"},  {0x340C, L"fr_FR"}, {0x0814, L"no_NO"},  {0x0C3B, L"se_FI"},
        {0x0455, L"[455]"},  {0x0000, L"[0]"},   {0xFFFF, L"[FFFF]"}, {0x0400, L"[400]"},
        {0x540B, L"[540B]"},
    };
    for (const auto& c : cases)
    {
        simulated::SetUserDefaultLanguageId(c.id);
        EXPECT_EQ(env::GetUserLanguageCode(), c.code);
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
}

TEST_F(SystemDescriptionTest, FindsFilesAndFolders)
{
    simulated::PutFile(L"C:\\Data\\file.txt", "");
    simulated::PutEnvironmentVariable(L"DATA", L"C:\\Data");
    EXPECT_TRUE(env::PathExists(L"C:\\Data"));
    EXPECT_TRUE(env::PathExists(L"%DATA%\\file.txt"));
    EXPECT_FALSE(env::PathExists(L"%OTHER%\\file.txt"));
    EXPECT_FALSE(env::PathExists(L"C:\\Data\\other.txt"));
    EXPECT_EQ(
        simulated::TakeStatusQueries(),
        (Paths{L"C:\\Data", L"C:\\Data\\file.txt", L"%OTHER%\\file.txt", L"C:\\Data\\other.txt"}));
    EXPECT_FALSE(env::PathExists(L""));
    EXPECT_EQ(simulated::TakeStatusQueries(), Paths{});

    simulated::SetExpandingFails(true);
    EXPECT_FALSE(env::PathExists(L"%DATA%"));
    EXPECT_EQ(simulated::TakeStatusQueries(), Paths{L"%DATA%"});
}

TEST_F(SystemDescriptionTest, PrefixesLongPaths)
{
    const std::wstring edge = L"C:\\" + std::wstring(257, L'x');
    ASSERT_EQ(edge.size(), 260u);
    env::PathExists(edge);
    env::PathExists(edge + L"x");
    env::PathExists(L"\\\\?\\" + edge + L"x");
    EXPECT_EQ(simulated::TakeStatusQueries(),
              (Paths{edge, L"\\\\?\\" + edge + L"x", L"\\\\?\\" + edge + L"x"}));
}

TEST_F(SystemDescriptionTest, LooksIntoTheNativeSystemFolder)
{
    simulated::PutFile(L"C:\\Windows\\SysNative\\only64.dll", "");
    EXPECT_TRUE(env::PathExists(L"C:\\Windows\\System32\\only64.dll"));
    EXPECT_FALSE(env::PathExists(L"C:\\system32\\xsystem32x\\System32"));
    EXPECT_EQ(
        simulated::TakeStatusQueries(),
        (Paths{L"C:\\Windows\\System32\\only64.dll", L"C:\\WINDOWS\\SYSNATIVE\\ONLY64.DLL",
               L"C:\\system32\\xsystem32x\\System32", L"C:\\SYSNATIVE\\XSYSNATIVEX\\SYSNATIVE"}));

    env::ResetProcessCache();
    simulated::SetNativeArchitecture(12);
    EXPECT_FALSE(env::PathExists(L"C:\\Windows\\System32\\only64.dll"));
}

TEST_F(SystemDescriptionTest, CreatesOnlyAMissingFolder)
{
    env::CreateMissingFolder(L"C:\\New");
    EXPECT_TRUE(simulated::FolderExists(L"C:\\New"));
    env::CreateMissingFolder(L"C:\\No\\Parent");
    EXPECT_FALSE(simulated::FolderExists(L"C:\\No"));
}

TEST_F(SystemDescriptionTest, ReadsProductNamesFromTheFirstTranslation)
{
    const wchar_t* const file = L"C:\\App.exe";
    simulated::SetVersionInfo(file, {{{0x0409, 0x04B0}, {0x0407, 0x04E4}},
                                     {{L"\\StringFileInfo\\040904b0\\ProductName", L"Suite"},
                                      {L"\\StringFileInfo\\040704e4\\ProductName", L"Paket"},
                                      {L"\\StringFileInfo\\040704e4\\ProductVersion", L"2"}}});
    EXPECT_EQ(env::GetFileProductName(file), L"Suite");
    EXPECT_EQ(env::GetFileProductVersion(file), L"");
    EXPECT_EQ(env::GetFileProductName(L"C:\\Other.exe"), L"");

    simulated::SetVersionInfo(file, {{}, {{L"\\StringFileInfo\\040904b0\\ProductName", L"Suite"}}});
    EXPECT_EQ(env::GetFileProductName(file), L"");
}

TEST_F(SystemDescriptionTest, ReadsTheHostsVersionOnceButItsNameEachTime)
{
    const auto install = [](const wchar_t* name, const wchar_t* version) {
        simulated::SetVersionInfo(L"C:\\Host\\Host.exe",
                                  {{{0x0009, 0x04B0}},
                                   {{L"\\StringFileInfo\\000904b0\\ProductName", name},
                                    {L"\\StringFileInfo\\000904b0\\ProductVersion", version}}});
    };
    EXPECT_EQ(env::GetApplicationProductVersion(), L"");
    install(L"Suite", L"1.2");
    EXPECT_EQ(env::GetApplicationProductVersion(), L"1.2");
    EXPECT_EQ(env::GetApplicationProductName(), L"Suite");
    install(L"Suite Pro", L"1.3");
    EXPECT_EQ(env::GetApplicationProductVersion(), L"1.2");
    EXPECT_EQ(env::GetApplicationProductName(), L"Suite Pro");
}

} // namespace
