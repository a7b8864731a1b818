#pragma once

#include "tests/module/ModuleTest.h"

#include <functional>
#include <random>
#include <string>
#include <vector>

namespace soak {

// One host with the real module, a collector and an installation of its own, in the prefix that all
// hosts share.
class CStay : public module::CModuleTest
{
public:
    // Writes an install.cfg that sends everything to the collector and keeps the history in the
    // host's own folder "content". With the measurement protocol the collector listens on port 443,
    // where that tracker always sends.
    explicit CStay(bool measurementProtocol = false);

    module::ProgramResult Run(const std::string& commands, std::chrono::seconds limit) const
    {
        return RunHost(commands, limit);
    }

    // Makes the prefix that all share, before the first stay; removes it, after the last one.
    static void PreparePrefix() { GetPrefix(); }
    static void RemovePrefix() { ResetPrefix(); }

    // A file's path below the host's folder.
    std::filesystem::path At(const std::string& name) const { return hostFolder / name; }
    void Write(const std::string& name, const std::string& bytes) const;

    // Another section or line at the end of install.cfg.
    void Configure(const std::string& lines) const;

    collector::CCollector& GetServer() { return secure ? *secure : collector; }

    // Makes `address` ("HOST:PORT") the proxy of the prefix's user, or none when it is empty.
    static void SetProxy(const std::string& address);

private:
    void TestBody() override {}

    std::optional<collector::CCollector> secure;
};

// What goes wrong around a host, and what the host does meanwhile.
struct Scene
{
    std::string fault;
    std::string where;
    std::function<void(CStay&)> prepare;
    std::string commands; // before its end
    std::vector<std::string> ends;
};

// Every fault of the network and of servers.
std::vector<Scene> GetNetworkScenes();

// Every kind of broken or hostile file, and of a host's odd calls.
std::vector<Scene> GetHostileScenes();

// A stay that begins, goes on and ends at random, with a random part of the process in the way.
Scene DrawScene(std::mt19937& random);

} // namespace soak
