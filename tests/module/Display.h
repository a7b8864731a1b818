#pragma once

#include <sys/types.h>

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

    bool IsRunning() const { return !name.empty(); }
    std::string GetName() const { return ":" + name; }

    // What is on the display just now: 3 bytes a pixel (Debian package imagemagick).
    std::string TakePicture() const;

private:
    pid_t server = -1;
    std::string name;
};

} // namespace module
