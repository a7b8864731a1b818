#include "env/ComputerId.h"
#include "env/FileSystem.h"
#include "env/HostPaths.h"
#include "env/InstallConfig.h"
#include "env/ModuleVersion.h"
#include "env/ProcessCache.h"
#include "env/ProductUserId.h"
#include "env/RegistryValues.h"
#include "env/SystemDescription.h"
#include "env/Text.h"
#include "tests/simulated/Files.h"
#include "tests/simulated/Registry.h"
#include "tests/simulated/Simulated.h"
#include "tests/simulated/SystemFacts.h"
#include "tests/simulated/VirtualTime.h"
#include "text/Format.h"

#include <gtest/gtest.h>

#include <set>
#include <thread>

namespace {

using platform::CRegistryKey;
using platform::ERegistryRoot;
using platform::ERegistryView;
using simulated::ERegistryDenial;
using Bytes = std::vector<std::uint8_t>;

const wchar_t* const computerKey = L"CLSID\\{7C2A9E14-3F60-4b8d-92E5-A1D4706B3C58}";
const wchar_t* const userKey = L"SOFTWARE\\Classes\\CLSID\\{7C2A9E14-3F60-4b8d-92E5-A1D4706B3C58}";
const wchar_t* const idFile = L"C:\\ProgramData\\veltrano\\ComputerID.dat";

// The digest of "SOMEWHERE6C65746E49656E691500000000_123456", which a machine without a suitable
// adapter makes at that time.
const wchar_t* const madeId = L"45bf7bd3855837f97110ae0f73edf5d2";

class EnvironmentTest : public testing::Test
{
protected:
    EnvironmentTest() { StartAnew(); }

    static void StartAnew()
    {
        simulated::Reset();
        env::ResetProcessCache();
        simulated::PutFolder(L"C:\\ProgramData");
        simulated::SetUnixTime(1'500'000'000);
        simulated::SetTickMilliseconds(123'456);
    }

    static CRegistryKey PutValue(std::uint32_t type, const Bytes& bytes)
    {
        simulated::PutRegistryValue(ERegistryRoot::ClassesRoot, keyPath, ERegistryView::Default,
                                    L"v", {type, bytes});
        return CRegistryKey::Open(ERegistryRoot::ClassesRoot, keyPath,
                                  platform::ERegistryAccess::Read, ERegistryView::Default);
    }

    static void PutText(ERegistryRoot root, const wchar_t* key, const wchar_t* text)
    {
        simulated::PutRegistryText(root, key, ERegistryView::Default, L"ID", text);
    }

    static std::optional<std::wstring> FindSaved(ERegistryRoot root)
    {
        return simulated::FindRegistryText(
            root, root == ERegistryRoot::ClassesRoot ? computerKey : userKey, ERegistryView::View32,
            L"ID");
    }

    // Of the host: two translations, of which the first counts.
    static void SetVersion(const wchar_t* name, const wchar_t* version = L"1")
    {
        simulated::SetVersionInfo(L"C:\\Host\\Host.exe",
                                  {{{0x0009, 0x04B0}, {0x0407, 0x04E4}},
                                   {{L"\\StringFileInfo\\000904b0\\ProductName", name},
                                    {L"\\StringFileInfo\\000904b0\\ProductVersion", version},
                                    {L"\\StringFileInfo\\040704e4\\ProductName", L"Paket"}}});
    }

    static constexpr const wchar_t* keyPath = L"CLSID\\{key}";
};

TEST_F(EnvironmentTest, FindsTheHostOnceItIsThere)
{
    const std::wstring deep = L"C:\\" + std::wstring(300, L'x') + L"\\";
    const std::tuple<std::wstring, std::wstring, std::wstring> cases[] = {
        {deep + L"App.exe", deep, deep + L"App.exe"},
        {L"App.exe", L"\\", L"App.exe"},
        {L"", L"\\", L"D:\\Other.exe"}};
    for (const auto& [executable, folder, executableLater] : cases)
    {
        env::ResetProcessCache();
        simulated::facts->executable = executable;
        EXPECT_EQ(env::GetApplicationFolder(), folder);
        EXPECT_EQ(env::GetApplicationFilePath(), executable);
        simulated::facts->executable = L"D:\\Other.exe";
        EXPECT_EQ(env::GetApplicationFolder(), folder);
        EXPECT_EQ(env::GetApplicationFilePath(), executableLater);
    }
    EXPECT_EQ(env::GetSuiteFolder(), L"C:\\ProgramData\\\\veltrano");
    simulated::facts->specialFolders[35] = L"";
    EXPECT_EQ(env::GetSuiteFolder(), L"C:\\ProgramData\\\\veltrano") << "asked once";
    env::ResetProcessCache();
    EXPECT_EQ(env::GetSuiteFolder(), L"\\\\?\\veltrano") << "no server's name";
}

TEST_F(EnvironmentTest, TheConfigurationIsTheFileBesideTheHostOrTheNamedOne)
{
    for (const std::wstring named : {L"", L"C:\\Other.cfg"})
    {
        const std::wstring used = named.empty() ? L"C:\\Host\\install.cfg" : named;
        simulated::PutFile(used, "[UA]\r\nId=UA-1\r\nEnabled=1\r\n");
        EXPECT_EQ(env::GetInstallConfigString(L"UA", L"Id", L"", named), L"UA-1");
        EXPECT_EQ(env::GetInstallConfigString(L"UA", L"Name", L"none", named), L"none");
        EXPECT_EQ(env::GetInstallConfigInt(L"UA", L"Enabled", -1, named), 1);
        EXPECT_EQ(env::GetInstallConfigInt(L"UA", L"Name", -1, named), -1);
        EXPECT_TRUE(env::SetInstallConfigString(L"UA", L"Id", L"UA-2", named));
        EXPECT_EQ(simulated::ReadFileBytes(used), "[UA]\r\nId=UA-2\r\nEnabled=1\r\n");
    }
    for (const std::size_t length : {255u, 3000u, 300'000u})
    {
        const std::wstring path = L"C:\\Long.cfg";
        simulated::PutFile(path, "[s]\r\nk=" + std::string(length, 'v') + "\r\n");
        EXPECT_EQ(env::GetInstallConfigString(L"s", L"k", L"", path).size(),
                  std::min<std::size_t>(length, 261'119));
    }
}

TEST_F(EnvironmentTest, WritesTerminatedTextIntoTheAskedViewOfTheRegistry)
{
    const auto write = [](const wchar_t* text, bool use64BitView) {
        return env::RegWriteString(ERegistryRoot::ClassesRoot, keyPath, L"v", text, use64BitView);
    };
    const auto find = [](ERegistryView view) {
        return simulated::FindRegistryText(ERegistryRoot::ClassesRoot, keyPath, view, L"v");
    };
    EXPECT_EQ(write(L"a\x20AC", false), 0);
    EXPECT_EQ(find(ERegistryView::View32), L"a\x20AC");
    EXPECT_EQ(find(ERegistryView::View64), std::nullopt);
    EXPECT_EQ(write(L"", false), 1);
    EXPECT_EQ(find(ERegistryView::View32), L"");
    EXPECT_EQ(write(L"b", true), 0);
    EXPECT_EQ(find(ERegistryView::View64), L"b");
}

TEST_F(EnvironmentTest, ReadsEveryKindOfRegistryValueAsTextAndAsNumber)
{
    simulated::PutEnvironmentVariable(L"NAME", L"value");
    const Bytes variable = simulated::TerminatedText(L"<%name%>");
    const std::tuple<const char*, std::uint32_t, Bytes, const wchar_t*, std::uint32_t> cases[] = {
        {"terminated", 1, {'a', 0, 0xAC, 0x20, 0, 0}, L"a\x20AC", 0},
        {"not terminated", 1, {'1', 0, '2', 0}, L"12", 12},
        {"zero inside", 1, {'1', 0, 0, 0, '2', 0}, L"1", 1},
        {"text with a variable", 1, variable, L"<%name%>", 0},
        {"signed text", 1, {'-', 0, '1', 0}, L"-1", 0xFFFFFFFF},
        {"expandable", 2, variable, L"<value>", 0},
        {"number", 4, {0x78, 0x56, 0x34, 0xF2}, L"4063516280", 0xF2345678},
        {"short number", 4, {1, 2, 3}, L"0", 0},
        {"binary", 3, {1, 0, 0, 0}, L"", 0},
    };
    for (const auto& [what, type, bytes, text, number] : cases)
    {
        EXPECT_EQ(env::RegReadString(PutValue(type, bytes), L"v"), text) << what;
        EXPECT_EQ(env::RegReadDword(PutValue(type, bytes), L"v"), number) << what;
    }
    EXPECT_EQ(env::RegReadString(PutValue(1, variable), L"other"), L"");
    EXPECT_EQ(env::RegReadDword(CRegistryKey(), L"v"), 0u);
    simulated::PutEnvironmentVariable(L"NAME", std::wstring(1 << 20, L'x')); // too long
    EXPECT_EQ(env::RegReadString(PutValue(2, variable), L"v"), L"<%name%>");

    for (const std::size_t length : {16'382u, 16'383u, 500'000u, 2'000'000u})
    {
        const auto bytes = simulated::TerminatedText(std::wstring(length, L'x'));
        EXPECT_EQ(env::RegReadString(PutValue(1, bytes), L"v").size(),
                  length < 2'000'000 ? length : 0);
    }
}

TEST_F(EnvironmentTest, NamesVersionAndArchitectureOfTheSystemOncePerProcess)
{
    using Version = platform::SystemVersion;
    const std::tuple<std::optional<std::uint16_t>, std::optional<Version>, const wchar_t*> cases[] =
        {{9, Version{10, 0}, L"Windows NT 10.0; WOW64"},
         {12, std::nullopt, L"Windows NT 6.2"}, // ARM64
         {std::nullopt, std::nullopt, L"Windows NT 6.2"}};
    simulated::facts->packedVersion = 0x1DB10206;
    for (const auto& [architecture, version, description] : cases)
    {
        env::ResetProcessCache();
        simulated::facts->architecture = architecture;
        simulated::facts->version = version;
        EXPECT_EQ(env::DescribeSystem(), description);
        simulated::facts->architecture = architecture == 9 ? 12 : 9;
        EXPECT_EQ(env::DescribeSystem(), description);
    }
}

// All identifiers that have a code, in order and in one text: "0401 ar_SA; 0402 bg_BG; ...".
TEST_F(EnvironmentTest, KeepsTheVocabularyOfLanguagesWhole)
{
    std::wstring table;
    for (int id = 0; id <= 0xFFFF; ++id)
    {
        simulated::facts->languageId = static_cast<std::uint16_t>(id);
        const std::wstring code = env::GetUserLanguageCode();
        if (!code.starts_with(L"["))
            table += text::FormatText(L"%s%04X %s", table.empty() ? L"" : L"; ", id, code);
    }
    EXPECT_EQ(env::Md5OfText(table), L"b8ad335a76cfc2ba20fa7872401f2385");
}

TEST_F(EnvironmentTest, LooksForAPathWhereTheSystemMayKeepIt)
{
    simulated::PutFile(L"C:\\Data\\file.txt", "");
    simulated::PutFile(L"C:\\Windows\\SysNative\\only64.dll", "");
    simulated::PutEnvironmentVariable(L"LONGVARIABLE", L"C:\\Data");
    const std::wstring name246(246, L'x');
    const std::wstring edge = L"C:\\" + std::wstring(257, L'x');
    const std::wstring longer = L"\\\\?\\" + edge + L"x";
    const std::tuple<std::wstring, bool, std::vector<std::wstring>> cases[] = {
        {L"", false, {}},
        {L"%LONGVARIABLE%\\file.txt", true, {L"C:\\Data\\file.txt"}},
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
    for (const auto& [path, exists, asked] : cases)
    {
        EXPECT_EQ(env::PathExists(path), exists);
        EXPECT_EQ(std::exchange(simulated::disk->statusQueries, {}), asked);
    }
    env::ResetProcessCache();
    simulated::facts->architecture = 12;
    EXPECT_FALSE(env::PathExists(L"C:\\Windows\\System32\\only64.dll"));
}

TEST_F(EnvironmentTest, ReadsTheProductFromTheFirstTranslationAndKeepsTheIdMadeOfIt)
{
    PutText(ERegistryRoot::ClassesRoot, computerKey, L"0123456789abcdef0123456789abcdef");
    EXPECT_EQ(env::GetApplicationProductVersion(), L"");
    SetVersion(L"Suite", L"1.2");
    EXPECT_EQ(env::GetApplicationProductVersion(), L"1.2");
    EXPECT_EQ(env::GetApplicationProductName(), L"Suite");
    EXPECT_EQ(env::GetProductUserId(L""), L"cc2e63cfdf452da1d9044442a6d3fb65");
    SetVersion(L"Optimizer Pro", L"1.3");
    EXPECT_EQ(env::GetApplicationProductVersion(), L"1.2") << "read once per process";
    EXPECT_EQ(env::GetApplicationProductName(), L"Optimizer Pro");
    EXPECT_EQ(env::GetProductUserId(L""), L"cc2e63cfdf452da1d9044442a6d3fb65");
    EXPECT_EQ(env::GetProductUserId(L"Optimizer Pro"), L"6ff80aa350188c20fcb26d7b973c065e");
    simulated::SetVersionInfo(L"C:\\App.exe",
                              {{}, {{L"\\StringFileInfo\\040904b0\\ProductName", L"Suite"}}});
    EXPECT_EQ(env::GetFileProductName(L"C:\\App.exe"), L"");
}

TEST_F(EnvironmentTest, TakesTheComputerIdFromTheFirstStoreThatHasItAndRepairsThePrimaryOne)
{
    PutText(ERegistryRoot::CurrentUser, userKey, L"from the user");
    EXPECT_EQ(env::GetComputerId(), L"from the user");
    EXPECT_EQ(FindSaved(ERegistryRoot::ClassesRoot), L"from the user");
    EXPECT_FALSE(simulated::ReadFileBytes(idFile).has_value());

    simulated::PutFile(idFile, "[ID]\r\nCID=" + std::string(300, 'f') + "\r\n");
    EXPECT_EQ(env::GetComputerId(), L"from the user") << "once per process";
    env::ResetProcessCache();
    EXPECT_EQ(env::GetComputerId(), std::wstring(300, L'f'));
    EXPECT_EQ(FindSaved(ERegistryRoot::ClassesRoot), std::wstring(300, L'f'));
    EXPECT_EQ(FindSaved(ERegistryRoot::CurrentUser), std::nullopt);

    env::ResetProcessCache();
    PutText(ERegistryRoot::ClassesRoot, computerKey, L"from the registry");
    EXPECT_EQ(env::GetComputerId(), L"from the registry");
}

TEST_F(EnvironmentTest, SavesANewIdInTheFirstStoreThatAcceptsIt)
{
    const std::string fileBytes = "[ID]\r\nCID=45bf7bd3855837f97110ae0f73edf5d2\r\n";
    const std::tuple<ERegistryDenial, bool, std::optional<std::wstring>, std::optional<std::string>>
        cases[] = {{ERegistryDenial::None, false, madeId, {}},
                   {ERegistryDenial::Creating, false, {}, fileBytes},
                   {ERegistryDenial::Opening, true, {}, {}}};
    for (const auto& [denial, fileLocked, inPrimary, inFile] : cases)
    {
        StartAnew();
        for (const auto root : {ERegistryRoot::ClassesRoot, ERegistryRoot::CurrentUser})
            simulated::SetRegistryDenial(root, denial);
        simulated::SetReadOnly(L"C:\\ProgramData", fileLocked);
        EXPECT_EQ(env::GetComputerId(), madeId);
        EXPECT_EQ(FindSaved(ERegistryRoot::ClassesRoot), inPrimary);
        EXPECT_EQ(FindSaved(ERegistryRoot::CurrentUser), std::nullopt);
        EXPECT_EQ(simulated::ReadFileBytes(idFile), inFile);

        // The next process looks in its own view of the registry, not in the one written to.
        env::ResetProcessCache();
        simulated::SetUnixTime(1'500'000'001);
        EXPECT_EQ(env::GetComputerId() == madeId, inFile.has_value());
    }
    simulated::SetRegistryDenial(ERegistryRoot::CurrentUser, ERegistryDenial::None);
    env::ResetProcessCache();
    const std::wstring id = env::GetComputerId();
    EXPECT_EQ(FindSaved(ERegistryRoot::CurrentUser), id) << "the last resort";
}

TEST_F(EnvironmentTest, ChoosesTheFirstIdentifyingAdapter)
{
    const platform::NetworkAdapter good = {6, "10.0.0.1", {0x02, 0x1a, 0xff, 0, 0, 7, 9, 9}};
    const platform::NetworkAdapter wireless = {71, "10.0.0.1", {2, 2, 2, 2, 2, 200}};
    const platform::NetworkAdapter isolated = {6, "", {2, 2, 2, 2, 2, 200}};
    const platform::NetworkAdapter sum32 = {6, "10.0.0.1", {8, 8, 8, 8, 0, 0, 200, 200}};
    const platform::NetworkAdapter sum33 = {6, "10.0.0.1", {8, 8, 8, 8, 0, 1}};
    const std::pair<std::vector<platform::NetworkAdapter>, std::wstring> cases[] = {
        {{wireless, isolated, sum32}, L"SOMEWHERE"},
        {{wireless, isolated, sum32, sum33, good}, L"08:08:08:08:00:01"},
        {{good, sum33}, L"02:1A:FF:00:00:07"}};
    for (const auto& [adapters, address] : cases)
        EXPECT_EQ(env::BuildComputerIdSeed(adapters, {0x6C65746E, 0xAB}, -5, 0xFFFFFFFF),
                  address + L"6C65746E000000AB-5_4294967295");
}

TEST_F(EnvironmentTest, MakesAProductUserIdWhenTheThreadThatDoesSoEndedWithTheProcess)
{
    PutText(ERegistryRoot::ClassesRoot, computerKey, L"0123456789abcdef0123456789abcdef");
    env::CProcessCache::Get().productUserIdBusy = true;
    simulated::EndProcess();
    EXPECT_EQ(env::GetProductUserId(L""), L"f36a473535edbe05eb84d0266b481c7c") << "of Host.exe";
}

TEST_F(EnvironmentTest, GivesAllThreadsTheSameIdentities)
{
    std::wstring found[4];
    std::vector<std::thread> threads;
    for (std::wstring& text : found)
        threads.emplace_back([&text] { text = env::GetComputerId() + env::GetProductUserId(L""); });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(std::set<std::wstring>(std::begin(found), std::end(found)).size(), 1u);
    EXPECT_EQ(found[0].size(), 64u);
}

} // namespace
