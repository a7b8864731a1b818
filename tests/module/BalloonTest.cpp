#include "tests/module/Display.h"
#include "tests/module/ModuleTest.h"

#include <algorithm>
#include <chrono>
#include <future>
#include <sstream>

using namespace std::chrono_literals;

namespace module {

namespace {

constexpr int width = CDisplay::width;
constexpr int height = CDisplay::height;

struct Area
{
    int left, top, right, bottom;
};
constexpr Area balloonArea{800, 560, 1000, 675}; // over the right end of the taskbar
constexpr Area taskbarArea{100, 682, 900, 698};
constexpr Area iconArea{978, 682, 1000, 698};

constexpr int CountPixels(const Area& area)
{
    return (area.right - area.left) * (area.bottom - area.top);
}

// What is on the display just now; empty when there is none.
std::string TakePicture(const CDisplay& display)
{
    const std::string picture = display.TakePicture();
    return picture.size() == std::size_t{3} * width * height ? picture : "";
}

int CountWhitePixels(const std::string& picture, const Area& area)
{
    int count = 0;
    for (int y = area.top; y < area.bottom; ++y)
        for (int x = area.left; x < area.right; ++x)
            count += picture.compare(static_cast<std::size_t>(3 * (y * width + x)), 3,
                                     "\xFF\xFF\xFF") == 0;
    return count;
}

struct Sight
{
    bool icon, balloon;
};

// Wine shows its taskbar as long as there are icons on it.
Sight Look(const std::string& picture)
{
    const bool taskbar = CountWhitePixels(picture, taskbarArea) == CountPixels(taskbarArea);
    const int iconPixels = CountPixels(iconArea) - CountWhitePixels(picture, iconArea);
    return {taskbar && iconPixels > 100, CountWhitePixels(picture, balloonArea) > 5000};
}

bool IsDesktop(const std::string& picture)
{
    return !picture.empty() && picture.compare(0, 3, std::string(3, '\0')) != 0;
}

class BalloonTest : public CModuleTest
{
protected:
    // Runs the host on a desktop of its own; returns what was to be seen there, in order.
    std::vector<Sight> Watch(const std::string& installLines)
    {
        const CDisplay display;
        EXPECT_TRUE(display.IsRunning()) << "Xvfb is missing; install the package xvfb";
        PutConfig(MakeConfig(installLines));
        auto run = std::async(std::launch::async, [&] {
            return GetPrefix().Run({"explorer.exe", "/desktop=zo,1000x700", hostFolder / "host.exe",
                                    "use", "main", ",", "eventex", "Menu", "Open file", "Recent",
                                    ",", "sleep", "4000", ",", "release", ",", "sleep", "2000"},
                                   {}, 30s, {"DISPLAY=" + display.GetName()});
        });
        std::vector<Sight> sights;
        while (run.wait_for(200ms) != std::future_status::ready)
        {
            const std::string picture = TakePicture(display);
            if (IsDesktop(picture))
                sights.push_back(Look(picture));
        }
        EXPECT_FALSE(run.get().hung);
        EXPECT_GT(sights.size(), 5u) << "no desktop, or no pictures (package imagemagick)";
        return sights;
    }
};

} // namespace

TEST_F(BalloonTest, ATesterSeesTheHitAndTheIconGoesWithTheTracker)
{
    const std::vector<Sight> sights = Watch("TrackingTraceBalloon=1\n");
    const auto shown = std::find_if(sights.begin(), sights.end(),
                                    [](const Sight& sight) { return sight.icon && sight.balloon; });
    ASSERT_NE(shown, sights.end());
    EXPECT_TRUE(std::any_of(shown, sights.end(),
                            [](const Sight& sight) { return !sight.icon && !sight.balloon; }));
}

} // namespace module
