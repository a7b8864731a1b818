#include "tools/collector/KpiFields.h"

#include "tools/collector/FieldNames.h"

#include <nlohmann/json.hpp>
#include <optional>

namespace collector {

namespace {

constexpr FieldName names[] = {
    {"send_image", "send image"}, {"rec", "record"},
    {"apiv", "version"},          {"idsite", "site id"},
    {"ua", "user agent"},         {"url", "site"},
    {"uid", "user id"},           {"lang", "language"},
    {"rand", "tick count"},       {"_rcn", "campaign name"},
    {"_rck", "campaign keyword"}, {"e_c", "event category"},
    {"e_a", "event action"},      {"e_n", "event label"},
    {"e_v", "event value"},
};

constexpr std::string_view productHead = R"({"1":["product", ")";
constexpr std::string_view productTail = R"("]})";

// The product name out of the custom variables. The clients write it without escaping, so a quote
// in it makes the text malformed JSON; the name is then what stands between the fixed texts.
std::optional<std::string> FindProduct(const std::string& variables)
{
    if (variables.size() >= productHead.size() + productTail.size() &&
        variables.starts_with(productHead) && variables.ends_with(productTail))
        return variables.substr(productHead.size(),
                                variables.size() - productHead.size() - productTail.size());
    const nlohmann::json parsed = nlohmann::json::parse(variables, nullptr, false);
    if (parsed.is_object())
        for (const nlohmann::json& slot : parsed)
            if (slot.is_array() && slot.size() == 2 && slot[0] == "product" && slot[1].is_string())
                return slot[1].get<std::string>();
    return std::nullopt;
}

} // namespace

DecodedHit DecodeKpi(const std::vector<Field>& query)
{
    DecodedHit decoded{EEndpoint::Kpi, "visit", NameFields(query, names)};
    for (Field& field : decoded.fields)
    {
        if (field.name == "event category")
            decoded.kind = "event";
        if (field.name != "_cvar")
            continue;
        if (const std::optional<std::string> product = FindProduct(field.value))
            field = {"product", *product};
    }
    return decoded;
}

} // namespace collector
