#pragma once

#include "frame/TrackerBase.h"
#include "tests/simulated/Internet.h"
#include "tests/simulated/VirtualTime.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

inline constexpr const wchar_t* configPath = L"C:\\Host\\install.cfg";
inline constexpr const char* uaSection = "[UA]\r\nEnabled=1\r\nId=UA-1\r\n";

// Of the client id; its end is the digest of "Tidy Desk".
inline constexpr const wchar_t* clientKey =
    L"CLSID\\{5E93C0A7-2D41-4F86-B7C9-03E8D12A6F95}\\46f734e13099f6f6170911a3d254a099";

enum class EKind
{
    Classic,
    Ua,
    Kpi
};

using Texts = std::vector<std::wstring>;
using Times = std::vector<std::int64_t>;

// A host, "Tidy Desk" 3.2.1, on a computer that all trackers know already, and what its tracker
// sends. Host.exe is configured as "Disk Tool" with tracking enabled.
class TrackerFixture : public testing::Test
{
protected:
    TrackerFixture();

    // Enables tracking and adds the lines to the section "install".
    static void PutConfig(const std::string& installLines, const std::string& sections = uaSection,
                          const std::wstring& path = configPath);

    // Executables "App" 9.9: one with the configuration lines beside it, one with none.
    static void PutOtherHosts(const std::string& installLines,
                              const std::string& sections = uaSection);

    // In place of an earlier tracker and its requests. The worker begins its idle pause now.
    template <class Tracker, class... Arguments>
    void Start(const Arguments&... arguments)
    {
        tracker.reset();
        simulated::ResetInternet();
        start = simulated::GetElapsedMilliseconds();
        tracker = std::make_shared<Tracker>(arguments...);
        simulated::SettleWorkers();
    }

    // The same for a kind, without any argument.
    void StartKind(EKind kind);

    // Reports a pageview and lets it go out.
    void SendPageview();

    // The next requests find nobody to connect to.
    static void Fail(int count);

    // Since the latest start.
    Times GetTimes() const;

    // What a request says: its object and its body.
    static std::wstring GetText(const simulated::SentRequest& request);

    // What each request says.
    static Texts GetTexts();

    // The same from `mark` on, or "-".
    static Texts GetTails(const std::wstring& mark);

    // The value of `key` in each request, up to the next "&", or "-".
    static Texts GetValues(const std::wstring& key);

    std::shared_ptr<frame::CTrackerBase> tracker;
    std::int64_t start = 0;
};
