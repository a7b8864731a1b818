#include "tools/collector/Decode.h"

#include "tools/collector/ClassicFields.h"
#include "tools/collector/FieldNames.h"
#include "tools/collector/KpiFields.h"
#include "tools/collector/MeasurementFields.h"

#include <initializer_list>

namespace collector {

namespace {

std::string_view GetQuery(std::string_view target)
{
    const std::size_t mark = target.find('?');
    return mark == std::string_view::npos ? std::string_view() : target.substr(mark + 1);
}

void AppendWord(std::string& text, const std::string& separator, const std::string& word)
{
    if (word.empty())
        return;
    if (!text.empty())
        text += separator;
    text += word;
}

std::string DescribeEvent(const DecodedHit& hit)
{
    std::string text;
    for (const char* name : {"event category", "event action", "event label"})
        AppendWord(text, " / ", GetField(hit, name));
    const std::string value = GetField(hit, "event value");
    return value.empty() ? text : text + " (" + value + ')';
}

} // namespace

DecodedHit DecodeHit(const Hit& hit)
{
    const EEndpoint endpoint = GetEndpoint(hit.target);
    const std::vector<Field> query = SplitQuery(GetQuery(hit.target));
    switch (endpoint)
    {
    case EEndpoint::Classic:
        return DecodeClassic(query);
    case EEndpoint::Measurement:
        return DecodeMeasurement(query, SplitQuery(hit.body));
    case EEndpoint::Kpi:
        return DecodeKpi(query);
    case EEndpoint::Other:
        break;
    }
    return {endpoint, "request", NameFields(query, {})};
}

std::string GetField(const DecodedHit& hit, std::string_view name)
{
    for (const Field& field : hit.fields)
        if (field.name == name)
            return field.value;
    return {};
}

std::string DescribeHit(const DecodedHit& hit)
{
    static constexpr std::initializer_list<const char*> tellingFields[] = {
        {"custom variable slot", "custom variable name", "custom variable value"},
        {"item name", "unit price", "quantity"},
        {"order id", "total"},
        {"page"},
        {"product"},
    };
    std::string text = DescribeEvent(hit);
    for (const auto& names : tellingFields)
    {
        if (!text.empty())
            break;
        for (const char* name : names)
            AppendWord(text, " ", GetField(hit, name));
    }
    return text;
}

} // namespace collector
