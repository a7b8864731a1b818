#pragma once

#include "env/ProcessCache.h"
#include "tests/simulated/Files.h"
#include "tests/simulated/Internet.h"
#include "tests/simulated/Registry.h"
#include "tests/simulated/Simulated.h"
#include "tests/simulated/SystemFacts.h"
#include "tests/simulated/VirtualTime.h"
#include "trackers/classic/CZoTracker.h"
#include "trackers/kpi/CZoTrackerPiWik.h"
#include "trackers/ua/CZoTrackerUA.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

using namespace std::chrono_literals;
using platform::ERegistryRoot;
using platform::ERegistryView;
using simulated::ERegistryDenial;

inline constexpr const wchar_t* configPath = L"C:\\Host\\install.cfg";
inline constexpr const char* uaSection = "[UA]\r\nEnabled=1\r\nId=UA-1\r\n";

// Of the client id, its end is the digest of "Tidy Desk"; and of the KPI tracker's user.
inline constexpr const wchar_t* clientKey =
    L"CLSID\\{5E93C0A7-2D41-4F86-B7C9-03E8D12A6F95}\\46f734e13099f6f6170911a3d254a099";
inline constexpr const wchar_t* sessionKey =
    L"CLSID\\{5E93C0A7-2D41-4F86-B7C9-03E8D12A6F95}\\2_Tidy Desk";
inline constexpr const wchar_t* kpiUserKey = L"CLSID\\{A3D17F52-6B0E-4C19-8E2A-5F71C03B9D64}";

enum class EKind
{
    Classic,
    Ua,
    Kpi
};

// What is expected of each kind.
template <class Value>
struct Each
{
    Value classic, ua, kpi;

    const Value& Of(EKind kind) const
    {
        return kind == EKind::Classic ? classic : kind == EKind::Ua ? ua : kpi;
    }
};

using Texts = std::vector<std::wstring>;
using Times = std::vector<std::int64_t>;

// A host, "Tidy Desk" 3.2.1, on a computer that all trackers know already, and what its tracker
// sends. Host.exe is configured as "Disk Tool" with tracking enabled.
class TrackerFixture : public testing::Test
{
protected:
    TrackerFixture()
    {
        simulated::Reset();
        env::ResetProcessCache();
        simulated::PutFolder(L"C:\\ProgramData");
        PutVersion(L"C:\\Host\\Host.exe", L"Tidy Desk", L"3.2.1");
        PutConfig("ProductName=Disk Tool\r\nLanguage=de_DE\r\nPHASH=ab 1\r\n");
        simulated::PutRegistryText(ERegistryRoot::ClassesRoot,
                                   L"CLSID\\{7C2A9E14-3F60-4b8d-92E5-A1D4706B3C58}",
                                   ERegistryView::Default, L"ID", L"id");
        simulated::PutRegistryText(ERegistryRoot::CurrentUser, clientKey, ERegistryView::Default,
                                   L"CID", knownId);
        PutKpiUser(ERegistryRoot::ClassesRoot, knownId, 64);
        simulated::SetUnixTime(1000);
        simulated::SetTickMilliseconds(5000);
    }

    static void PutVersion(const std::wstring& path, const wchar_t* product, const wchar_t* version)
    {
        simulated::SetVersionInfo(path,
                                  {{{0x409, 1200}},
                                   {{L"\\StringFileInfo\\040904b0\\ProductName", product},
                                    {L"\\StringFileInfo\\040904b0\\ProductVersion", version}}});
    }

    // So many bytes of it.
    static void PutKpiUser(ERegistryRoot root, const std::wstring& id, std::size_t size)
    {
        std::vector<std::uint8_t> bytes = text::EncodeUnits(id);
        bytes.resize(size);
        simulated::PutRegistryValue(root, kpiUserKey, ERegistryView::View32, L"ID",
                                    {platform::registrySz, bytes});
    }

    // Enables tracking and adds the lines to the section "install".
    static void PutConfig(const std::string& installLines, const std::string& sections = uaSection,
                          const std::wstring& path = configPath)
    {
        simulated::PutFile(path, "[install]\r\ntracking=1\r\n" + installLines + sections);
    }

    // Executables "App" 9.9: one with the configuration lines beside it, one with none.
    static void PutOtherHosts(const std::string& installLines,
                              const std::string& sections = uaSection)
    {
        PutConfig(installLines, sections, L"C:\\Other\\install.cfg");
        for (const wchar_t* path : {L"C:\\Other\\app.exe", L"C:\\Bare\\app.exe"})
        {
            simulated::PutFile(path, "x");
            PutVersion(path, L"App", L"9.9");
        }
    }

    // In place of an earlier tracker and its requests. The worker begins its idle pause now.
    void Start(EKind kind, const wchar_t* name = L"", const wchar_t* folder = L"",
               const wchar_t* trackingId = L"")
    {
        tracker.reset();
        simulated::ResetInternet();
        start = simulated::GetElapsedMilliseconds();
        if (kind == EKind::Kpi)
            tracker = std::make_shared<trackers::CZoTrackerPiWik>();
        else if (kind == EKind::Ua)
            tracker = std::make_shared<trackers::CZoTrackerUA>(name, folder, trackingId);
        else
            tracker = std::make_shared<trackers::CZoTracker>(name, folder, trackingId);
        simulated::SettleWorkers();
    }

    // Reports a pageview and lets it go out.
    void SendPageview()
    {
        tracker->TrackPageview();
        simulated::AdvanceTime(4s);
    }

    // The next requests find nobody to connect to.
    static void Fail(int count)
    {
        for (int i = 0; i < count; ++i)
            simulated::AddAnswer({.failsAt = simulated::ENetworkStage::Send,
                                  .error = platform::internetCannotConnect});
    }

    // Since the latest start.
    Times GetTimes() const
    {
        Times times;
        for (const auto& request : simulated::GetSentRequests())
            times.push_back(request.atMilliseconds - start);
        return times;
    }

    // SID LV CV PVC LPV of the stored session, "-" for what is not there.
    static std::wstring FindSession(ERegistryRoot root = ERegistryRoot::ClassesRoot)
    {
        std::wstring session;
        for (const wchar_t* name : {L"SID", L"LV", L"CV", L"PVC", L"LPV"})
            session +=
                L" " + simulated::FindRegistryText(root, sessionKey, ERegistryView::View32, name)
                           .value_or(L"-");
        return session.substr(1);
    }

    // What a request says: its object and its body.
    static std::wstring GetText(const simulated::SentRequest& request)
    {
        return request.object + std::wstring(request.body.empty() ? L"" : L"&") +
               std::wstring(request.body.begin(), request.body.end());
    }

    // What each request says from `mark` on, or "-".
    static Texts GetTexts(const std::wstring& mark = L"")
    {
        Texts texts;
        for (const auto& request : simulated::GetSentRequests())
        {
            const std::wstring text = GetText(request);
            const std::size_t found = text.find(mark);
            texts.push_back(found == text.npos ? L"-" : text.substr(found));
        }
        return texts;
    }

    // The value of `key` in each request, up to the next "&", or "-".
    static Texts GetValues(const std::wstring& key)
    {
        Texts values = GetTexts(L"&" + key + L"=");
        for (std::wstring& value : values)
            if (value != L"-")
                value = value.substr(key.size() + 2, value.find(L'&', 1) - key.size() - 2);
        return values;
    }

    // Each request, what comes with it included.
    static Texts GetWholeRequests()
    {
        Texts texts;
        for (const auto& request : simulated::GetSentRequests())
            texts.push_back(request.verb + L" " + request.host + L":" +
                            std::to_wstring(request.port) + request.object + L"\r\n" +
                            request.headers + request.referrer + L"\r\n" + request.agent + L"\r\n" +
                            std::wstring(request.body.begin(), request.body.end()));
        return texts;
    }

    static constexpr const wchar_t* knownId = L"0123456789abcdef0123456789abcdef";
    std::shared_ptr<frame::CTrackerBase> tracker;
    std::int64_t start = 0;
};
