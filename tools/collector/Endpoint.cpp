#include "tools/collector/Endpoint.h"

namespace collector {

EEndpoint GetEndpoint(std::string_view target)
{
    const std::string_view path = target.substr(0, target.find('?'));
    if (path.ends_with("/__utm.gif"))
        return EEndpoint::Classic;
    if (path.ends_with("/collect"))
        return EEndpoint::Measurement;
    return path.ends_with("/piwik.php") ? EEndpoint::Kpi : EEndpoint::Other;
}

const char* GetName(EEndpoint endpoint)
{
    switch (endpoint)
    {
    case EEndpoint::Classic:
        return "classic";
    case EEndpoint::Measurement:
        return "measurement";
    case EEndpoint::Kpi:
        return "KPI";
    case EEndpoint::Other:
        break;
    }
    return "other";
}

} // namespace collector
