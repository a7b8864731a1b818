#include "tests/module/WinePrefix.h"

#include "tools/collector/Authority.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <stdexcept>

namespace module {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

namespace {

const fs::path sourceFolder = ZO_SOURCE_FOLDER;
const fs::path buildFolder = sourceFolder / "build";

[[noreturn]] void Execute(const std::vector<std::string>& command,
                          const std::vector<std::string>& environment, int input, int output)
{
    ::setpgid(0, 0);
    ::dup2(input, STDIN_FILENO);
    ::dup2(output, STDOUT_FILENO);
    ::dup2(output, STDERR_FILENO);
    for (const std::string& variable : environment)
        ::putenv(const_cast<char*>(variable.c_str()));
    std::vector<char*> arguments;
    for (const std::string& argument : command)
        arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);
    ::execvp(arguments[0], arguments.data());
    ::_exit(127);
}

// Collects what the child writes until it has ended. Processes that it leaves behind, such as
// Wine's services, may hold the pipe open for longer.
void ReadOutput(int pipe, pid_t child, Clock::time_point deadline, ProgramResult& result)
{
    int status = 0;
    for (bool ended = false;;)
    {
        pollfd ready{pipe, POLLIN, 0};
        ::poll(&ready, 1, ended ? 0 : 20);
        char buffer[4096];
        const ssize_t count = (ready.revents & POLLIN) ? ::read(pipe, buffer, sizeof buffer) : 0;
        if (count > 0)
            result.output.append(buffer, static_cast<std::size_t>(count));
        else if (ended)
            break;
        ended = ended || ::waitpid(child, &status, WNOHANG) == child;
        if (!ended && Clock::now() > deadline)
        {
            result.hung = true;
            ::kill(-child, SIGKILL);
            ended = ::waitpid(child, &status, 0) == child;
        }
    }
    result.status = !result.hung && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

void WriteAll(int pipe, const std::string& text)
{
    for (std::size_t done = 0; done < text.size();)
    {
        const ssize_t count = ::write(pipe, text.data() + done, text.size() - done);
        if (count <= 0)
            return;
        done += static_cast<std::size_t>(count);
    }
}

void RunOrThrow(const std::vector<std::string>& command)
{
    const ProgramResult result = RunProgram(command, {}, {}, std::chrono::minutes(3));
    if (result.status != 0)
        throw std::runtime_error(command[0] + ": " + result.output);
}

// The prefix that all others are copies of.
const fs::path& GetBasePrefix()
{
    static const fs::path base = [] {
        const collector::CAuthority authority(CWinePrefix::GetAuthorityFolder());
        const fs::path folder = buildFolder / "wine-base";
        RunOrThrow({sourceFolder / "tools/wine-prefix", folder,
                    buildFolder / "windows/tools/trust/zotrust.exe", authority.GetDerPath()});
        return folder;
    }();
    return base;
}

fs::path MakeTemporaryFolder()
{
    std::string name = fs::temp_directory_path() / "zotracker-wine-XXXXXX";
    if (::mkdtemp(name.data()) == nullptr)
        throw std::runtime_error("cannot make a temporary folder");
    return name;
}

} // namespace

ProgramResult RunProgram(const std::vector<std::string>& command,
                         const std::vector<std::string>& environment, const std::string& input,
                         milliseconds limit)
{
    ::signal(SIGPIPE, SIG_IGN);
    int in[2], out[2];
    if (::pipe2(in, O_CLOEXEC) != 0 || ::pipe2(out, O_CLOEXEC) != 0)
        throw std::runtime_error("no pipe");
    const auto start = Clock::now();
    const pid_t child = ::fork();
    if (child == 0)
        Execute(command, environment, in[0], out[1]);
    ::close(in[0]);
    ::close(out[1]);
    WriteAll(in[1], input);
    ::close(in[1]);
    ProgramResult result;
    ReadOutput(out[0], child, start + limit, result);
    ::close(out[0]);
    result.duration = std::chrono::duration_cast<milliseconds>(Clock::now() - start);
    return result;
}

CWinePrefix::CWinePrefix() : folder(MakeTemporaryFolder())
{
    RunOrThrow({sourceFolder / "tools/wine-prefix", "--from", GetBasePrefix(), folder});
}

CWinePrefix::~CWinePrefix()
{
    RunProgram({"/usr/lib/wine/wineserver64", "-k"}, {"WINEPREFIX=" + folder.string()}, {},
               std::chrono::seconds(10));
    std::error_code ignored;
    fs::remove_all(folder, ignored);
}

ProgramResult CWinePrefix::Run(const std::vector<std::string>& command, const std::string& input,
                               milliseconds limit,
                               const std::vector<std::string>& environment) const
{
    std::vector<std::string> whole{sourceFolder / "cmake/wine"};
    whole.insert(whole.end(), command.begin(), command.end());
    std::vector<std::string> variables{"WINEPREFIX=" + folder.string()};
    variables.insert(variables.end(), environment.begin(), environment.end());
    return RunProgram(whole, variables, input, limit);
}

fs::path CWinePrefix::GetAuthorityFolder() { return buildFolder / "authority"; }

} // namespace module
