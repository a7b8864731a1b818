#include "tests/module/Display.h"
#include "tests/module/ModuleTest.h"

#include <gmock/gmock.h>

#include <future>

using namespace std::chrono_literals;

namespace module {

namespace {

struct Area
{
    int left, top, right, bottom;
};
constexpr Area balloonArea{800, 560, 1000, 675}; // over the right end of the taskbar
constexpr Area taskbarArea{100, 682, 900, 698};
constexpr Area iconArea{978, 682, 1000, 698};

// How much of an area is white, from 0 to 1.
double MeasureWhite(const std::string& picture, const Area& area)
{
    int found = 0;
    for (int y = area.top; y < area.bottom; ++y)
        for (int x = area.left; x < area.right; ++x)
            found += picture.compare(static_cast<std::size_t>(3 * (y * CDisplay::width + x)), 3,
                                     "\xFF\xFF\xFF") == 0;
    return 1.0 * found / ((area.right - area.left) * (area.bottom - area.top));
}

// "!": an icon with its balloon, ".": neither, "?": one of them, "": no desktop yet or any more.
// Wine shows its taskbar as long as there are icons on it.
std::string Look(const std::string& picture)
{
    if (picture.size() != std::size_t{3} * CDisplay::width * CDisplay::height ||
        picture.starts_with('\0')) // without a desktop all is black
        return "";
    const bool icon =
        MeasureWhite(picture, taskbarArea) == 1 && MeasureWhite(picture, iconArea) < 0.7;
    const bool balloon = MeasureWhite(picture, balloonArea) > 0.2;
    return icon && balloon ? "!" : icon || balloon ? "?" : ".";
}

} // namespace

using BalloonTest = CModuleTest;

TEST_F(BalloonTest, ATesterSeesTheHitAndTheIconGoesWithTheTracker)
{
    const CDisplay display;
    PutConfig(MakeConfig("TrackingTraceBalloon=1\n"));
    auto run = std::async(std::launch::async, [&] {
        return GetPrefix().Run({"explorer.exe", "/desktop=zo,1000x700", hostFolder / "host.exe",
                                "use", "main", ",", "event", "Menu", "Open", ",", "sleep", "4000",
                                ",", "release", ",", "sleep", "2000"},
                               {}, 30s, display.environment);
    });
    std::string seen;
    while (run.wait_for(200ms) != std::future_status::ready)
        seen += Look(display.TakePicture());
    EXPECT_FALSE(run.get().hung);
    EXPECT_THAT(seen, testing::ContainsRegex("!.*[.]")) << "pictures need the package imagemagick";
}

} // namespace module
