#include "tests/soak/Scene.h"

#include "tools/collector/Faults.h"

#include <unistd.h>

#include <fstream>
#include <iterator>
#include <memory>
#include <sstream>

namespace soak {

namespace fs = std::filesystem;

namespace {

const std::string release = "release\nblocked\n";
const std::string unload = "unload\ngone 1\nblocked\n";
const std::string leave = "exit\n";
const std::vector<std::string> everyEnd{release, unload, leave};

// The hits are in flight when the end comes: a worker looks at its queue every two seconds.
const std::string busyDay = "initialize\nrepeat 2 pageview\nevent Scan Start\nmessage Hello\n"
                            "purchase Pack P1 10.00 A-7 3\nsleep 2600\n";

const std::vector<std::string> faults = [] {
    std::istringstream words(
        "none close-before-tls stall-tls unknown-certificate wrong-host expired-certificate "
        "no-answer stall wait:700 drip:400 cut:10 length:3 length:99999999999 length:-1 "
        "no-length:100000 big:70 status:204 status:304 status:400 status:404 status:407 status:500 "
        "status:503 redirect:https://127.0.0.1:1/__utm.gif redirect:http://127.0.0.1:1/ "
        "redirect:/again redirect:https://no.such.host.invalid/");
    return std::vector(std::istream_iterator<std::string>(words), {});
}();

Scene MakeNetworkScene(const std::string& fault)
{
    const auto order = [fault](CStay& stay) {
        if (fault != "none")
            collector::OrderFault(stay.collector, fault);
    };
    return MakeScene(fault, "server", order, true);
}

// With one of the host's files changed.
Scene MakeFileScene(const std::string& fault, const std::string& where, const std::string& name,
                    const std::function<void(std::string& bytes)>& change)
{
    return MakeScene(fault, where, [=](CStay& stay) {
        std::string bytes = stay.Read(name);
        change(bytes);
        stay.Write(name, bytes);
    });
}

Scene MakeFileScene(const std::string& fault, const std::string& name, const std::string& bytes)
{
    const auto shared = std::make_shared<const std::string>(bytes);
    return MakeFileScene(fault, name, name, [=](std::string& whole) { whole = *shared; });
}

std::string MakeUtf16(const std::string& text, bool bigEndian = false)
{
    std::string bytes;
    for (const char unit : text)
        bytes += bigEndian ? std::string{'\0', unit} : std::string{unit, '\0'};
    return bytes;
}

std::string Repeat(const std::string& part, std::size_t count)
{
    std::string text;
    for (std::size_t i = 0; i < count; ++i)
        text += part;
    return text;
}

std::string MakeBinary(std::size_t size)
{
    std::mt19937 random(1);
    std::string bytes(size, '\0');
    for (char& byte : bytes)
        byte = static_cast<char>(random());
    return bytes;
}

const std::string config = "[install]\r\ntracking=1\r\n";
const std::string history =
    "<?xml version=\"1.0\" "
    "encoding=\"UTF-8\"?>\n<SimpleXMLElement>\n\t<FPa>1</FPa>\n</SimpleXMLElement>\n";

// --- the host's version resource ----------------------------------------------------------------

// Each block begins with its length, its value's length and its type, two bytes each, and its key.
// The place of all blocks is in the program's header.
const struct
{
    const char* fault;
    std::string key;
    long at; // bytes from the key
    std::string bytes;
} brokenVersions[] = {
    {"none", {'P', 'E', 0, 0}, 24 + 112 + 2 * 8, std::string(8, '\0')},
    {"binary", MakeUtf16("VS_VERSION_INFO"), 0, MakeBinary(400)},
    {"a length of 0", MakeUtf16("VS_VERSION_INFO"), -6, {0, 0}},
    {"a length of 65535", MakeUtf16("VS_VERSION_INFO"), -6, "\xff\xff"},
    {"a value's length of 65535", MakeUtf16("VS_VERSION_INFO"), -4, "\xff\xff"},
    {"an entry's length of 0", MakeUtf16("ProductName"), -6, {0, 0}},
    {"an entry's length of 65535", MakeUtf16("ProductName"), -6, "\xff\xff"},
    {"an entry's value of 65535", MakeUtf16("ProductName"), -4, "\xff\xff"},
    {"a translation of one byte", MakeUtf16("Translation"), -4, {1, 0}},
};

void LengthenContentPath(std::string& lines)
{
    lines.insert(lines.find('\n') + 1, "UserContentPath=C:\\" + std::string(300, 'x') + "\\\r\n");
}

} // namespace

Scene MakeScene(const std::string& fault, const std::string& where,
                const std::function<void(CStay&)>& prepare, bool hasEveryEnd)
{
    return {fault, where, prepare, busyDay, hasEveryEnd ? everyEnd : std::vector{release}};
}

CStay::CStay(bool measurementProtocol)
    : CModuleTest(measurementProtocol ? 443 : 0), Folder{hostFolder}
{
    fs::create_directory(PathOf("content"));
    PutConfig(MakeConfig("UserContentPath=Z:" + PathOf("content") + "\\\n") +
              (measurementProtocol ? measurementSection : ""));
}

module::CWinePrefix& CStay::GetPrefix()
{
    static thread_local module::CWinePrefix own;
    return own;
}

module::ProgramResult CStay::RunHost(const std::string& commands, std::chrono::seconds limit) const
{
    return GetPrefix().Run({PathOf("host.exe"), "--watch"}, commands, limit);
}

// With a server of Wine's of its own, which makes the sockets.
module::ProgramResult CStay::RunOffline(const std::string& commands,
                                        std::chrono::seconds limit) const
{
    const module::CWinePrefix own;
    const std::vector environment{"WINEPREFIX=" + own.GetDriveC().parent_path().string()};
    module::RunProgram({"/usr/lib/wine/wineserver64", "-k"}, environment, {}, limit);
    const std::string user = ::geteuid() == 0 ? "" : "--user --map-current-user";
    return module::RunProgram({"sh", "-c", "exec unshare --net " + user + " \"$@\"", "offline",
                               ZO_SOURCE_FOLDER "/cmake/wine", PathOf("host.exe"), "--watch"},
                              environment, commands, limit);
}

std::vector<Scene> GetNetworkScenes(bool measurementProtocol)
{
    std::vector<Scene> scenes;
    for (const std::string& fault : faults)
        scenes.push_back(MakeNetworkScene(fault));
    const auto refuse = [](CStay& stay) { stay.collector.Refuse(); };
    scenes.push_back(MakeScene("refusing", "server", refuse, true));
    const auto restart = [](CStay& stay) {
        stay.weather = std::jthread([&](const std::stop_token& stop) {
            for (bool isGone = false; !stop.stop_requested(); isGone = !isGone)
            {
                if (isGone)
                    stay.collector.Accept();
                else
                    stay.collector.Refuse();
                std::this_thread::sleep_for(std::chrono::milliseconds(200));
            }
        });
    };
    scenes.push_back(MakeScene("going and coming back", "server", restart, true));
    scenes.push_back(MakeScene(
        "no network", "computer", [](CStay&) {}, true));
    scenes.back().isOffline = true;
    for (Scene& scene : scenes)
        scene.measurementProtocol = measurementProtocol;
    return scenes;
}

std::vector<Scene> GetHostileScenes()
{
    std::vector<Scene> scenes{
        MakeFileScene("binary", "install.cfg", MakeBinary(100'000)),
        MakeFileScene("UTF-16", "install.cfg", "\xff\xfe" + MakeUtf16(config)),
        MakeFileScene("UTF-16, big endian", "install.cfg", "\xfe\xff" + MakeUtf16(config, true)),
        MakeFileScene("100 MB", "install.cfg", config + Repeat("key=value\r\n", 9'000'000)),
        MakeFileScene("a value of a megabyte", "install.cfg",
                      config + "PHASH=" + std::string(1 << 20, 'x') + "\r\n"),
        MakeFileScene("binary", "content/tallyhive.xml", MakeBinary(100'000)),
        MakeFileScene("100,000 levels", "content/tallyhive.xml", Repeat("<a>", 100'000)),
        MakeFileScene("7 MB of entries", "content/tallyhive.xml",
                      "<SimpleXMLElement>" + Repeat("<FPabc>1</FPabc>", 450'000) +
                          "</SimpleXMLElement>"),
        MakeFileScene("100 MB", "content/tallyhive.xml", Repeat("<FPabc>1</FPabc>", 6'500'000)),
        MakeFileScene("a COUNT that lies", "content/tallyhive.dat",
                      "[events]\r\nCOUNT=2147483647\r\nFP0=a\r\n"),
        MakeFileScene("binary", "content/tallyhive.dat", MakeBinary(100'000)),
        MakeFileScene("addresses of no host", "install.cfg",
                      config + "GAURL=https://no.such.host.invalid/a?\r\n"
                               "[web]\r\nPIWIKURL=https://no.such.host.invalid/b"),
        MakeFileScene("longer than 260", "UserContentPath", "install.cfg", &LengthenContentPath),
    };
    for (const auto& broken : brokenVersions)
    {
        const auto damage = [&](std::string& program) {
            const std::size_t at = program.find(broken.key) + static_cast<std::size_t>(broken.at);
            program.replace(at, broken.bytes.size(), broken.bytes);
        };
        scenes.push_back(MakeFileScene(broken.fault, "version of host.exe", "host.exe", damage));
    }
    for (std::size_t cut = 0; cut < history.size(); cut += 9)
        scenes.push_back(
            MakeFileScene("cut short", "content/tallyhive.xml", history.substr(0, cut)));
    const auto replace = [&](const char* what, const char* name, auto change) {
        const auto prepare = [=](CStay& stay) {
            fs::remove_all(stay.PathOf(name));
            change(stay.PathOf(name));
        };
        scenes.push_back(MakeScene(what, name, prepare));
    };
    const auto makeFolder = [](const fs::path& path) { fs::create_directory(path); };
    const auto makeNothing = [](const fs::path&) {};
    replace("a folder", "install.cfg", makeFolder);
    replace("a folder", "content/tallyhive.xml", makeFolder);
    replace("not there", "install.cfg", makeNothing);
    replace("not there", "content", makeNothing);
    replace("a file", "content", [](const fs::path& path) { std::ofstream(path) << "x"; });
    replace("read-only", "content",
            [](const fs::path& path) { fs::create_symlink("/proc/self", path); });
    replace("full", "content", [](const fs::path& path) { fs::create_symlink("/dev/full", path); });
    const auto call = [&](const char* what, const std::string& commands) {
        scenes.push_back({what, "calls", [](CStay&) {}, commands, everyEnd, false});
    };
    call("everything odd", "hostile\nsleep 2300\n");
    call("everything odd, 16 threads", "threads 16 hostile\n");
    call("16 threads, before and during Initialize",
         "threads 16 pageview\nthreads 16 initialize\nthreads 16 event a b\n");
    call("more releases than gets", "repeat 3 pageview\nthreads 8 release\nrelease\nrelease\n");
    call("a product name of a megabyte", "product " + std::string(1 << 20, 'n') + "\npageview\n");
    return scenes;
}

Scene DrawScene(std::mt19937 random)
{
    const auto draw = [&](int most) { return static_cast<int>(random() % (most + 1u)); };
    const auto sleep = [&](int most) { return "sleep " + std::to_string(draw(most)) + "\n"; };
    const std::string hold = "hold " + std::to_string(draw(2000)) + " ";
    Scene scene = MakeNetworkScene(faults[random() % faults.size()]);
    scene.fault = "random moments and faults";
    scene.where = "process, loader's lock, server";
    scene.commands.clear();
    for (int stays = draw(2); stays >= 0; --stays)
    {
        scene.commands += sleep(draw(1) * 300) + "repeat " + std::to_string(draw(20)) +
                          " pageview\nevent a b\n" + sleep(draw(1) * 2500);
        if (stays > 0)
            scene.commands += (draw(1) ? "release\n" : "") + std::string("unload\ngone 20000\n") +
                              (draw(3) ? "load\n" : hold + "load\n");
    }
    const std::string ends[] = {release,
                                unload,
                                leave,
                                "plugin\n" + leave,
                                "threads 2 release\n" + unload,
                                hold + "\nrelease\n",
                                hold + "\n" + leave,
                                "starve " + std::to_string(draw(400)) +
                                    " 5\nthreads 4 event a b\n" + release};
    scene.ends = {ends[random() % std::size(ends)]};
    return scene;
}

} // namespace soak
