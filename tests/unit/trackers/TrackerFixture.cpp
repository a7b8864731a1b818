#include "tests/unit/trackers/TrackerFixture.h"

#include "env/ProcessCache.h"
#include "tests/simulated/Files.h"
#include "tests/simulated/Registry.h"
#include "tests/simulated/Simulated.h"
#include "tests/simulated/SystemFacts.h"
#include "trackers/classic/CZoTracker.h"
#include "trackers/kpi/CZoTrackerPiWik.h"
#include "trackers/ua/CZoTrackerUA.h"

using namespace std::chrono_literals;
using platform::ERegistryRoot;
using platform::ERegistryView;

namespace {

constexpr const wchar_t* computerKey = L"CLSID\\{7C2A9E14-3F60-4b8d-92E5-A1D4706B3C58}";
constexpr const wchar_t* userKey = L"CLSID\\{A3D17F52-6B0E-4C19-8E2A-5F71C03B9D64}";
constexpr const wchar_t* knownId = L"0123456789abcdef0123456789abcdef";

void PutVersion(const std::wstring& path, const wchar_t* product, const wchar_t* version)
{
    simulated::SetVersionInfo(path, {{{0x409, 1200}},
                                     {{L"\\StringFileInfo\\040904b0\\ProductName", product},
                                      {L"\\StringFileInfo\\040904b0\\ProductVersion", version}}});
}

} // namespace

TrackerFixture::TrackerFixture()
{
    simulated::Reset();
    env::ResetProcessCache();
    simulated::PutFolder(L"C:\\ProgramData");
    PutVersion(L"C:\\Host\\Host.exe", L"Tidy Desk", L"3.2.1");
    PutConfig("ProductName=Disk Tool\r\nLanguage=de_DE\r\nPHASH=ab 1\r\n");
    simulated::PutRegistryText(ERegistryRoot::ClassesRoot, computerKey, ERegistryView::Default,
                               L"ID", L"id");
    simulated::PutRegistryText(ERegistryRoot::CurrentUser, clientKey, ERegistryView::Default,
                               L"CID", knownId);
    std::vector<std::uint8_t> bytes = simulated::TerminatedText(knownId);
    bytes.resize(64);
    simulated::PutRegistryValue(ERegistryRoot::ClassesRoot, userKey, ERegistryView::View32, L"ID",
                                {platform::registrySz, bytes});
    simulated::SetUnixTime(1000);
    simulated::SetTickMilliseconds(5000);
}

void TrackerFixture::PutConfig(const std::string& installLines, const std::string& sections,
                               const std::wstring& path)
{
    simulated::PutFile(path, "[install]\r\ntracking=1\r\n" + installLines + sections);
}

void TrackerFixture::PutOtherHosts(const std::string& installLines, const std::string& sections)
{
    PutConfig(installLines, sections, L"C:\\Other\\install.cfg");
    for (const wchar_t* path : {L"C:\\Other\\app.exe", L"C:\\Bare\\app.exe"})
    {
        simulated::PutFile(path, "x");
        PutVersion(path, L"App", L"9.9");
    }
}

void TrackerFixture::StartKind(EKind kind)
{
    if (kind == EKind::Kpi)
        Start<trackers::CZoTrackerPiWik>();
    else if (kind == EKind::Ua)
        Start<trackers::CZoTrackerUA>(L"", L"", L"");
    else
        Start<trackers::CZoTracker>(L"", L"", L"");
}

void TrackerFixture::SendPageview()
{
    tracker->TrackPageview();
    simulated::AdvanceTime(4s);
}

void TrackerFixture::Fail(int count)
{
    simulated::Answer refused;
    refused.failsAt = simulated::ENetworkStage::Send;
    refused.error = platform::internetCannotConnect;
    for (int i = 0; i < count; ++i)
        simulated::AddAnswer(refused);
}

Times TrackerFixture::GetTimes() const
{
    Times times;
    for (const auto& request : simulated::GetSentRequests())
        times.push_back(request.atMilliseconds - start);
    return times;
}

std::wstring TrackerFixture::GetText(const simulated::SentRequest& request)
{
    return request.object + std::wstring(request.body.empty() ? L"" : L"&") +
           std::wstring(request.body.begin(), request.body.end());
}

Texts TrackerFixture::GetTexts()
{
    Texts texts;
    for (const auto& request : simulated::GetSentRequests())
        texts.push_back(GetText(request));
    return texts;
}

Texts TrackerFixture::GetTails(const std::wstring& mark)
{
    Texts texts = GetTexts();
    for (std::wstring& text : texts)
    {
        const std::size_t found = text.find(mark);
        text = found == text.npos ? L"-" : text.substr(found);
    }
    return texts;
}

Texts TrackerFixture::GetValues(const std::wstring& key)
{
    const std::wstring mark = L"&" + key + L"=";
    Texts values = GetTails(mark);
    for (std::wstring& value : values)
        if (value != L"-")
            value = value.substr(mark.size(), value.find(L'&', 1) - mark.size());
    return values;
}
