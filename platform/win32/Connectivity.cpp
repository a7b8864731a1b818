#include "platform/Internet.h"
#include "platform/win32/DeadlineCall.h"

#include <windows.h>

#include <netlistmgr.h>
#include <wininet.h>

#include <chrono>
#include <memory>

namespace platform {

namespace {

// MinGW's header leaves the "get_" off the operation's name.
HRESULT AskIfConnected(INetworkListManager& manager, VARIANT_BOOL& connected) noexcept
{
#ifdef __MINGW32__
    return manager.IsConnectedToInternet(&connected);
#else
    return manager.get_IsConnectedToInternet(&connected);
#endif
}

constexpr std::chrono::milliseconds connectivityLimit{10'000};

EConnectivity AskNetworkListManager() noexcept
{
    const HRESULT initialized = ::CoInitializeEx(nullptr, COINIT_DISABLE_OLE1DDE);
    VARIANT_BOOL connected = VARIANT_TRUE;
    INetworkListManager* manager = nullptr;
    HRESULT result =
        ::CoCreateInstance(CLSID_NetworkListManager, nullptr, CLSCTX_INPROC_SERVER,
                           IID_INetworkListManager, reinterpret_cast<void**>(&manager));
    const bool missing = FAILED(result) || manager == nullptr;
    if (!missing)
    {
        result = AskIfConnected(*manager, connected);
        manager->Release();
    }
    if (SUCCEEDED(initialized))
        ::CoUninitialize();
    if (missing)
        return FAILED(result) ? EConnectivity::ManagerMissing : EConnectivity::NoManager;
    if (FAILED(result))
        return EConnectivity::CallFailed;
    return connected == VARIANT_TRUE ? EConnectivity::Connected : EConnectivity::NotConnected;
}

} // namespace

bool GetConnectedState(const CStopSignal& stop, std::uint32_t& error)
{
    struct Answer
    {
        bool connected;
        DWORD error;
    };
    const auto answer = std::make_shared<Answer>(true, 0);
    const ECallEnd end = RunWithinDeadline(
        [answer] {
            DWORD flags = 0;
            answer->connected = ::InternetGetConnectedState(&flags, 0) != FALSE;
            answer->error = ::GetLastError();
        },
        connectivityLimit, stop);
    if (end != ECallEnd::Returned)
        return true;
    error = answer->error;
    return answer->connected;
}

EConnectivity QueryConnectivity(const CStopSignal& stop)
{
    struct Answer
    {
        EConnectivity connectivity;
        DWORD error;
    };
    const auto answer = std::make_shared<Answer>(EConnectivity::Exception, DWORD{ERROR_TIMEOUT});
    const ECallEnd end = RunWithinDeadline(
        [answer] {
            answer->connectivity = AskNetworkListManager();
            answer->error = ::GetLastError();
        },
        connectivityLimit, stop);
    ::SetLastError(end == ECallEnd::Returned ? answer->error : ERROR_TIMEOUT);
    return end == ECallEnd::Returned ? answer->connectivity : EConnectivity::Exception;
}

} // namespace platform
