#include "app/ModuleTrackers.h"
#include "app/ZoTrackerApp.h"
#include "env/ProcessCache.h"
#include "tests/simulated/Files.h"
#include "tests/simulated/Simulated.h"
#include "zotracker/Exports.h"

#include <gtest/gtest.h>

namespace {

// The application object's life is the module's.
class MainTrackerTest : public testing::Test
{
protected:
    MainTrackerTest()
    {
        simulated::Reset();
        env::ResetProcessCache();
        PutConfig("[UA]\r\nEnabled=1\r\nId=U\r\n");
    }

    static void PutConfig(const std::string& text)
    {
        simulated::PutFile(L"C:\\Host\\install.cfg", text);
    }
};

TEST_F(MainTrackerTest, ThePresenceOfTheKeyChoosesTheMeasurementProtocol)
{
    const struct
    {
        const char* config;
        bool chosen;
    } cases[] = {
        {"[UA]\r\nEnabled=1\r\nId=U\r\n", true}, {"[UA]\r\nEnabled=0\r\n", true},
        {"[UA]\r\nEnabled=\r\n", false}, // no value, no key
        {"[UA]\r\nEnabled=-1\r\n", false},       {"[UA]\r\nId=U\r\n", false},
    };
    for (const auto& c : cases)
    {
        PutConfig(c.config);
        const app::CZoTrackerApp application;
        EXPECT_EQ(app::uaTracker.Get() != nullptr, c.chosen) << c.config;
        EXPECT_NE(app::classicTracker.Get() != nullptr, c.chosen) << c.config;
        EXPECT_NE(GetTrackerInstance(), nullptr) << c.config;
        EXPECT_NE(GetKPITrackerInstance(), nullptr) << c.config;
    }
    EXPECT_EQ(GetTrackerInstance(), nullptr) << "an unload ends what is still held";
    EXPECT_EQ(GetKPITrackerInstance(), nullptr);
}

TEST_F(MainTrackerTest, TheLastReferenceEndsItForGood)
{
    for (const char* config : {"", "[UA]\r\nEnabled=1\r\nId=U\r\n"})
    {
        PutConfig(config);
        const app::CZoTrackerApp application;
        ITracker* const tracker = GetTrackerInstance();
        EXPECT_EQ(GetTrackerInstance(), tracker);
        DestroyTrackerInstance();
        EXPECT_EQ(tracker->GetInterfaceVersion(), 8450u) << "one reference is left";
        DestroyTrackerInstance();
        EXPECT_EQ(GetTrackerInstance(), nullptr);
        DestroyTrackerInstance();
        EXPECT_EQ(GetTrackerInstance(), nullptr);
        EXPECT_NE(GetKPITrackerInstance(), nullptr) << "the other one has its own life";
    }
}

TEST_F(MainTrackerTest, AReleaseWithoutAReferenceEndsItToo)
{
    const app::CZoTrackerApp application;
    DestroyTrackerInstance();
    EXPECT_EQ(GetTrackerInstance(), nullptr);
}

} // namespace
