// A host that loads the module at run time, and works the same without it.
#include <zotracker/Loader.h>

int main()
{
    const zotracker::CTracker tracker;
    const zotracker::CTracker kpi(zotracker::ETracker::Kpi);
    tracker->TrackPageview();
    tracker->TrackEvent(L"Scan", L"Start", L"Quick", L"3", L"Scan page");
    kpi->TrackEvent(L"Scan", L"Start", L"Quick", L"3", L"Scan page");
    ::Sleep(4000); // the host's work: a hit leaves within about 2 seconds
    return 0;
}
