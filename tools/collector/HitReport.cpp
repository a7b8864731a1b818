#include "tools/collector/HitReport.h"

#include <algorithm>

namespace collector {

std::string_view GetName(ESeverity severity)
{
    switch (severity)
    {
    case ESeverity::Note:
        return "note";
    case ESeverity::Warning:
        return "warning";
    case ESeverity::Error:
        return "error";
    case ESeverity::Valid:
        break;
    }
    return "valid";
}

std::vector<std::string_view> ListCodes(const HitReport& report)
{
    std::vector<std::string_view> codes;
    for (const Verdict& verdict : report.verdicts)
        if (std::find(codes.begin(), codes.end(), verdict.code) == codes.end())
            codes.push_back(verdict.code);
    return codes;
}

ESeverity GetSeverity(const HitReport& report)
{
    ESeverity heaviest = ESeverity::Valid;
    for (const Verdict& verdict : report.verdicts)
        heaviest = std::max(heaviest, verdict.severity);
    return heaviest;
}

} // namespace collector
