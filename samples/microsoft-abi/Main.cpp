// Calls every operation through Microsoft's C++ ABI, with every argument. It needs no C runtime, so
// that it can also be built where Microsoft's is not: debian.cmake is a toolchain file for Clang.
#include <zotracker/Exports.h>

extern "C" {
__declspec(dllimport) void __stdcall Sleep(unsigned long milliseconds);
__declspec(dllimport) void __stdcall ExitProcess(unsigned int status);
__declspec(dllimport) unsigned long __stdcall GetModuleFileNameW(void* module, wchar_t* path,
                                                                 unsigned long room);
extern int _fltused;
int _fltused = 0; // the compiler asks for it where there are floating-point numbers
}

namespace {

wchar_t ownPath[32768];

void Report(ITracker& tracker)
{
    tracker.DisableIdlePageviews(true);
    tracker.SetContinueSession(false);
    tracker.SetProductName(L"Microsoft host");
    tracker.Initialize(ownPath);
    tracker.SetProductName(L"Microsoft host");
    tracker.TrackPageview();
    tracker.TrackEvent(L"Category 1", L"Action 1", L"Label 1", L"11", L"Page 1");
    tracker.TrackEventEx(L"Category 2", L"Action 2", L"Label 2", L"22", L"Page 2", true);
    tracker.TrackEventEx(L"Category 2", L"Action 2", L"Label 2", L"22", L"Page 2", true);
    tracker.TrackEventEx(L"Category 3", L"Action 3", L"Label 3", L"33", L"Page 3", false);
    tracker.TrackEventEx(L"Category 3", L"Action 3", L"Label 3", L"33", L"Page 3", false);
    tracker.TrackMessage(L"Message 4");
    tracker.TrackPurchase(L"Item 5", L"Code 5", 5.25, L"Order 5", 55);
    tracker.SetTrackingEnabled(false);
}

} // namespace

int main()
{
    GetModuleFileNameW(nullptr, ownPath, 32768);
    ITracker* const main = GetTrackerInstance();
    ITracker* const kpi = GetKPITrackerInstance();
    const bool usable = main != nullptr && kpi != nullptr &&
                        main->GetInterfaceVersion() == trackerInterfaceVersion &&
                        kpi->GetInterfaceVersion() == trackerInterfaceVersion &&
                        main->IsTrackingEnabled() && kpi->IsTrackingEnabled();
    if (usable)
    {
        kpi->TrackEvent(L"Category 6", L"Action 6", L"Label 6", L"66", L"Page 6");
        Report(*main);
        Sleep(5000); // the host's work: a hit leaves within about 2 seconds
    }
    DestroyKPITrackerInstance();
    DestroyTrackerInstance();
    ExitProcess(usable ? 0 : 1);
    return 0;
}
