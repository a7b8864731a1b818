#include "platform/NotificationIcon.h"

#include "platform/win32/DeadlineCall.h"
#include "platform/win32/UniqueHandle.h"

#include <windows.h>

#include <shellapi.h>

namespace platform {

namespace {

constexpr std::chrono::milliseconds callLimit{2000};

struct IconTraits
{
    using Raw = HICON;
    static Raw None() noexcept { return nullptr; }
    static bool IsValid(Raw raw) noexcept { return raw != nullptr; }
    static void Close(Raw raw) noexcept { ::DestroyIcon(raw); }
};
using CIcon = CUniqueHandle<IconTraits>;

template <std::size_t Size>
void CopyText(const std::wstring& text, wchar_t (&target)[Size])
{
    target[text.copy(target, Size - 1)] = 0;
}

NOTIFYICONDATAW Describe(const NotificationIconOptions& options)
{
    NOTIFYICONDATAW data = {};
    data.cbSize = sizeof(data);
    data.hWnd = ::GetDesktopWindow();
    data.uID = options.id;
    data.uFlags = NIF_MESSAGE | NIF_ICON | NIF_TIP | NIF_INFO;
    data.uCallbackMessage = options.callbackMessage;
    data.uVersion = NOTIFYICON_VERSION;
    CopyText(options.tip, data.szTip);
    return data;
}

void Register(NOTIFYICONDATAW data)
{
    const CIcon icon(::CopyIcon(::LoadIconW(nullptr, IDI_INFORMATION)));
    data.hIcon = icon.Get();
    ::Shell_NotifyIconW(NIM_SETVERSION, &data);
    ::Shell_NotifyIconW(NIM_ADD, &data);
}

} // namespace

struct CNotificationIcon::Native
{
    const CStopSignal& stop;
    NOTIFYICONDATAW data;
    bool abandoned = false; // a call is still in flight

    // `call` owns what it touches.
    template <class Call>
    void Perform(Call&& call)
    {
        if (!abandoned)
            abandoned =
                RunWithinDeadline(std::forward<Call>(call), callLimit, stop) != ECallEnd::Returned;
    }
};

CNotificationIcon::CNotificationIcon(const NotificationIconOptions& options,
                                     const CStopSignal& stop)
    : native(new Native{stop, Describe(options)})
{
    native->Perform([data = native->data] { Register(data); });
    native->data.uTimeout = options.balloonTimeout;
    native->data.uFlags = NIF_INFO;
    native->data.dwInfoFlags = NIIF_INFO;
}

CNotificationIcon::~CNotificationIcon()
{
    try
    {
        native->Perform(
            [data = native->data]() mutable { ::Shell_NotifyIconW(NIM_DELETE, &data); });
    }
    catch (const std::bad_alloc&)
    {} // the icon stays
}

void CNotificationIcon::ShowBalloon(const std::wstring& title, const std::wstring& text)
{
    CopyText(title, native->data.szInfoTitle);
    CopyText(text, native->data.szInfo);
    native->Perform([data = native->data]() mutable { ::Shell_NotifyIconW(NIM_MODIFY, &data); });
}

} // namespace platform
