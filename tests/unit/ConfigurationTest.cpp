#include "env/HostPaths.h"
#include "env/InstallConfig.h"
#include "env/ProcessCache.h"
#include "tests/simulated/Files.h"
#include "tests/simulated/Simulated.h"
#include "tests/simulated/SystemFacts.h"

#include <gtest/gtest.h>

namespace {

class ConfigurationTest : public testing::Test
{
protected:
    void SetUp() override
    {
        simulated::Reset();
        env::ResetProcessCache();
    }
};

TEST_F(ConfigurationTest, FindsTheHostOnceItIsThere)
{
    const std::wstring deep = L"C:\\" + std::wstring(300, L'x') + L"\\";
    const struct
    {
        std::wstring executable, folder, executableLater;
    } cases[] = {
        {deep + L"App.exe", deep, deep + L"App.exe"},
        {L"C:\\Program Files\\Suite\\App.exe", L"C:\\Program Files\\Suite\\",
         L"C:\\Program Files\\Suite\\App.exe"},
        {L"App.exe", L"\\", L"App.exe"},
        {L"", L"\\", L"D:\\Other.exe"},
    };
    for (const auto& c : cases)
    {
        env::ResetProcessCache();
        simulated::facts->executable = c.executable;
        EXPECT_EQ(env::GetApplicationFolder(), c.folder);
        EXPECT_EQ(env::GetApplicationFilePath(), c.executable);
        simulated::facts->executable = L"D:\\Other.exe";
        EXPECT_EQ(env::GetApplicationFolder(), c.folder);
        EXPECT_EQ(env::GetApplicationFilePath(), c.executableLater);
    }
    EXPECT_EQ(env::GetSuiteFolder(), L"C:\\ProgramData\\\\veltrano");
    simulated::facts->specialFolders[35] = L"";
    EXPECT_EQ(env::GetSuiteFolder(), L"C:\\ProgramData\\\\veltrano") << "asked once";
    env::ResetProcessCache();
    EXPECT_EQ(env::GetSuiteFolder(), L"\\\\?\\veltrano") << "no server's name";
}

TEST_F(ConfigurationTest, IsTheFileBesideTheHostOrTheNamedOne)
{
    for (const std::wstring named : {L"", L"C:\\Other.cfg"})
    {
        const std::wstring used = named.empty() ? L"C:\\Host\\\\install.cfg" : named;
        simulated::PutFile(used, "[UA]\r\nId=UA-1\r\nEnabled=1\r\n");
        EXPECT_EQ(env::GetInstallConfigString(L"UA", L"Id", L"none", named), L"UA-1");
        EXPECT_EQ(env::GetInstallConfigString(L"web", L"PIWIKURL", L"none", named), L"none");
        EXPECT_EQ(env::GetInstallConfigInt(L"UA", L"Enabled", -1, named), 1);
        EXPECT_EQ(env::GetInstallConfigInt(L"UA", L"Missing", -1, named), -1);
        EXPECT_TRUE(env::SetInstallConfigString(L"UA", L"Id", L"UA-2", named));
        simulated::SetReadOnly(used, true);
        EXPECT_FALSE(env::SetInstallConfigString(L"UA", L"Id", L"UA-3", named));
        EXPECT_EQ(simulated::ReadFileBytes(used), "[UA]\r\nId=UA-2\r\nEnabled=1\r\n");
        for (const auto& call : simulated::TakeProfileCalls())
            EXPECT_EQ(call.path, used);
    }
}

TEST_F(ConfigurationTest, DoublesItsBufferUntilTheValueFits)
{
    const struct
    {
        std::size_t length, found;
        std::vector<std::size_t> sizes;
    } cases[] = {
        {253, 253, {255}},
        {254, 254, {255, 510}},
        {3000, 3000, {255, 510, 1020, 2040, 4080}},
        {300'000, 261'119, {}}, // only in a damaged file
    };
    for (const auto& c : cases)
    {
        simulated::PutFile(L"C:\\Host\\install.cfg",
                           "[s]\r\nk=" + std::string(c.length, 'v') + "\r\n");
        EXPECT_EQ(env::GetInstallConfigString(L"s", L"k", L""), std::wstring(c.found, L'v'));
        std::vector<std::size_t> sizes;
        for (const auto& call : simulated::TakeProfileCalls())
            sizes.push_back(call.bufferSize);
        EXPECT_TRUE(c.sizes.empty() || sizes == c.sizes) << c.length;
    }
}

} // namespace
