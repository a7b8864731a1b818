#pragma once

#include "tests/module/WinePrefix.h"

#include <csignal>
#include <cstdio>
#include <stdexcept>

namespace module {

// An X server without a screen, on a display number of its own choice (Debian package xvfb).
class CDisplay
{
public:
    static constexpr int width = 1000;
    static constexpr int height = 700;

    CDisplay()
    {
        int number = 0;
        if (std::fscanf(output, "%d %d", &server, &number) != 2)
            throw std::runtime_error("Xvfb is missing; install the package xvfb");
        environment = {"DISPLAY=:" + std::to_string(number)};
    }
    ~CDisplay()
    {
        ::kill(server, SIGTERM);
        ::pclose(output);
    }
    CDisplay(const CDisplay&) = delete;
    CDisplay& operator=(const CDisplay&) = delete;

    // What is on it just now: 3 bytes a pixel (Debian package imagemagick).
    std::string TakePicture() const
    {
        return RunProgram({"import", "-window", "root", "-depth", "8", "rgb:-"}, environment, {},
                          std::chrono::seconds(10))
            .output;
    }

    std::vector<std::string> environment; // of the programs that use it

private:
    FILE* const output = // the server's process number, its display's
        ::popen("echo $$; exec Xvfb -displayfd 1 -screen 0 1000x700x24 -nolisten tcp 2> /dev/null",
                "r");
    pid_t server = -1;
};

} // namespace module
