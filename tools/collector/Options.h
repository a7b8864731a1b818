#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

namespace collector {

enum class ECommand
{
    Serve,  // show hits as they arrive
    Read,   // decode and check logs
    Expect, // run a host and compare its hits with a plan
    Help
};

// What the program was told on its command line.
struct Options
{
    ECommand command = ECommand::Serve;
    int port = 0; // 0: any free one
    std::filesystem::path folder = "collector";
    std::filesystem::path portFile; // empty: none
    int pagePort = -1;              // 0: any free one; -1: no page
    std::filesystem::path pagePortFile;
    std::string database;            // empty: in memory
    std::string output;              // empty: none; "-": standard output
    std::string junit;               // empty: none
    std::size_t until = 0;           // hits to wait for; 0: no end
    std::chrono::seconds timeout{0}; // 0: none
    std::vector<std::string> faults;
    std::vector<std::string> files; // to read; "-": standard input
    std::string plan;
    std::vector<std::string> hostArguments; // the host and what it is told
    bool quiet = false;
};

// Throws std::invalid_argument with a message for the user.
Options ParseOptions(const std::vector<std::string>& arguments);

std::string WriteHelp();

// The decimal number, which lies between both bounds. Throws std::invalid_argument.
int ParseNumber(const std::string& text, int least, int most);

} // namespace collector
