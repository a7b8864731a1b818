#include "frame/TrackerBase.h"

#include "env/FileSystem.h"
#include "env/InstallConfig.h"
#include "frame/Hits.h"

namespace frame {

using VnOSAL::VnCriticalSectionLock;

namespace {

constexpr std::wstring_view OrEmpty(const wchar_t* text)
{
    return text == nullptr ? std::wstring_view() : std::wstring_view(text);
}

} // namespace

CTrackerBase::CTrackerBase(std::wstring_view threadName)
    : worker(&RunTracker, this, threadName, &noCrashReporting)
{}

std::uint32_t CTrackerBase::RunTracker(ThreadParam* parameter) noexcept
{
    auto* const tracker = dynamic_cast<CTrackerBase*>(parameter);
    if (tracker == nullptr)
        return 0;
    try
    {
        tracker->RunWorker();
    }
    catch (...)
    {
        tracker->queue.Close();
    }
    return 0;
}

void CTrackerBase::Initialize(const wchar_t* hostPath) noexcept
{
    Guard([&] {
        if (hostPath != nullptr && env::PathExists(hostPath))
            ReadConfigurationOf(hostPath);
    });
}

void CTrackerBase::SetProductName(TrackerText name) noexcept
{
    Guard([&] { ChooseProductName(std::wstring(name.View())); });
}

void CTrackerBase::TrackPageview() noexcept
{
    Guard([&] { QueueHit(MakePageviewHit()); });
}

void CTrackerBase::TrackEvent(const wchar_t* category, const wchar_t* action, const wchar_t* label,
                              TrackerText value, TrackerText page) noexcept
{
    Guard([&] {
        QueueEvent(MakeEventHit(OrEmpty(category), OrEmpty(action), OrEmpty(label), value.View(),
                                page.View()));
    });
}

void CTrackerBase::TrackEventEx(TrackerText category, TrackerText action, TrackerText label,
                                TrackerText value, TrackerText page, bool onceOnly) noexcept
{
    Guard([&] {
        QueueEvent(MakeEventExHit(category.View(), action.View(), label.View(), value.View(),
                                  page.View(), onceOnly));
    });
}

void CTrackerBase::TrackMessage(TrackerText text) noexcept
{
    Guard([&] { QueueHit(MakeMessageHit(text.View())); });
}

std::wstring CTrackerBase::GetProductName() const
{
    const VnCriticalSectionLock lock(productLock);
    return productName;
}

void CTrackerBase::QueueEvent(const HitView& event)
{
    if (!event.field5.empty())
        return QueueHit(event);
    const std::wstring page = GetProductName();
    HitView named = event;
    named.field5 = page;
    QueueHit(named);
}

void CTrackerBase::StartWorker()
{
    stop.Clear();
    if (!worker.Start())
        queue.Close(); // what nobody takes would only fill the host's memory
}

void CTrackerBase::StopWorker() noexcept
{
    Guard([&] {
        stop.Request();
        worker.Join();
    });
}

void CTrackerBase::SwitchInstallTracking(bool enable, bool mayEnable)
{
    if ((env::GetInstallConfigInt(L"install", L"tracking", 0) == 1) == enable)
        return;
    if (enable && mayEnable)
        trackingEnabled = true;
    ReportTrackingSwitch(enable);
    env::SetInstallConfigString(L"install", L"tracking", enable ? L"1" : L"0");
}

void CTrackerBase::ReportTrackingSwitch(bool enable)
{
    TrackEventEx(L"TRACKER", enable ? L"ACTIVATED" : L"DEACTIVATED", L"", L"", L"", false);
}

std::wstring CTrackerBase::ReadConfiguredProductName(const std::wstring& configPath)
{
    const std::wstring trackingName =
        env::GetInstallConfigString(L"install", L"ProductTrackingName", L"", configPath);
    return trackingName.empty()
               ? env::GetInstallConfigString(L"install", L"ProductName", L"", configPath)
               : trackingName;
}

} // namespace frame
