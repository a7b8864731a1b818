#include "bench/fleet/FleetClient.h"

#include "app/ZoTrackerApp.h"
#include "env/ProcessCache.h"
#include "tests/simulated/Files.h"
#include "tests/simulated/Simulated.h"
#include "tests/simulated/SystemFacts.h"
#include "tests/simulated/VirtualTime.h"
#include "zotracker/Exports.h"

namespace fleet {

namespace {

using std::chrono::milliseconds;

void SetUpComputer(ETracker mainTracker, const Server& server)
{
    simulated::Reset();
    env::ResetProcessCache();
    simulated::PutFolder(L"C:\\ProgramData");
    simulated::SetVersionInfo(L"C:\\Host\\Host.exe",
                              {{{0x409, 1200}},
                               {{L"\\StringFileInfo\\040904b0\\ProductName", L"Tidy Desk"},
                                {L"\\StringFileInfo\\040904b0\\ProductVersion", L"3.2.1"}}});
    std::string config = "[install]\r\ntracking=1\r\nProductName=Tidy Desk\r\nLanguage=de_DE\r\n";
    if (mainTracker == ETracker::Measurement)
        config += "[UA]\r\nEnabled=1\r\nId=UA-1\r\n";
    simulated::PutFile(L"C:\\Host\\install.cfg", config);
    simulated::internet->server = [server] { return server(simulated::GetElapsedMilliseconds()); };
}

void AdvanceTo(std::int64_t time)
{
    simulated::AdvanceTime(milliseconds(time - simulated::GetElapsedMilliseconds()));
}

void RunHost(const Run& run)
{
    AdvanceTo(run.start);
    const app::CZoTrackerApp module;
    ITracker* const trackers[] = {GetTrackerInstance(), GetKPITrackerInstance()};
    for (ITracker* tracker : trackers)
        tracker->TrackPageview();
    for (const std::int64_t event : run.events)
    {
        AdvanceTo(run.start + event);
        for (ITracker* tracker : trackers)
            tracker->TrackEvent(L"Scan", L"Start", L"folder", {}, {});
    }
    AdvanceTo(run.start + run.length);
    DestroyTrackerInstance();
    DestroyKPITrackerInstance();
}

// What WinINet adds: "Host" to all, to a body its length and a word about caches.
std::size_t CountBytes(const simulated::SentRequest& sent)
{
    constexpr std::size_t lineEnds = 6; // of the request line, of "Host" and of the head
    std::size_t bytes = sent.verb.size() + sent.object.size() + std::string("  HTTP/1.1").size() +
                        sent.headers.size() + std::string("Host: ").size() + sent.host.size() +
                        lineEnds + sent.body.size();
    if (!sent.body.empty())
        bytes += std::string("Content-Length: 229\r\nCache-Control: no-cache\r\n").size();
    return bytes;
}

ETracker GetTracker(const simulated::SentRequest& sent)
{
    if (sent.object.find(L"/piwik.php") != std::wstring::npos)
        return ETracker::Kpi;
    return sent.verb == L"POST" ? ETracker::Measurement : ETracker::Classic;
}

} // namespace

std::vector<Request> Live(ETracker mainTracker, const std::vector<Run>& runs, const Server& server)
{
    SetUpComputer(mainTracker, server);
    for (const Run& run : runs)
        RunHost(run);
    std::vector<Request> requests;
    for (const simulated::SentRequest& sent : simulated::GetSentRequests())
        requests.push_back({sent.atMilliseconds, GetTracker(sent), CountBytes(sent)});
    return requests;
}

} // namespace fleet
