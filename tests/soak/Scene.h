#pragma once

#include "tests/module/ModuleTest.h"
#include "tests/unit/TemporaryFolder.h"

#include <functional>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace soak {

// One host with the real module, a collector and an installation of its own.
class CStay : public module::CModuleTest, public Folder
{
public:
    // Writes an install.cfg that sends everything to the collector and keeps the history in the
    // host's own folder "content". With the measurement protocol the collector listens on port 443,
    // where that tracker always sends.
    explicit CStay(bool measurementProtocol = false);
    ~CStay() override;

    // The calling thread's. A host that is killed in its TLS handshake leaves a semaphore of Wine's
    // taken, for which all hosts beside it in its prefix would wait from then on.
    static module::CWinePrefix& GetPrefix();
    module::ProgramResult RunHost(const std::string& commands, std::chrono::seconds limit) const;

    // Runs the host where there is no network at all, not even the computer's own.
    module::ProgramResult RunOffline(const std::string& commands, std::chrono::seconds limit) const;

    // Starts an HTTP proxy, Debian's tinyproxy, until the stay's end. Returns its port.
    int StartProxy(bool asksForPassword) const;

    // Puts the prefix's registry back and adds the lines of a .reg file.
    void SetRegistry(const std::string& lines) const;

    using CModuleTest::collector;
    std::jthread weather; // until the stay's end

private:
    void TestBody() override {}
};

// What goes wrong around a host, and what the host does meanwhile.
struct Scene
{
    std::string fault;
    std::string where;
    std::function<void(CStay&)> prepare = {};
    std::string commands = {}; // before its end
    std::vector<std::string> ends = {""};
    bool measurementProtocol = false; // one after the other, for there is one port 443
    bool isOffline = false;
};

// With a host that reports hits with every operation and ends while they are under way.
Scene MakeScene(const std::string& fault, const std::string& where,
                const std::function<void(CStay&)>& prepare, bool hasEveryEnd = false);

// Every fault of the network and of servers.
std::vector<Scene> GetNetworkScenes(bool measurementProtocol);

// What is wrong with the computer, and so for all hosts of a prefix: proxies, the registry. One
// after the other.
std::vector<Scene> GetComputerScenes();

// Every kind of broken or hostile file, and of a host's odd calls.
std::vector<Scene> GetHostileScenes();

// A stay that begins, goes on and ends at random, with a random part of the process in the way.
Scene DrawScene(std::mt19937 random);

} // namespace soak
