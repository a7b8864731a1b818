#include "tools/collector/MeasurementFields.h"

#include "tools/collector/FieldNames.h"

namespace collector {

namespace {

constexpr FieldName names[] = {
    {"v", "version"},
    {"tid", "tracking id"},
    {"aip", "anonymise address"},
    {"ds", "data source"},
    {"cid", "client id"},
    {"uid", "user id"},
    {"cs", "campaign source"},
    {"cn", "campaign name"},
    {"cm", "campaign medium"},
    {"sr", "screen"},
    {"ul", "language"},
    {"cd", "screen name"},
    {"t", "hit"},
    {"dp", "page"},
    {"ec", "event category"},
    {"ea", "event action"},
    {"el", "event label"},
    {"ev", "event value"},
    {"ti", "order id"},
    {"ta", "affiliation"},
    {"tr", "total"},
    {"in", "item name"},
    {"ip", "unit price"},
    {"iq", "quantity"},
    {"sc", "session"},
    {"z", "cache buster"},
};

} // namespace

DecodedHit DecodeMeasurement(const std::vector<Field>& query, const std::vector<Field>& payload)
{
    DecodedHit decoded{EEndpoint::Measurement, {}, NameFields(payload, names)};
    for (Field& field : NameFields(query, names))
        decoded.fields.push_back(std::move(field));
    decoded.kind = GetField(decoded, "hit");
    if (decoded.kind.empty())
        decoded.kind = "request";
    return decoded;
}

} // namespace collector
