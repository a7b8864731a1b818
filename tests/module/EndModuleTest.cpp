#include "tests/module/ModuleTest.h"
#include "tools/collector/Faults.h"

#include <future>
#include <map>

using namespace collector;
using namespace std::chrono_literals;

namespace module {

namespace {

// What a host does when its hits are on their way.
const char* const ends[] = {
    "release\nblocked\n",
    "unload\ngone 6000\nblocked\n",
    "hold 3500\nrelease\nsleep 3500\n", // while another thread holds the loader's lock
    "exit\n",
    "plugin\nexit\n", // with another module's release in it
};

const char* const networks[] = {"idle",      "answering", "wait:700", "refusing",
                                "stall-tls", "stall",     "drip:400"};

// A host's folder and a collector behind such a network; the ends happen at the same time.
class CInstallation : public CModuleTest
{
public:
    CInstallation(const std::string& behaviour, bool isMeasurementProtocol)
        : CModuleTest(isMeasurementProtocol ? 443 : 0), network(behaviour)
    {
        PutConfig(MakeConfig() + (isMeasurementProtocol ? measurementSection : ""));
        if (network == "refusing")
            collector.Refuse();
        else if (network != "idle" && network != "answering")
            OrderFault(collector, network);
    }

    void Start(const std::string& end)
    {
        // A worker looks at its queue every two seconds.
        const char* day = network == "idle" ? "sleep 300\n" : "repeat 3 pageview\nsleep 2300\n";
        runs[end] = std::async(std::launch::async, [this, commands = day + end] {
            return RunHost("blocked\n" + commands, 40s);
        });
    }

    void ExpectCleanEnds()
    {
        for (auto& [end, run] : runs)
        {
            SCOPED_TRACE(network + ", " + end);
            ExpectCleanEnd(run.get());
        }
    }

private:
    void TestBody() override {}

    const std::string network;
    std::map<std::string, std::future<ProgramResult>> runs;
};

} // namespace

using EndModuleTest = CModuleTest;

// The KPI tracker meets each end in each network, each of the main trackers every second one.
TEST_F(EndModuleTest, NothingHangsWhateverTheNetworkDoes)
{
    GetPrefix();
    for (std::size_t i = 0; i < std::size(networks); ++i)
    {
        CInstallation installations[] = {{networks[i], false}, {networks[i], true}};
        for (std::size_t j = 0; j < std::size(ends); ++j)
            installations[(i + j) % 2].Start(ends[j]);
        for (CInstallation& installation : installations)
            installation.ExpectCleanEnds();
    }
}

} // namespace module
