#pragma once

#include <string>
#include <string_view>
#include <vector>

// The host's little command language: words separated by blanks, a word in double quotes may hold
// blanks, "\"" stands for a quote within it and "#" at the start of a word begins a comment.
namespace host {

using Command = std::vector<std::wstring>;

// One line as a command; empty for a blank line or a comment.
Command SplitLine(std::wstring_view line);

// Program arguments as commands; an argument "," ends one.
std::vector<Command> SplitArguments(const std::vector<std::wstring>& arguments);

// What the demonstration does in one run.
const std::vector<Command>& GetDemoScenario();

extern const char* const usage;

} // namespace host
