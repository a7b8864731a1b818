// A host that is linked with the module's import library, and does not start without the module.
#include <zotracker/Exports.h>

#include <windows.h>

#include <string>

namespace {

std::wstring GetOwnPath()
{
    std::wstring path(32768, L'\0');
    path.resize(::GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return path;
}

} // namespace

int main()
{
    ITracker* const tracker = GetTrackerInstance();
    if (tracker == nullptr)
        return 1;
    if (tracker->GetInterfaceVersion() == trackerInterfaceVersion)
    {
        tracker->Initialize(GetOwnPath().c_str());
        tracker->TrackMessage(std::wstring(L"Linked at build time"));
        ::Sleep(4000); // the host's work: a hit leaves within about 2 seconds
    }
    DestroyTrackerInstance();
    return 0;
}
