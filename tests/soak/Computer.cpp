#include "tests/soak/Scene.h"
#include "tools/collector/Socket.h"

#include <sys/socket.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace soak {

namespace {

// What the module reads, here for the host "Tidy Desk".
const char* const registryKeys[] = {
    "{7C2A9E14-3F60-4b8d-92E5-A1D4706B3C58}", "{A3D17F52-6B0E-4C19-8E2A-5F71C03B9D64}",
    "{5E93C0A7-2D41-4F86-B7C9-03E8D12A6F95}\\46f734e13099f6f6170911a3d254a099",
    "{5E93C0A7-2D41-4F86-B7C9-03E8D12A6F95}\\2_Tidy Desk"};
const char* const registryNames[] = {"ID", "CID", "FV", "LV", "CV", "SID", "PVC", "LPV"};

const struct
{
    const char* fault;
    std::string value; // as in a .reg file
} brokenValues[] = {
    {"a number", "dword:00000007"},
    {"binary", "hex:00,d8,80"},
    {"half a unit", "hex(1):41"},
    {"no bytes", "hex(1):"},
    {"no end", "hex(1):41,00,42,00"},
    {"variables, no end", "hex(2):25,00,50,00,41,00,54,00,48,00,25,00"},
    {"a megabyte", '"' + std::string(1 << 20, 'x') + '"'},
};

// Gives everything that value, in both views; removes it when the value is empty.
std::string MakeValueLines(const std::string& value)
{
    std::string lines;
    for (const std::string view : {"", "Wow6432Node\\"})
        for (const char* key : registryKeys)
        {
            lines += value.empty() ? "[-" : "[";
            lines += "HKEY_LOCAL_MACHINE\\Software\\Classes\\" + view + "CLSID\\" + key + "]\r\n";
            for (const std::string name : registryNames)
                if (!value.empty())
                    lines += '"' + name + "\"=" + value + "\r\n";
        }
    return lines;
}

std::string MakeProxyLines(int port)
{
    return "[HKEY_CURRENT_USER\\Software\\Microsoft\\Windows\\CurrentVersion\\Internet "
           "Settings]\r\n"
           "\"ProxyServer\"=\"127.0.0.1:" +
           std::to_string(port) + "\"\r\n\"ProxyEnable\"=dword:" + (port > 0 ? "1\r\n" : "0\r\n");
}

Scene MakeProxyScene(const std::string& what, const std::function<int(CStay&)>& start)
{
    const auto prepare = [=](CStay& stay) { stay.SetRegistry(MakeProxyLines(start(stay))); };
    return MakeScene("a proxy that " + what, "proxy", prepare, true);
}

} // namespace

CStay::~CStay()
{
    pid_t proxy = 0;
    if (std::ifstream(PathOf("proxy.pid")) >> proxy)
        ::kill(proxy, SIGTERM);
}

int CStay::StartProxy(bool asksForPassword) const
{
    const int port = collector::CRefusingPort().GetPort();
    Write("proxy.conf", "Port " + std::to_string(port) + "\nListen 127.0.0.1\nAllow 127.0.0.1\n" +
                            "Timeout 60\nPidFile \"" + PathOf("proxy.pid") + "\"\n" +
                            (asksForPassword ? "BasicAuth user secret\n" : ""));
    if (std::system(("tinyproxy -c " + PathOf("proxy.conf")).c_str()) != 0)
        throw std::runtime_error("tinyproxy does not start; is tinyproxy-bin there?");
    return port;
}

void CStay::SetRegistry(const std::string& lines) const
{
    Write("values.reg", "Windows Registry Editor Version 5.00\r\n\r\n" + MakeValueLines("") +
                            MakeProxyLines(0) + lines);
    const auto run = GetPrefix().Run({"reg.exe", "import", "Z:" + PathOf("values.reg")});
    if (run.status != 0)
        throw std::runtime_error("cannot change the registry: " + run.output);
}

std::vector<Scene> GetComputerScenes()
{
    std::vector<Scene> scenes;
    for (const bool measurementProtocol : {false, true})
        for (const auto& broken : brokenValues)
        {
            const auto prepare = [&](CStay& stay) {
                stay.SetRegistry(MakeValueLines(broken.value));
            };
            scenes.push_back(MakeScene(broken.fault, "registry", prepare));
            scenes.back().measurementProtocol = measurementProtocol;
        }
    static const collector::CSocket silent = collector::BindLoopback(0);
    ::listen(silent.Get(), SOMAXCONN);
    scenes.push_back(MakeProxyScene("works", [](CStay& stay) { return stay.StartProxy(false); }));
    scenes.push_back(
        MakeProxyScene("asks for a password", [](CStay& stay) { return stay.StartProxy(true); }));
    scenes.push_back(
        MakeProxyScene("says nothing", [](CStay&) { return collector::GetBoundPort(silent); }));
    scenes.push_back(MakeProxyScene("refuses", [](CStay&) { return 1; }));
    return scenes;
}

} // namespace soak
