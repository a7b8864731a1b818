#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

namespace collector {

// What the program was told on its command line.
struct Options
{
    int port = 0; // 0: any free one
    std::filesystem::path folder = "collector";
    std::filesystem::path portFile;  // empty: none
    std::size_t until = 0;           // hits to wait for; 0: no end
    std::chrono::seconds timeout{0}; // 0: none
    std::vector<std::string> faults;
    bool quiet = false;
    bool help = false;
};

// Throws std::invalid_argument with a message for the user.
Options ParseOptions(const std::vector<std::string>& arguments);

std::string WriteHelp();

// The decimal number, which lies between both bounds. Throws std::invalid_argument.
int ParseNumber(const std::string& text, int least, int most);

} // namespace collector
