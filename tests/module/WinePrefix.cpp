#include "tests/module/WinePrefix.h"

#include "tools/collector/Authority.h"

#include <sys/wait.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace module {

namespace fs = std::filesystem;

namespace {

const fs::path sourceFolder = ZO_SOURCE_FOLDER;
const fs::path buildFolder = sourceFolder / "build";
const char* const server = "/usr/lib/wine/wineserver64";

std::string Quote(const std::string& word) { return " '" + word + "'"; }

void RunTool(const std::vector<std::string>& command)
{
    const ProgramResult result = RunProgram(command, {}, {}, std::chrono::minutes(3));
    if (result.status != 0)
        throw std::runtime_error(command[0] + ": " + result.output);
}

} // namespace

fs::path MakeTemporaryFolder(const std::string& purpose)
{
    std::string name = fs::temp_directory_path() / ("zotracker-" + purpose + "-XXXXXX");
    if (::mkdtemp(name.data()) == nullptr)
        throw std::runtime_error("cannot make a temporary folder");
    return name;
}

// By files, for processes that the program leaves behind, such as Wine's services, may hold a pipe
// open for longer.
ProgramResult RunProgram(const std::vector<std::string>& command,
                         const std::vector<std::string>& environment, const std::string& input,
                         std::chrono::seconds limit)
{
    const fs::path folder = MakeTemporaryFolder("run");
    std::ofstream(folder / "in", std::ios::binary) << input;
    std::string line = "env";
    for (const std::string& variable : environment)
        line += Quote(variable);
    line += " timeout -s KILL " + std::to_string(limit.count());
    for (const std::string& word : command)
        line += Quote(word);
    line += " <" + Quote(folder / "in") + " >" + Quote(folder / "out") + " 2>&1";
    const int status = std::system(line.c_str());
    ProgramResult result;
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    result.hung = result.status == 128 + SIGKILL;
    std::ostringstream output;
    output << std::ifstream(folder / "out", std::ios::binary).rdbuf();
    result.output = output.str();
    fs::remove_all(folder);
    return result;
}

// A copy of a prefix that all programs share, for making one takes long.
CWinePrefix::CWinePrefix() : folder(MakeTemporaryFolder("wine"))
{
    const fs::path tool = sourceFolder / "tools/wine-prefix";
    const fs::path base = buildFolder / "wine-base";
    RunTool({tool, base, GetWindowsBuild() / "tools/trust/zotrust.exe",
             collector::CAuthority(GetAuthorityFolder()).GetDerPath()});
    RunTool({tool, "--from", base, folder});
    // Programs that started at once would race for making it, and for starting Wine's services.
    RunProgram({server, "-p"}, {"WINEPREFIX=" + folder.string()}, {}, std::chrono::seconds(10));
    Run({"cmd.exe", "/c", "exit"});
}

CWinePrefix::~CWinePrefix()
{
    RunProgram({server, "-k"}, {"WINEPREFIX=" + folder.string()}, {}, std::chrono::seconds(10));
    std::error_code ignored;
    fs::remove_all(folder, ignored);
}

ProgramResult CWinePrefix::Run(const std::vector<std::string>& command, const std::string& input,
                               std::chrono::seconds limit,
                               const std::vector<std::string>& environment) const
{
    std::vector<std::string> whole{sourceFolder / "cmake/wine"};
    whole.insert(whole.end(), command.begin(), command.end());
    std::vector<std::string> variables{"WINEPREFIX=" + folder.string()};
    variables.insert(variables.end(), environment.begin(), environment.end());
    return RunProgram(whole, variables, input, limit);
}

fs::path GetWindowsBuild() { return buildFolder / "windows"; }

fs::path CWinePrefix::GetAuthorityFolder() { return buildFolder / "authority"; }

} // namespace module
