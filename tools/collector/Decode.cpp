#include "tools/collector/Decode.h"

#include "tools/collector/ClassicFields.h"
#include "tools/collector/KpiFields.h"
#include "tools/collector/RequestTable.h"

namespace collector {

namespace {

std::string_view GetQuery(std::string_view target)
{
    const std::size_t mark = target.find('?');
    return mark == std::string_view::npos ? std::string_view() : target.substr(mark + 1);
}

void AppendAll(EEndpoint endpoint, std::string_view query, std::vector<Parameter>& parameters)
{
    for (const Piece& piece : SplitQuery(query))
        if (endpoint == EEndpoint::Classic)
            AppendClassic(piece, parameters);
        else if (endpoint == EEndpoint::Kpi)
            parameters.push_back(MakeKpiParameter(piece));
        else
            parameters.push_back(MakeParameter(endpoint, piece));
}

std::string GetKind(EEndpoint endpoint, const std::vector<Parameter>& parameters)
{
    switch (endpoint)
    {
    case EEndpoint::Classic:
        return GetClassicKind(parameters);
    case EEndpoint::Kpi:
        for (const Parameter& parameter : parameters)
            if (parameter.name == "e_c")
                return "event";
        return "visit";
    case EEndpoint::Measurement:
        if (const std::string_view kind = GetValue(parameters, "hit"); !kind.empty())
            return std::string(kind);
        break;
    case EEndpoint::Other:
        break;
    }
    return "request";
}

void AppendWord(std::string& text, std::string_view separator, std::string_view word)
{
    if (word.empty())
        return;
    if (!text.empty())
        text += separator;
    text += word;
}

} // namespace

DecodedHit DecodeHit(const Hit& hit)
{
    DecodedHit decoded{GetEndpoint(hit.target), {}, {}};
    decoded.parameters.reserve(32);
    if (decoded.endpoint == EEndpoint::Measurement)
        AppendAll(decoded.endpoint, hit.body, decoded.parameters);
    AppendAll(decoded.endpoint, GetQuery(hit.target), decoded.parameters);
    decoded.kind = GetKind(decoded.endpoint, decoded.parameters);
    return decoded;
}

std::string_view GetValue(const std::vector<Parameter>& parameters, std::string_view meaning)
{
    for (const Parameter& parameter : parameters)
        if (parameter.meaning == meaning)
            return parameter.decoded;
    return {};
}

Parameter MakeParameter(EEndpoint endpoint, const Piece& piece)
{
    const ParameterRule* rule = FindRule(endpoint, piece.name);
    return {std::string(piece.name), std::string(piece.value), DecodeText(piece.value),
            std::string(rule ? rule->meaning : piece.name)};
}

std::string DescribeHit(const Hit& hit, const DecodedHit& decoded)
{
    const auto value = [&](std::string_view meaning) {
        return GetValue(decoded.parameters, meaning);
    };
    if (decoded.endpoint == EEndpoint::Other)
        return hit.method + ' ' + DecodeText(hit.target.substr(0, hit.target.find('?')));
    std::string text;
    if (decoded.kind == "event")
    {
        for (const char* meaning : {"event category", "event action", "event label"})
            AppendWord(text, " / ", value(meaning));
        AppendWord(text, ", value ", value("event value"));
    }
    else if (decoded.kind == "custom variable")
    {
        text = value("custom variable slot");
        AppendWord(text, ": ", value("custom variable name"));
        AppendWord(text, " = ", value("custom variable value"));
    }
    else if (decoded.kind == "transaction")
    {
        text = value("order id");
        AppendWord(text, ", total ", value("total"));
    }
    else if (decoded.kind == "item")
    {
        text = value("item code");
        AppendWord(text, " ", value("item name"));
        AppendWord(text, ", ", value("quantity"));
        AppendWord(text, " at ", value("unit price"));
    }
    else
        AppendWord(text, "", value(decoded.endpoint == EEndpoint::Kpi ? "product" : "page"));
    std::string sentence = decoded.kind;
    if (decoded.kind == "pageview" || decoded.kind == "visit")
        AppendWord(sentence, " of ", text);
    else
        AppendWord(sentence, " ", text);
    return sentence;
}

} // namespace collector
