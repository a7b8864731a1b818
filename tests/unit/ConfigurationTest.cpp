#include "env/HostPaths.h"
#include "env/InstallConfig.h"
#include "env/ProcessCache.h"
#include "env/ProfileText.h"
#include "tests/simulated/Files.h"
#include "tests/simulated/HostPaths.h"
#include "tests/simulated/ProfileFile.h"
#include "tests/simulated/Simulated.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

class ConfigurationTest : public testing::Test
{
protected:
    void SetUp() override
    {
        simulated::Reset();
        env::ResetProcessCache();
    }

    static void PutConfig(const std::string& text)
    {
        simulated::PutFile(L"C:\\Host\\install.cfg", text);
    }

    // The buffer sizes of the reads since the last call.
    static std::vector<std::size_t> TakeSizes()
    {
        std::vector<std::size_t> sizes;
        for (const auto& call : simulated::TakeProfileCalls())
            sizes.push_back(call.bufferSize);
        return sizes;
    }
};

TEST_F(ConfigurationTest, FormsTheHostsPaths)
{
    const struct
    {
        const wchar_t* executable;
        const wchar_t* folder;
    } cases[] = {
        {L"C:\\Program Files\\Suite\\App.exe", L"C:\\Program Files\\Suite\\"},
        {L"C:\\App.exe", L"C:\\"},
        {L"App.exe", L"\\"},
        {L"", L"\\"},
    };
    for (const auto& c : cases)
    {
        simulated::SetHostExecutablePath(c.executable);
        env::ResetProcessCache();
        EXPECT_EQ(env::GetApplicationFolder(), c.folder);
        EXPECT_EQ(env::GetApplicationFilePath(), c.executable);
    }
    simulated::SetSpecialFolder(26, L"C:\\Users\\u\\AppData");
    EXPECT_EQ(env::GetSpecialFolderPath(26), L"C:\\Users\\u\\AppData\\");
    EXPECT_EQ(env::GetSpecialFolderPath(5), L"\\");
    EXPECT_EQ(env::GetSuiteFolder(), L"C:\\ProgramData\\\\veltrano");
}

TEST_F(ConfigurationTest, FindsTheHostOncePerProcess)
{
    EXPECT_EQ(env::GetApplicationFilePath(), L"C:\\Host\\Host.exe");
    EXPECT_EQ(env::GetApplicationFolder(), L"C:\\Host\\");
    simulated::SetHostExecutablePath(L"D:\\Other\\Other.exe");
    EXPECT_EQ(env::GetApplicationFilePath(), L"C:\\Host\\Host.exe");
    EXPECT_EQ(env::GetApplicationFolder(), L"C:\\Host\\");
}

TEST_F(ConfigurationTest, AsksAgainForAPathThatWasNotThere)
{
    simulated::SetHostExecutablePath(L"");
    EXPECT_EQ(env::GetApplicationFilePath(), L"");
    simulated::SetHostExecutablePath(L"D:\\Other.exe");
    EXPECT_EQ(env::GetApplicationFilePath(), L"D:\\Other.exe");
}

TEST_F(ConfigurationTest, ReadsTheFileBesideTheHost)
{
    PutConfig("[UA]\r\nEnabled=1\r\nId=UA-1\r\n[install]\r\nPHASH=\r\ntracking=yes\r\n");
    EXPECT_EQ(env::GetInstallConfigString(L"UA", L"Id", L"none"), L"UA-1");
    EXPECT_EQ(env::GetInstallConfigString(L"ua", L"ID", L"none"), L"UA-1");
    EXPECT_EQ(env::GetInstallConfigString(L"install", L"PHASH", L"none"), L"");
    EXPECT_EQ(env::GetInstallConfigString(L"web", L"PIWIKURL", L"none"), L"none");
    EXPECT_EQ(env::GetInstallConfigInt(L"UA", L"Enabled", -1), 1);
    EXPECT_EQ(env::GetInstallConfigInt(L"UA", L"Missing", -1), -1);
    EXPECT_EQ(env::GetInstallConfigInt(L"install", L"tracking", 7), 0);
    for (const auto& call : simulated::TakeProfileCalls())
        EXPECT_EQ(call.path, L"C:\\Host\\\\install.cfg");
}

TEST_F(ConfigurationTest, GivesDefaultsWithoutAFile)
{
    EXPECT_EQ(env::GetInstallConfigInt(L"UA", L"Enabled", -1), -1);
    EXPECT_EQ(env::GetInstallConfigString(L"UA", L"Version", L"1"), L"1");
}

TEST_F(ConfigurationTest, UsesAnotherFileWhenOneIsNamed)
{
    simulated::PutFile(L"C:\\Other.cfg", "[s]\r\nk=12\r\n");
    EXPECT_EQ(env::GetInstallConfigString(L"s", L"k", L"", L"C:\\Other.cfg"), L"12");
    EXPECT_EQ(env::GetInstallConfigInt(L"s", L"k", -1, L"C:\\Other.cfg"), 12);
    EXPECT_TRUE(env::SetInstallConfigString(L"s", L"k", L"13", L"C:\\Other.cfg"));
    EXPECT_EQ(simulated::ReadFileBytes(L"C:\\Other.cfg"), "[s]\r\nk=13\r\n");
    EXPECT_FALSE(simulated::ReadFileBytes(L"C:\\Host\\install.cfg"));
}

TEST_F(ConfigurationTest, WritesAndReadsAgain)
{
    PutConfig("[UA]\r\nEnabled=1\r\n");
    EXPECT_TRUE(env::SetInstallConfigString(L"UA", L"Enabled", L"0"));
    EXPECT_EQ(env::GetInstallConfigInt(L"UA", L"Enabled", -1), 0);
    EXPECT_TRUE(env::SetInstallConfigString(L"install", L"tracking", L"1"));
    EXPECT_EQ(env::GetInstallConfigString(L"install", L"tracking", L""), L"1");

    simulated::SetReadOnly(L"C:\\Host\\install.cfg", true);
    EXPECT_FALSE(env::SetInstallConfigString(L"UA", L"Enabled", L"5"));
    EXPECT_EQ(env::GetInstallConfigInt(L"UA", L"Enabled", -1), 0);
}

TEST_F(ConfigurationTest, DoublesItsBufferUntilTheValueFits)
{
    const struct
    {
        std::size_t length;
        std::vector<std::size_t> sizes;
    } cases[] = {
        {253, {255}},      {254, {255, 510}},       {255, {255, 510}},
        {508, {255, 510}}, {509, {255, 510, 1020}}, {3000, {255, 510, 1020, 2040, 4080}},
    };
    for (const auto& c : cases)
    {
        PutConfig("[s]\r\nk=" + std::string(c.length, 'v') + "\r\n");
        simulated::TakeProfileCalls();
        EXPECT_EQ(env::GetInstallConfigString(L"s", L"k", L""), std::wstring(c.length, L'v'));
        EXPECT_EQ(TakeSizes(), c.sizes) << c.length;
    }
}

TEST_F(ConfigurationTest, CutsAValueThatOnlyADamagedFileHolds)
{
    PutConfig("[s]\r\nk=" + std::string(300'000, 'v') + "\r\n");
    EXPECT_EQ(env::GetInstallConfigString(L"s", L"k", L"").size(), 261'119u);
    EXPECT_EQ(TakeSizes().size(), 11u);
}

} // namespace
