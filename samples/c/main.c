/* A host in C that loads the module at run time. */
#include <zotracker/zotracker.h>

int main(void)
{
    const ZoTrackerOptions options = {false, false};
    ZoTrackerHandle handle = ZoTrackerOpen(ZoTrackerMain, options);
    ZoTracker* const tracker = handle.tracker;
    if (tracker != NULL)
    {
        const ZoTrackerText none = ZoTrackerMakeText(NULL);
        tracker->call->TrackEvent(tracker, L"Menu", L"Open", L"Recent", ZoTrackerMakeText(L"7"),
                                  none);
        tracker->call->TrackPurchase(tracker, ZoTrackerMakeText(L"Pack"), ZoTrackerMakeText(L"P1"),
                                     12.5, ZoTrackerMakeText(L"ORDER-9"), 2);
        Sleep(4000); /* the host's work: a hit leaves within about 2 seconds */
    }
    ZoTrackerClose(&handle);
    return 0;
}
