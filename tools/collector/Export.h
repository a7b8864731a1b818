#pragma once

#include "tools/collector/HitReport.h"

#include <string>
#include <string_view>

namespace collector {

// One format in which hits leave the collector: a head, the hits with a separator between them, and
// a tail.
struct ExportFormat
{
    std::string_view name; // "jsonl", "csv", "har"
    const char* mediaType;
    std::string_view head;
    std::string_view separator;
    std::string_view tail;
    std::string (*write)(const HitReport& report);
};

// Null when there is no format of that name.
const ExportFormat* FindExportFormat(std::string_view name);

} // namespace collector
