#pragma once

#include "platform/StopSignal.h"

#include <cstdint>
#include <memory>
#include <string>

namespace platform {

// What an icon of the notification area is registered as.
struct NotificationIconOptions
{
    std::uint32_t id;
    std::uint32_t callbackMessage; // the window message about it, which nobody reads
    std::uint32_t balloonTimeout;  // milliseconds
    std::wstring tip;              // shown while the pointer is over the icon; 127 units of it
};

// The system's information icon in the notification area of the taskbar, with balloons. Belongs to
// the desktop's window, so all processes share the icon of one number.
//
// Nobody waits for a shell that does not answer: a call that takes longer than 2 seconds, or 1
// second once a stop is requested, is abandoned, and no other is made. Without a shell nothing is
// shown; nothing here fails.
//
// Threads: one at a time.
class CNotificationIcon
{
public:
    // Shows the icon. `stop` must outlive this object.
    CNotificationIcon(const NotificationIconOptions& options, const CStopSignal& stop);

    // Removes the icon. While the module is being unloaded that is not possible; the icon then
    // stays until a later process shows and removes it again.
    ~CNotificationIcon();
    CNotificationIcon(const CNotificationIcon&) = delete;
    CNotificationIcon& operator=(const CNotificationIcon&) = delete;

    // Replaces the balloon by one with an information icon. 63 units of the title are shown and
    // 255 of the text.
    void ShowBalloon(const std::wstring& title, const std::wstring& text);

private:
    struct Native;
    std::unique_ptr<Native> native;
};

} // namespace platform
