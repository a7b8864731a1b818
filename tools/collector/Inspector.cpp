#include "tools/collector/Inspector.h"

#include "tools/collector/Decode.h"
#include "tools/collector/Verdicts.h"

namespace collector {

namespace {

// Which parameters tell product and visitor, by their meaning.
std::pair<std::string_view, std::string_view> GetIdentity(EEndpoint endpoint)
{
    switch (endpoint)
    {
    case EEndpoint::Classic:
        return {"title", "visitor number"};
    case EEndpoint::Measurement:
        return {"screen name", "client id"};
    case EEndpoint::Kpi:
        return {"product", "user id"};
    case EEndpoint::Other:
        break;
    }
    return {};
}

} // namespace

HitReport DecodeReport(Hit request)
{
    DecodedHit decoded = DecodeHit(request);
    HitReport report;
    report.time =
        std::chrono::duration_cast<std::chrono::milliseconds>(request.time.time_since_epoch())
            .count();
    report.tracker = GetName(decoded.endpoint);
    report.endpoint = request.target.substr(0, request.target.find('?'));
    report.sentence = DescribeHit(request, decoded);
    if (decoded.endpoint != EEndpoint::Other)
    {
        const auto [product, visitor] = GetIdentity(decoded.endpoint);
        report.product = GetValue(decoded.parameters, product);
        report.visitor = GetValue(decoded.parameters, visitor);
    }
    CheckTable(request, decoded, report.verdicts);
    CheckServers(decoded, report.verdicts);
    report.kind = std::move(decoded.kind);
    report.parameters = std::move(decoded.parameters);
    report.request = std::move(request);
    return report;
}

HitReport CInspector::Inspect(Hit request)
{
    HitReport report = DecodeReport(std::move(request));
    course.Follow(report);
    return report;
}

} // namespace collector
