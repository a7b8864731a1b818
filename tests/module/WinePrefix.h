#pragma once

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

// Windows programs under Wine, run by native tests.
namespace module {

struct ProgramResult
{
    int status = -1;    // exit status
    bool hung = false;  // ended by us after its time limit
    std::string output; // standard output and standard error
};

// Where the preset "windows" has built.
std::filesystem::path GetWindowsBuild();

// An empty folder of its own.
std::filesystem::path MakeTemporaryFolder(const std::string& purpose);

// Runs a program and waits for it; its whole process group is ended after `limit`.
ProgramResult RunProgram(const std::vector<std::string>& command,
                         const std::vector<std::string>& environment, const std::string& input,
                         std::chrono::seconds limit);

// A fresh Wine prefix with an empty registry and content folder of its own, which trusts the test
// authority. Removed, and its server ended, with this object.
class CWinePrefix
{
public:
    CWinePrefix();
    ~CWinePrefix();
    CWinePrefix(const CWinePrefix&) = delete;
    CWinePrefix& operator=(const CWinePrefix&) = delete;

    ProgramResult Run(const std::vector<std::string>& command, const std::string& input = {},
                      std::chrono::seconds limit = std::chrono::seconds(60),
                      const std::vector<std::string>& environment = {}) const;

    // Drive C of this prefix.
    std::filesystem::path GetDriveC() const { return folder / "drive_c"; }

    // The folder in which the test authority's keys and certificates live.
    static std::filesystem::path GetAuthorityFolder();

private:
    std::filesystem::path folder;
};

} // namespace module
