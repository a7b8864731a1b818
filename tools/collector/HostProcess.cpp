#include "tools/collector/HostProcess.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <spawn.h>
#include <stdexcept>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace collector {

namespace {

// posix_spawn() and its settings, which have to be given back.
class CSpawn
{
public:
    CSpawn()
    {
        ::posix_spawn_file_actions_init(&actions);
        ::posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        ::posix_spawnattr_init(&attributes);
        ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP); // a group to kill
    }
    CSpawn(const CSpawn&) = delete;
    CSpawn& operator=(const CSpawn&) = delete;
    ~CSpawn()
    {
        ::posix_spawn_file_actions_destroy(&actions);
        ::posix_spawnattr_destroy(&attributes);
    }

    pid_t Start(const std::vector<std::string>& arguments, std::vector<char*> environment) const
    {
        std::vector<char*> pointers;
        for (const std::string& argument : arguments)
            pointers.push_back(const_cast<char*>(argument.c_str()));
        pointers.push_back(nullptr);
        environment.push_back(nullptr);
        pid_t process = 0;
        const int error = ::posix_spawnp(&process, pointers[0], &actions, &attributes,
                                         pointers.data(), environment.data());
        if (error != 0)
            throw std::runtime_error("cannot start " + arguments[0] + ": " + std::strerror(error));
        return process;
    }

private:
    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
};

} // namespace

std::optional<int> RunHost(const std::vector<std::string>& arguments,
                           const std::vector<std::string>& environment,
                           std::chrono::seconds timeout)
{
    std::vector<char*> variables;
    for (char** variable = environ; *variable; ++variable)
        variables.push_back(*variable);
    for (const std::string& addition : environment)
        variables.push_back(const_cast<char*>(addition.c_str()));
    const pid_t process = CSpawn().Start(arguments, std::move(variables));
    const auto end = std::chrono::steady_clock::now() + timeout;
    int status = 0;
    pid_t ended = 0;
    while ((ended = ::waitpid(process, &status, WNOHANG)) == 0 || (ended < 0 && errno == EINTR))
    {
        if (timeout.count() > 0 && std::chrono::steady_clock::now() > end)
        {
            ::kill(-process, SIGKILL);
            ::waitpid(process, &status, 0);
            return std::nullopt;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

} // namespace collector
