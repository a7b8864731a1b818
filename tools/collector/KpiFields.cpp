#include "tools/collector/KpiFields.h"

#include "tools/collector/Decode.h"

#include <nlohmann/json.hpp>
#include <optional>

namespace collector {

namespace {

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

Parameter MakeKpiParameter(const Piece& piece)
{
    Parameter parameter = MakeParameter(EEndpoint::Kpi, piece);
    if (piece.name == "_cvar")
    {
        if (std::optional<std::string> product = FindProduct(parameter.decoded))
            parameter.decoded = std::move(*product);
        else
            parameter.meaning = piece.name;
    }
    return parameter;
}

} // namespace collector
