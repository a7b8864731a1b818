#pragma once

#include <span>
#include <string_view>

namespace collector {

// A file of the folder page/, built into the program.
struct PageFile
{
    std::string_view name; // "index.html"
    std::string_view content;
};

std::span<const PageFile> GetPageFiles();

} // namespace collector
