#pragma once

#include "tests/module/WinePrefix.h"
#include "tools/collector/Collector.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace module {

// What an end may take, in milliseconds.
inline constexpr int releaseLimit = 3000;
inline constexpr int unloadLimit = 2000;
inline constexpr int blockLimit = 500; // of other threads of the host, meanwhile

// The real ZoTracker.dll in a real host under Wine, reporting to a collector in this process.
//
// All cases of a program share one Wine prefix.
class CModuleTest : public testing::Test
{
protected:
    static void TearDownTestSuite() { prefix.reset(); }

    // Starts the collector, on any free port for 0, and puts host and module into a folder of their
    // own.
    explicit CModuleTest(int port = 0);
    ~CModuleTest() override;

    static CWinePrefix& GetPrefix();

    // Writes the host's install.cfg; lines end in "\n".
    void PutConfig(const std::string& text) const;

    // A configuration that reports to the collector with tracking on, and more lines of the section
    // "install".
    std::string MakeConfig(const std::string& installLines = {}) const;

    // What makes the measurement protocol's the main tracker. It reports to port 443, whatever its
    // address says.
    static constexpr const char* measurementSection =
        "[UA]\nEnabled=1\nId=UA-7\nURL=https://127.0.0.1/collect\n";

    // Runs the host with the given commands, one a line. Its status is 0 only if it also saw the
    // module call nothing that it must not.
    ProgramResult RunHost(const std::string& commands,
                          std::chrono::seconds limit = std::chrono::seconds(60)) const;

    std::filesystem::path hostFolder;
    collector::CCollector collector;

private:
    static std::optional<CWinePrefix> prefix;
};

// Fails the case unless the host has ended by itself, and each release, each unloading and each
// wait of the host's other threads that it printed was as short as it has to be.
void ExpectCleanEnd(const ProgramResult& run);

} // namespace module
