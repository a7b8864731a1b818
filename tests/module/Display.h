#pragma once

#include <sys/types.h>

#include <cstdio>
#include <string>

namespace module {

// An X server without a screen, on a display number of its own choice (Debian package xvfb).
class CDisplay
{
public:
    static constexpr int width = 1000;
    static constexpr int height = 700;

    CDisplay();
    ~CDisplay();
    CDisplay(const CDisplay&) = delete;
    CDisplay& operator=(const CDisplay&) = delete;

    bool IsRunning() const { return number >= 0; }
    std::string GetName() const { return ":" + std::to_string(number); }

    // What is on the display just now: 3 bytes a pixel (Debian package imagemagick).
    std::string TakePicture() const;

private:
    FILE* output; // the server's process number, its display's
    pid_t server = -1;
    int number = -1;
};

} // namespace module
