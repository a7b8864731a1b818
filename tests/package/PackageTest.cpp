#include "tests/module/Display.h"
#include "tests/module/ModuleTest.h"

#include <algorithm>
#include <chrono>
#include <fstream>
#include <future>
#include <sstream>

using namespace std::chrono_literals;

// The samples, built from the installed package outside of the source tree.
namespace module {

namespace {

namespace fs = std::filesystem;

// The endpoint and what the host said, without what the module adds.
std::string Abridge(const std::string& target)
{
    constexpr const char* kept[] = {"utmt",   "utmp",   "utmdt",  "utme",   "utmtid",
                                    "utmtto", "utmipc", "utmipn", "utmipr", "utmiqt",
                                    "e_c",    "e_a",    "e_n",    "e_v"};
    std::string text = target.substr(0, target.find('?'));
    for (const char* key : kept)
        if (target.find("&" + std::string(key) + "=") != target.npos)
            text.append(" ").append(key).append("=").append(GetParameter(target, key));
    return text;
}

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

    std::vector<std::string> GetHits() const
    {
        std::vector<std::string> hits;

        for (const std::string& target : GetTargets())
            hits.push_back(Abridge(target));
        std::sort(hits.begin(), hits.end());
        return hits;
    }
};

struct Sample
{
    const char* folder;
    const char* program;
    std::vector<std::string> hits; // sorted
};

const Sample samples[] = {
    {"shown",
     "README1.cpp.exe",
     {"/__utm.gif utmp=Sample utmdt=Sample",
      "/__utm.gif utmt=event utmp=Scan%20page utmdt=Sample utme=5(SCAN*START*QUICK)(3)"}},
    {"samples/cpp-loader",
     "cpp_loader.exe",
     {"/__utm.gif utmp=Sample utmdt=Sample",
      "/__utm.gif utmt=event utmp=Scan%20page utmdt=Sample utme=5(SCAN*START*QUICK)(3)",
      "/piwik.php e_c=Scan e_a=Start e_n=Quick e_v=3"}},
    {"samples/cpp-linked",
     "cpp_linked.exe",
     {"/__utm.gif utmp=Linked%20at%20build%20time utmdt=Sample",
      "/__utm.gif utmp=Sample utmdt=Sample"}},
    {"samples/c",
     "c_host.exe",
     {"/__utm.gif utmp=Sample utmdt=Sample",
      "/__utm.gif utmt=event utmp=Sample utmdt=Sample utme=5(MENU*OPEN*RECENT)(7)",
      "/__utm.gif utmt=item utmp=Sample utmdt=Sample utmtid=ORDER-9 utmipc=P1 utmipn=Pack "
      "utmipr=12.50 utmiqt=2",
      "/__utm.gif utmt=tran utmp=Sample utmdt=Sample utmtid=ORDER-9 utmtto=25.00"}},
    {"samples/microsoft-abi",
     "microsoft_abi.exe",
     {"/__utm.gif utmp=Message%204 utmdt=Microsoft%20host",
      "/__utm.gif utmp=Microsoft%20host utmdt=Microsoft%20host",
      "/__utm.gif utmt=event utmp=Microsoft%20host utmdt=Microsoft%20host "
      "utme=5(TRACKER*DEACTIVATED*)(1)",
      "/__utm.gif utmt=event utmp=Page%201 utmdt=Microsoft%20host "
      "utme=5(CATEGORY%201*ACTION%201*LABEL%201)(11)",
      "/__utm.gif utmt=event utmp=Page%202 utmdt=Microsoft%20host "
      "utme=5(CATEGORY%202*ACTION%202*LABEL%202)(22)", // only once
      "/__utm.gif utmt=event utmp=Page%203 utmdt=Microsoft%20host "
      "utme=5(CATEGORY%203*ACTION%203*LABEL%203)(33)",
      "/__utm.gif utmt=event utmp=Page%203 utmdt=Microsoft%20host "
      "utme=5(CATEGORY%203*ACTION%203*LABEL%203)(33)",
      "/__utm.gif utmt=item utmp=Microsoft%20host utmdt=Microsoft%20host utmtid=Order%205 "
      "utmipc=Code%205 utmipn=Item%205 utmipr=5.25 utmiqt=55",
      "/__utm.gif utmt=tran utmp=Microsoft%20host utmdt=Microsoft%20host utmtid=Order%205 "
      "utmtto=288.75",
      "/piwik.php e_c=Category%206 e_a=Action%206 e_n=Label%206 e_v=66"}},
};

struct Place
{
    int x, y;
};
constexpr Place buttons[] = {{150, 90}, {150, 140}, {150, 185}, {150, 235}}; // of the sample
constexpr Place closeBox = {277, 51};
constexpr Place betweenButtons = {150, 114};

void Click(const Place& place, const std::vector<std::string>& environment)
{
    const ProgramResult click =
        RunProgram({"xdotool", "mousemove", std::to_string(place.x), std::to_string(place.y),
                    "sleep", "0.2", "click", "1", "sleep", "0.2"},
                   environment, {}, 5s);
    EXPECT_EQ(click.status, 0) << "xdotool failed; install the package xdotool";
}

// Whether the window's light grey is to be seen.
bool IsWindowShown(const CDisplay& display)
{
    const std::string picture = display.TakePicture();
    const auto offset =
        static_cast<std::size_t>(3 * (betweenButtons.y * CDisplay::width + betweenButtons.x));
    return offset + 3 <= picture.size() && picture[offset] == picture[offset + 2] &&
           static_cast<unsigned char>(picture[offset]) > 200;
}

} // namespace

TEST_F(PackageTest, EverySampleReportsWhatItSays)
{
    for (const Sample& sample : samples)
    {
        SCOPED_TRACE(sample.program);
        collector.Clear();
        Put(fs::path(sample.folder) / sample.program);
        const ProgramResult run = GetPrefix().Run({hostFolder / sample.program}, {}, 30s);
        EXPECT_EQ(run.status, 0) << run.output;
        EXPECT_EQ(GetHits(), sample.hits);
    }
    std::ostringstream config;
    config << std::ifstream(hostFolder / "install.cfg").rdbuf();
    EXPECT_NE(config.str().find("tracking=0"), std::string::npos) << "the last sample's order";
}

// Neither a module of another interface nor one in the current folder is used.
TEST_F(PackageTest, AHostRunsWithoutTheModule)
{
    const fs::path current = fs::current_path();
    fs::create_directory(hostFolder / "current");
    fs::rename(hostFolder / "ZoTracker.dll", hostFolder / "current/ZoTracker.dll");
    fs::copy_file(hostFolder / "install.cfg", hostFolder / "current/install.cfg");
    fs::current_path(hostFolder / "current");
    for (const char* module : {"", "samples/Other.dll"})
        for (const char* sample : {"cpp-loader/cpp_loader.exe", "c/c_host.exe"})
        {
            const fs::path program = Put(fs::path("samples") / sample);
            if (*module != '\0')
                fs::rename(Put(module), hostFolder / "ZoTracker.dll");
            const ProgramResult run = GetPrefix().Run({program}, {}, 30s);
            EXPECT_EQ(run.status, 0) << sample << " with \"" << module << "\": " << run.output;
        }
    fs::current_path(current);
    EXPECT_EQ(GetHits(), std::vector<std::string>());
}

TEST_F(PackageTest, EveryButtonOfTheWindowReports)
{
    const CDisplay display;
    ASSERT_TRUE(display.IsRunning()) << "Xvfb is missing; install the package xvfb";
    const std::vector<std::string> environment{"DISPLAY=" + display.GetName()};
    const fs::path program = Put("samples/window/window.exe");
    auto run = std::async(std::launch::async, [&] {
        return GetPrefix().Run({"explorer.exe", "/desktop=sample,1000x700", program}, {}, 40s,
                               environment);
    });
    while (!IsWindowShown(display) && run.wait_for(200ms) != std::future_status::ready)
    {}
    for (const Place& button : buttons)
        Click(button, environment);
    EXPECT_TRUE(collector.WaitForHits(5, 10s));
    Click(closeBox, environment);
    EXPECT_FALSE(run.get().hung);
    EXPECT_EQ(
        GetHits(),
        (std::vector<std::string>{
            "/__utm.gif utmp=Sample utmdt=Sample",
            "/__utm.gif utmp=Your%20trial%20ends%20soon utmdt=Sample",
            "/__utm.gif utmt=event utmp=Main%20window utmdt=Sample "
            "utme=5(WINDOW*FEATURE*BUTTON)(1)",
            "/__utm.gif utmt=item utmp=Sample utmdt=Sample utmtid=ORDER-7 utmipc=P1 utmipn=Pack "
            "utmipr=10.00 utmiqt=3",
            "/__utm.gif utmt=tran utmp=Sample utmdt=Sample utmtid=ORDER-7 utmtto=30.00"}));
}

} // namespace module
