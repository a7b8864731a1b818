#pragma once

#include <string>
#include <string_view>

namespace collector {

enum class EEndpoint
{
    Classic,     // .../__utm.gif
    Measurement, // .../collect
    Kpi,         // .../piwik.php
    Other
};

// The endpoint that a request target addresses, by the last part of its path.
EEndpoint GetEndpoint(std::string_view target);

// "classic", "measurement", "KPI", "other".
const char* GetName(EEndpoint endpoint);

} // namespace collector
