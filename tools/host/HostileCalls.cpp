#include "tools/host/HostileCalls.h"

#include <cstddef>
#include <limits>
#include <string>
#include <string_view>

namespace host {

namespace {

using namespace std::string_view_literals;

const std::wstring oddTexts[] = {
    {},
    std::wstring(std::size_t{1} << 20, L'x'),
    std::wstring(L"\xd800 \xdc00\xd801"sv),
    std::wstring(L"a\0b\0"sv),
    L"\r\n\t\x1\x7f",
    L"<b a=\"1\">&amp;'%00%zz{[\\",
    L"\x00fc\x4e2d\xd83d\xde00",
};

constexpr double oddPrices[] = {
    std::numeric_limits<double>::quiet_NaN(),  std::numeric_limits<double>::infinity(),
    -std::numeric_limits<double>::infinity(),  std::numeric_limits<double>::max(),
    std::numeric_limits<double>::denorm_min(), -0.0};

TrackerText View(const std::wstring& text) { return std::wstring_view(text); }

} // namespace

void CallWithEverythingOdd(ITracker& tracker)
{
    for (const std::wstring& text : oddTexts)
    {
        tracker.TrackEvent(text.c_str(), text.c_str(), text.c_str(), View(text), View(text));
        tracker.TrackEventEx(View(text), View(text), View(text), View(text), View(text), true);
        tracker.TrackMessage(View(text));
        for (const double price : oddPrices)
            tracker.TrackPurchase(View(text), View(text), price, View(text),
                                  std::numeric_limits<std::int32_t>::min());
        tracker.SetProductName(View(text));
        tracker.Initialize(text.c_str());
    }
    tracker.TrackEvent(nullptr, nullptr, nullptr, {}, {});
    tracker.Initialize(nullptr);
    tracker.SetProductName({});
}

} // namespace host
