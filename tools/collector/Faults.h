#pragma once

#include "tools/collector/Collector.h"

#include <string>

namespace collector {

// Orders the fault that "NAME" or "NAME:ARGUMENT" describes, for everything that follows. Throws
// std::invalid_argument with a message for the user.
void OrderFault(CCollector& collector, const std::string& description);

// A line for each fault: its name, its argument and what it does.
std::string ListFaults();

} // namespace collector
