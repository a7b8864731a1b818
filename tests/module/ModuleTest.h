#pragma once

#include "tests/module/WinePrefix.h"
#include "tools/collector/Collector.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace module {

// The real ZoTracker.dll in a real host under Wine, reporting to a collector in this process.
//
// All cases of a program share one Wine prefix; ResetPrefix() gives a case a fresh one.
class CModuleTest : public testing::Test
{
protected:
    static void TearDownTestSuite() { prefix.reset(); }

    // Starts the collector and puts host and module into a folder of their own.
    CModuleTest();
    ~CModuleTest() override;

    static void ResetPrefix() { prefix.reset(); }
    static CWinePrefix& GetPrefix();

    // Writes the host's install.cfg; lines end in "\n".
    void PutConfig(const std::string& text) const;

    // A configuration that reports to the collector with tracking on, and more lines of the section
    // "install".
    std::string MakeConfig(const std::string& installLines = {}) const;

    // Runs the host with the given commands, one a line. Its status is 0 only if it also saw the
    // module call nothing that it must not.
    ProgramResult RunHost(const std::string& commands,
                          std::chrono::seconds limit = std::chrono::seconds(60)) const;

    // The targets of the hits so far, in order.
    std::vector<std::string> GetTargets() const;

    std::filesystem::path hostFolder;
    collector::CCollector collector;

private:
    static std::optional<CWinePrefix> prefix;
};

// The number of milliseconds that the host prints behind `what`; fails the case when it does not.
int GetMilliseconds(const ProgramResult& result, const std::string& what);

// The value of a query parameter as it stands; fails the case when it is missing.
std::string GetParameter(const std::string& target, const std::string& key);

// Where the preset "windows" has built.
std::filesystem::path GetWindowsBuild();

} // namespace module
