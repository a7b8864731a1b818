#include "tests/module/Display.h"

#include "tests/module/WinePrefix.h"

#include <csignal>

namespace module {

CDisplay::CDisplay()
    : output(::popen("echo $$; exec Xvfb -displayfd 1 -screen 0 1000x700x24 -nolisten tcp "
                     "2> /dev/null",
                     "r"))
{
    if (output == nullptr || std::fscanf(output, "%d %d", &server, &number) != 2)
        number = -1;
}

CDisplay::~CDisplay()
{
    if (IsRunning())
        ::kill(server, SIGTERM);
    if (output != nullptr)
        ::pclose(output);
}

std::string CDisplay::TakePicture() const
{
    return RunProgram({"import", "-display", GetName(), "-window", "root", "-depth", "8", "rgb:-"},
                      {}, {}, std::chrono::seconds(10))
        .output;
}

} // namespace module
