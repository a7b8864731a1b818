#include "tests/module/Display.h"
#include "tests/module/ModuleTest.h"
#include "tools/collector/Decode.h"
#include "tools/collector/Inspector.h"

#include <algorithm>
#include <future>

using namespace std::chrono_literals;

// The samples, built from the installed package outside of the source tree.
namespace module {

namespace {

namespace fs = std::filesystem;

class PackageTest : public CModuleTest
{
protected:
    PackageTest()
    {
        PutConfig(MakeConfig("ProductName=Sample\n"));
        Put("samples/c/ZoTracker.dll");
    }

    // Puts a file of the built package into the host's folder; its full path there.
    fs::path Put(const fs::path& file) const
    {
        const fs::path placed = hostFolder / file.filename();
        fs::copy_file(fs::path(ZO_PACKAGE_FOLDER) / file, placed,
                      fs::copy_options::overwrite_existing);
        return placed;
    }

    // What the host said, without what the module adds: "TRACKER, PRODUCT: SENTENCE, PAGE", sorted.
    std::vector<std::string> GetHits() const
    {
        std::vector<std::string> hits;
        for (const collector::Hit& hit : collector.GetHits())
        {
            const collector::HitReport report = collector::DecodeReport(hit);
            hits.push_back(report.tracker + ", " + report.product + ": " + report.sentence);
            if (report.kind == "event" && report.tracker == "classic")
                hits.back().append(", ").append(GetValue(report.parameters, "page"));
        }
        std::sort(hits.begin(), hits.end());
        return hits;
    }
};

const struct
{
    fs::path program;
    std::vector<std::string> hits;
} samples[] = {
    {"shown/README1.cpp.exe",
     {"classic, Sample: event SCAN / START / QUICK, value 3, Scan page",
      "classic, Sample: pageview of Sample"}},
    {"samples/cpp-loader/cpp_loader.exe",
     {"KPI, Sample: event Scan / Start / Quick, value 3",
      "classic, Sample: event SCAN / START / QUICK, value 3, Scan page",
      "classic, Sample: pageview of Sample"}},
    {"samples/cpp-linked/cpp_linked.exe",
     {"classic, Sample: pageview of Linked at build time", "classic, Sample: pageview of Sample"}},
    {"samples/c/c_host.exe",
     {"classic, Sample: event MENU / OPEN / RECENT, value 7, Sample",
      "classic, Sample: item P1 Pack, 2 at 12.50", "classic, Sample: pageview of Sample",
      "classic, Sample: transaction ORDER-9, total 25.00"}},
    {"samples/microsoft-abi/microsoft_abi.exe",
     {"KPI, Sample: event Category 6 / Action 6 / Label 6, value 66",
      "classic, Microsoft host: event CATEGORY 1 / ACTION 1 / LABEL 1, value 11, Page 1",
      "classic, Microsoft host: event CATEGORY 2 / ACTION 2 / LABEL 2, value 22, Page 2", // once
      "classic, Microsoft host: event CATEGORY 3 / ACTION 3 / LABEL 3, value 33, Page 3",
      "classic, Microsoft host: event CATEGORY 3 / ACTION 3 / LABEL 3, value 33, Page 3",
      "classic, Microsoft host: event TRACKER / DEACTIVATED, value 1, Microsoft host",
      "classic, Microsoft host: item Code 5 Item 5, 55 at 5.25",
      "classic, Microsoft host: pageview of Message 4",
      "classic, Microsoft host: pageview of Microsoft host",
      "classic, Microsoft host: transaction Order 5, total 288.75"}},
};

TEST_F(PackageTest, EverySampleReportsWhatItSays)
{
    for (const auto& sample : samples)
    {
        SCOPED_TRACE(sample.program);
        collector.Clear();
        const ProgramResult run = GetPrefix().Run({Put(sample.program)}, {}, 30s);
        EXPECT_EQ(run.status, 0) << run.output;
        EXPECT_EQ(GetHits(), sample.hits);
    }
}

// Neither a module of another interface nor one in the current folder is used.
TEST_F(PackageTest, AHostRunsWithoutTheModule)
{
    const fs::path before = fs::current_path();
    const fs::path current = hostFolder / "current";
    fs::create_directory(current);
    fs::rename(hostFolder / "ZoTracker.dll", current / "ZoTracker.dll");
    fs::copy_file(hostFolder / "install.cfg", current / "install.cfg");
    fs::current_path(current);
    for (const bool isOther : {false, true})
        for (const char* sample : {"cpp-loader/cpp_loader.exe", "c/c_host.exe"})
        {
            if (isOther)
                fs::rename(Put("samples/Other.dll"), hostFolder / "ZoTracker.dll");
            const ProgramResult run = GetPrefix().Run({Put(fs::path("samples") / sample)}, {}, 30s);
            EXPECT_EQ(run.status, 0) << sample << ' ' << isOther << ": " << run.output;
        }
    fs::current_path(before);
    EXPECT_EQ(GetHits(), std::vector<std::string>());
}

// Clicks at places of the window, "X,Y X,Y ...", once it is to be seen.
constexpr const char* clicker =
    "window=$(xdotool search --sync --onlyvisible --name '^ZoTracker$') && for place in $0; do "
    "xdotool mousemove --window $window ${place%,*} ${place#*,} sleep 0.2 click 1 sleep 0.2; done";

TEST_F(PackageTest, EveryButtonOfTheWindowReports)
{
    const CDisplay display;
    const fs::path program = Put("samples/window/window.exe");
    auto run = std::async(std::launch::async, [&] {
        return GetPrefix().Run({"explorer.exe", "/desktop=sample,1000x700", program}, {}, 40s,
                               display.environment);
    });
    const auto click = [&](const std::string& places) {
        EXPECT_EQ(RunProgram({"sh", "-c", clicker, places}, display.environment, {}, 30s).status, 0)
            << "xdotool failed; install the package xdotool";
    };
    click("112,50 112,98 112,146 112,194"); // the buttons
    EXPECT_TRUE(collector.WaitForHits(5, 10s));
    click("237,11"); // the box that closes the window
    EXPECT_FALSE(run.get().hung);
    EXPECT_EQ(
        GetHits(),
        (std::vector<std::string>{
            "classic, Sample: event WINDOW / FEATURE / BUTTON, value 1, Main window",
            "classic, Sample: item P1 Pack, 3 at 10.00", "classic, Sample: pageview of Sample",
            "classic, Sample: pageview of Your trial ends soon",
            "classic, Sample: transaction ORDER-7, total 30.00"}));
}

} // namespace

} // namespace module
