#include "env/ComputerId.h"
#include "env/ProcessCache.h"
#include "env/ProductUserId.h"
#include "env/RegistryValues.h"
#include "platform/Thread.h"
#include "tests/simulated/Files.h"
#include "tests/simulated/Registry.h"
#include "tests/simulated/Simulated.h"
#include "tests/simulated/SystemFacts.h"
#include "tests/simulated/VirtualTime.h"

#include <gtest/gtest.h>

#include <set>
#include <thread>

namespace {

using namespace std::chrono_literals;
using platform::ERegistryRoot;
using platform::ERegistryView;
using simulated::ERegistryDenial;
using Adapters = std::vector<platform::NetworkAdapter>;

const wchar_t* const computerKey = L"CLSID\\{7C2A9E14-3F60-4b8d-92E5-A1D4706B3C58}";
const wchar_t* const userKey = L"SOFTWARE\\Classes\\CLSID\\{7C2A9E14-3F60-4b8d-92E5-A1D4706B3C58}";
const wchar_t* const idFile = L"C:\\ProgramData\\veltrano\\ComputerID.dat";

// The digest of "SOMEWHERE6C65746E49656E691500000000_123456", which a machine without a suitable
// adapter makes at that time.
const wchar_t* const madeId = L"45bf7bd3855837f97110ae0f73edf5d2";

class IdentityTest : public testing::Test
{
protected:
    void SetUp() override
    {
        simulated::Reset();
        simulated::ResetTime();
        env::ResetProcessCache();
        simulated::PutFolder(L"C:\\ProgramData");
        simulated::SetUnixTime(1'500'000'000);
        simulated::SetTickMilliseconds(123'456);
    }
    static void PutComputerId()
    {
        simulated::PutRegistryText(ERegistryRoot::ClassesRoot, computerKey, ERegistryView::Default,
                                   L"ID", L"0123456789abcdef0123456789abcdef");
    }

    using Text = std::optional<std::wstring>;
    static Text FindSaved(ERegistryRoot root)
    {
        return simulated::FindRegistryText(
            root, root == ERegistryRoot::ClassesRoot ? computerKey : userKey, ERegistryView::View32,
            L"ID");
    }
    static void SetHostName(const wchar_t* name)
    {
        simulated::SetVersionInfo(
            L"C:\\Host\\Host.exe",
            {{{0x0409, 0x04B0}}, {{L"\\StringFileInfo\\040904b0\\ProductName", name}}});
    }
};

TEST_F(IdentityTest, TakesTheComputerIdFromTheFirstStoreThatHasItAndRepairsThePrimaryOne)
{
    const auto put = [](ERegistryRoot root, const wchar_t* key, const wchar_t* id) {
        simulated::PutRegistryText(root, key, ERegistryView::Default, L"ID", id);
    };
    put(ERegistryRoot::CurrentUser, userKey, L"from the user");
    EXPECT_EQ(env::GetComputerId(), L"from the user");
    EXPECT_EQ(FindSaved(ERegistryRoot::ClassesRoot), L"from the user");
    EXPECT_FALSE(simulated::ReadFileBytes(idFile).has_value());

    simulated::PutFile(idFile, "[ID]\r\nCID=" + std::string(300, 'f') + "\r\n");
    EXPECT_EQ(env::GetComputerId(), L"from the user"); // once per process
    for (const auto denial : {ERegistryDenial::None, ERegistryDenial::Opening})
    {
        env::ResetProcessCache();
        simulated::SetRegistryDenial(ERegistryRoot::ClassesRoot, denial);
        EXPECT_EQ(env::GetComputerId(), std::wstring(300, L'f'));
        EXPECT_EQ(FindSaved(ERegistryRoot::ClassesRoot), std::wstring(300, L'f'));
        EXPECT_NE(FindSaved(ERegistryRoot::CurrentUser), std::wstring(300, L'f'));
    }
    for (const auto& call : simulated::TakeProfileCalls())
        EXPECT_EQ(call.path, L"C:\\ProgramData\\\\veltrano\\ComputerID.dat");

    env::ResetProcessCache();
    put(ERegistryRoot::ClassesRoot, computerKey, L"from the registry");
    EXPECT_EQ(env::GetComputerId(), L"from the registry");
}

TEST_F(IdentityTest, SavesANewIdInTheFirstStoreThatAcceptsIt)
{
    const std::string fileBytes = "[ID]\r\nCID=45bf7bd3855837f97110ae0f73edf5d2\r\n";
    const struct
    {
        const char* what;
        ERegistryDenial denial; // of both roots
        bool fileLocked;
        Text inPrimary, inUser;
        std::optional<std::string> inFile;
    } cases[] = {
        {"all accept", ERegistryDenial::None, false, madeId, {}, {}},
        {"no registry", ERegistryDenial::Creating, false, {}, {}, fileBytes},
        {"none accepts", ERegistryDenial::Opening, true, {}, {}, {}},
    };
    for (const auto& c : cases)
    {
        SetUp();
        for (const auto root : {ERegistryRoot::ClassesRoot, ERegistryRoot::CurrentUser})
            simulated::SetRegistryDenial(root, c.denial);
        simulated::SetReadOnly(L"C:\\ProgramData", c.fileLocked);
        EXPECT_EQ(env::GetComputerId(), madeId) << c.what;
        EXPECT_EQ(env::GetComputerId(), madeId) << c.what;
        EXPECT_EQ(FindSaved(ERegistryRoot::ClassesRoot), c.inPrimary) << c.what;
        EXPECT_EQ(FindSaved(ERegistryRoot::CurrentUser), c.inUser) << c.what;
        EXPECT_EQ(simulated::ReadFileBytes(idFile), c.inFile) << c.what;

        // The next process looks in its own view of the registry, not in the one written to.
        env::ResetProcessCache();
        simulated::SetUnixTime(1'500'000'001);
        EXPECT_EQ(env::GetComputerId() == madeId, c.inFile.has_value()) << c.what;
    }
    simulated::SetRegistryDenial(ERegistryRoot::CurrentUser, ERegistryDenial::None);
    env::ResetProcessCache();
    const std::wstring id = env::GetComputerId();
    EXPECT_EQ(FindSaved(ERegistryRoot::CurrentUser), id); // the last resort
}

TEST_F(IdentityTest, ChoosesTheFirstIdentifyingAdapter)
{
    const platform::NetworkAdapter good = {6, "10.0.0.1", {0x02, 0x1a, 0xff, 0, 0, 7, 9, 9}};
    const platform::NetworkAdapter wireless = {71, "10.0.0.1", {2, 2, 2, 2, 2, 200}};
    const platform::NetworkAdapter isolated = {6, "", {2, 2, 2, 2, 2, 200}};
    const platform::NetworkAdapter sum32 = {6, "10.0.0.1", {8, 8, 8, 8, 0, 0, 200, 200}};
    const platform::NetworkAdapter sum33 = {6, "10.0.0.1", {8, 8, 8, 8, 0, 1}};
    const struct
    {
        const char* what;
        Adapters adapters;
        const wchar_t* expected;
    } cases[] = {
        {"only unsuitable ones", {wireless, isolated, sum32}, L"SOMEWHERE"},
        {"first suitable one", {wireless, isolated, sum32, sum33, good}, L"08:08:08:08:00:01"},
        {"in the system's order", {good, sum33}, L"02:1A:FF:00:00:07"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(env::BuildComputerIdSeed(c.adapters, {0x6C65746E, 0xAB}, -5, 0xFFFFFFFF),
                  std::wstring(c.expected) + L"6C65746E000000AB-5_4294967295")
            << c.what;
}

TEST_F(IdentityTest, DerivesAProductUserIdAndKeepsTheHosts)
{
    PutComputerId();
    EXPECT_EQ(env::GetProductUserId(L"Optimizer Pro"), L"6ff80aa350188c20fcb26d7b973c065e");
    SetHostName(L"Suite");
    EXPECT_EQ(env::GetProductUserId(L""), L"cc2e63cfdf452da1d9044442a6d3fb65");
    SetHostName(L"Optimizer Pro");
    EXPECT_EQ(env::GetProductUserId(L""), L"cc2e63cfdf452da1d9044442a6d3fb65");
    EXPECT_EQ(simulated::facts->versionReads, 1u);
}

TEST_F(IdentityTest, WaitsWhileAnotherThreadComputesAProductUserId)
{
    PutComputerId();
    std::atomic<bool>& busy = env::CProcessCache::Get().productUserIdBusy;
    busy = true;
    platform::CThread thread;
    ASSERT_TRUE(thread.CreateSuspended(
        [](void*) -> std::uint32_t {
            env::GetProductUserId(L"");
            return 0;
        },
        nullptr));
    thread.Resume();
    simulated::AdvanceTime(25ms);
    EXPECT_TRUE(thread.IsActive());
    busy = false;
    thread.Join();
    thread.Close();
    EXPECT_EQ(simulated::GetElapsedMilliseconds(), 30);
    EXPECT_FALSE(busy);
    EXPECT_EQ(env::GetProductUserId(L""), L"f36a473535edbe05eb84d0266b481c7c");
}

TEST_F(IdentityTest, DoesNotWaitForAThreadThatEndedWithTheProcess)
{
    PutComputerId();
    env::CProcessCache::Get().productUserIdBusy = true;
    simulated::EndProcess();
    EXPECT_EQ(env::GetProductUserId(L"Suite"), L"cc2e63cfdf452da1d9044442a6d3fb65");
    EXPECT_EQ(simulated::GetElapsedMilliseconds(), 0);
}

TEST_F(IdentityTest, GivesAllThreadsTheSameIdentities)
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
