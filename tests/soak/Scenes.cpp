#include "tests/soak/Scene.h"

#include "tools/collector/Faults.h"

#include <fstream>

namespace soak {

namespace fs = std::filesystem;

namespace {

const std::string release = "release\nblocked\n";
const std::string unload = "unload\ngone 1\nblocked\n";
const std::string leave = "exit\n";

// The hits are in flight when the end comes: a worker looks at its queue every two seconds.
const std::string busyDay = "initialize\nrepeat 2 pageview\nevent Scan Start\nmessage Hello\n"
                            "purchase Pack P1 10.00 A-7 3\nsleep 2600\n";

// As the collector's faults are described; "" is none.
const char* const faults[] = {
    "",
    "close-before-tls",
    "stall-tls",
    "unknown-certificate",
    "wrong-host",
    "expired-certificate",
    "no-answer",
    "stall",
    "wait:700",
    "drip:400",
    "cut:10",
    "length:3",
    "length:99999999999",
    "length:-1",
    "no-length:100000",
    "big:70",
    "status:204",
    "status:304",
    "status:400",
    "status:404",
    "status:407",
    "status:500",
    "status:503",
    "redirect:https://127.0.0.1:1/__utm.gif",
    "redirect:http://127.0.0.1:1/",
    "redirect:/again",
    "redirect:https://no.such.host.invalid/",
};

Scene MakeNetworkScene(const std::string& fault)
{
    return {fault.empty() ? "none" : fault,
            "server",
            [fault](CStay& stay) {
                if (!fault.empty())
                    collector::OrderFault(stay.GetServer(), fault);
            },
            busyDay,
            {release, unload, leave}};
}

// A file of the host's with odd bytes in it.
Scene MakeFileScene(const std::string& what, const std::string& name, const std::string& bytes)
{
    return {what, name, [=](CStay& stay) { stay.Write(name, bytes); }, busyDay, {release}};
}

std::string MakeUtf16(const std::string& text, bool bigEndian)
{
    std::string bytes = bigEndian ? "\xfe\xff" : "\xff\xfe";
    for (const char unit : text)
        bytes += bigEndian ? std::string{'\0', unit} : std::string{unit, '\0'};
    return bytes;
}

std::string Repeat(const std::string& part, std::size_t count)
{
    std::string text;
    text.reserve(part.size() * count);
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
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n<root><FPa>1</FPa></root>";

} // namespace

CStay::CStay(bool measurementProtocol)
{
    fs::create_directory(At("content"));
    const std::string content = "UserContentPath=Z:" + At("content").string() + "\\\n";
    PutConfig(MakeConfig(content));
    if (!measurementProtocol)
        return;
    collector::CollectorSettings settings;
    settings.port = 443;
    secure.emplace(collector::CAuthority(module::CWinePrefix::GetAuthorityFolder()), settings);
    PutConfig("[install]\ntracking=1\n" + content +
              "[web]\nPIWIKURL=https://127.0.0.1/piwik.php\n"
              "[UA]\nEnabled=1\nId=UA-7\nURL=https://127.0.0.1/collect\n");
}

void CStay::SetProxy(const std::string& address)
{
    const std::string key = "HKCU\\Software\\Microsoft\\Windows\\CurrentVersion\\Internet Settings";
    GetPrefix().Run({"reg.exe", "add", key, "/v", "ProxyEnable", "/t", "REG_DWORD", "/d",
                     address.empty() ? "0" : "1", "/f"});
    GetPrefix().Run({"reg.exe", "add", key, "/v", "ProxyServer", "/d", address, "/f"});
}

void CStay::Write(const std::string& name, const std::string& bytes) const
{
    std::ofstream(At(name), std::ios::binary) << bytes;
}

void CStay::Configure(const std::string& lines) const
{
    std::ofstream(At("install.cfg"), std::ios::binary | std::ios::app) << lines;
}

std::vector<Scene> GetNetworkScenes()
{
    std::vector<Scene> scenes;
    for (const char* const fault : faults)
        scenes.push_back(MakeNetworkScene(fault));
    scenes.push_back({"refusing",
                      "server",
                      [](CStay& stay) { stay.GetServer().Refuse(); },
                      busyDay,
                      {release, unload, leave}});
    scenes.push_back({"no such name",
                      "GAURL, PIWIKURL",
                      [](CStay& stay) {
                          stay.Write("install.cfg", config +
                                                        "GAURL=https://no.such.host.invalid/a?\r\n"
                                                        "[web]\r\n"
                                                        "PIWIKURL=https://no.such.host.invalid/b");
                      },
                      busyDay,
                      {release, unload, leave}});
    return scenes;
}

std::vector<Scene> GetHostileScenes()
{
    std::vector<Scene> scenes{
        MakeFileScene("binary", "install.cfg", MakeBinary(100'000)),
        MakeFileScene("UTF-16", "install.cfg", MakeUtf16(config, false)),
        MakeFileScene("UTF-16, big endian", "install.cfg", MakeUtf16(config, true)),
        MakeFileScene("100 MB", "install.cfg", config + Repeat("key=value\r\n", 9'000'000)),
        MakeFileScene("a value of a megabyte", "install.cfg",
                      config + "PHASH=" + std::string(1 << 20, 'x') + "\r\n"),
        MakeFileScene("binary", "content/tallyhive.xml", MakeBinary(100'000)),
        MakeFileScene("100,000 levels", "content/tallyhive.xml", Repeat("<a>", 100'000)),
        MakeFileScene("7 MB of entries", "content/tallyhive.xml",
                      "<root>" + Repeat("<FPabc>1</FPabc>", 450'000) + "</root>"),
        MakeFileScene("100 MB", "content/tallyhive.xml", Repeat("<FPabc>1</FPabc>", 6'500'000)),
        MakeFileScene("a COUNT that lies", "content/tallyhive.dat",
                      "[events]\r\nCOUNT=2147483647\r\nFP0=a\r\n"),
        MakeFileScene("binary", "content/tallyhive.dat", MakeBinary(100'000)),
    };
    for (std::size_t cut = 0; cut < history.size(); cut += 9)
        scenes.push_back(
            MakeFileScene("cut short", "content/tallyhive.xml", history.substr(0, cut)));
    const auto replace = [&](const char* what, const char* name, auto change) {
        scenes.push_back({what,
                          name,
                          [=](CStay& stay) {
                              fs::remove_all(stay.At(name));
                              change(stay.At(name));
                          },
                          busyDay,
                          {release}});
    };
    replace("a folder", "install.cfg", [](const fs::path& path) { fs::create_directory(path); });
    replace("not there", "install.cfg", [](const fs::path&) {});
    replace("not there", "content", [](const fs::path&) {});
    replace("a file", "content", [](const fs::path& path) { std::ofstream(path) << "x"; });
    replace("a folder", "content/tallyhive.xml",
            [](const fs::path& path) { fs::create_directory(path); });
    replace("full", "content", [](const fs::path& path) { fs::create_symlink("/dev/full", path); });
    scenes.push_back({"longer than 260",
                      "UserContentPath",
                      [](CStay& stay) {
                          stay.Configure("[install]\r\nUserContentPath=C:\\" +
                                         std::string(300, 'x') + "\\\r\n");
                      },
                      busyDay,
                      {release}});
    const auto call = [&](const char* what, const std::string& commands) {
        scenes.push_back({what, "calls", [](CStay&) {}, commands, {release, unload, leave}});
    };
    call("everything odd", "hostile\nsleep 2300\n");
    call("everything odd, 16 threads", "threads 16 hostile\n");
    call("16 threads, before and during Initialize",
         "threads 16 pageview\nthreads 16 initialize\nthreads 16 event a b\n");
    call("more releases than gets", "repeat 3 pageview\nthreads 8 release\nrelease\nrelease\n");
    call("a product name of a megabyte", "product " + std::string(1 << 20, 'n') + "\npageview\n");
    return scenes;
}

Scene DrawScene(std::mt19937& random)
{
    const auto draw = [&](int most) { return static_cast<int>(random() % (most + 1u)); };
    const auto sleep = [&](int most) { return "sleep " + std::to_string(draw(most)) + "\n"; };
    const std::string hold = "hold " + std::to_string(draw(2000)) + " ";
    const char* const fault = faults[random() % std::size(faults)];
    Scene scene = MakeNetworkScene(fault);
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
