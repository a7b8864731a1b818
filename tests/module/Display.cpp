#include "tests/module/Display.h"

#include "tests/module/WinePrefix.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <stdexcept>

namespace module {

CDisplay::CDisplay()
{
    int pipe[2];
    if (::pipe(pipe) != 0)
        throw std::runtime_error("no pipe");
    const std::string descriptor = std::to_string(pipe[1]);
    server = ::fork();
    if (server == 0)
    {
        const int silence = ::open("/dev/null", O_WRONLY);
        ::dup2(silence, STDERR_FILENO);
        ::close(pipe[0]);
        ::execlp("Xvfb", "Xvfb", "-displayfd", descriptor.c_str(), "-screen", "0", "1000x700x24",
                 "-nolisten", "tcp", nullptr);
        ::_exit(127);
    }
    ::close(pipe[1]);
    for (char digit = 0; ::read(pipe[0], &digit, 1) == 1 && digit != '\n';)
        name += digit;
    ::close(pipe[0]);
}

CDisplay::~CDisplay()
{
    ::kill(server, SIGTERM);
    ::waitpid(server, nullptr, 0);
}

std::string CDisplay::TakePicture() const
{
    return RunProgram({"import", "-display", GetName(), "-window", "root", "-depth", "8", "rgb:-"},
                      {}, {}, std::chrono::seconds(10))
        .output;
}

} // namespace module
