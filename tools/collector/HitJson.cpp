#include "tools/collector/HitJson.h"

#include "tools/collector/JsonText.h"

#include <nlohmann/json.hpp>
#include <stdexcept>

namespace collector {

namespace {

constexpr std::size_t mostFields = 200;

void AddSummary(CJsonObject& object, const HitReport& report)
{
    object.Add("id", static_cast<long long>(report.id));
    object.Add("time", report.time);
    object.Add("tracker", report.tracker);
    object.Add("endpoint", report.endpoint);
    object.Add("kind", report.kind);
    object.Add("product", report.product);
    object.Add("visitor", report.visitor);
    object.Add("session", report.session);
    object.Add("sentence", report.sentence);
    object.Add("verdict", GetName(GetSeverity(report)));
    std::string& json = object.Begin("codes");
    AppendJsonArray(json, ListCodes(report),
                    [&](std::string_view code) { AppendJsonText(json, code); });
    object.Add("connection", static_cast<long long>(report.request.connection));
}

void AddVerdicts(CJsonObject& object, const HitReport& report)
{
    std::string& json = object.Begin("verdicts");
    AppendJsonArray(json, report.verdicts, [&](const Verdict& verdict) {
        CJsonObject entry(json);
        entry.Add("severity", GetName(verdict.severity));
        entry.Add("code", verdict.code);
        entry.Add("parameter", verdict.parameter);
        entry.Add("explanation", verdict.explanation);
    });
}

void AddRequest(CJsonObject& object, const HitReport& report)
{
    object.Begin("headers") += WriteHeaders(report);
    CJsonObject request(object.Begin("request"));
    request.Add("method", report.request.method);
    request.Add("target", report.request.target);
    request.Add("version", report.request.version);
    request.Add("body", report.request.body);
}

// Meanings come up to two hundred times: looking through them is faster than a set.
bool CameBefore(const std::vector<Parameter>& parameters, std::size_t index)
{
    for (std::size_t before = 0; before < index; ++before)
        if (parameters[before].meaning == parameters[index].meaning)
            return true;
    return false;
}

} // namespace

std::string WriteSummary(const HitReport& report)
{
    std::string json;
    {
        CJsonObject object(json);
        AddSummary(object, report);
    }
    return json;
}

std::string WriteWhole(const HitReport& report, const std::optional<PreviousHit>& previous)
{
    std::string json;
    {
        CJsonObject object(json);
        AddSummary(object, report);
        AddVerdicts(object, report);
        std::string& parameters = object.Begin("parameters");
        AppendJsonArray(parameters, report.parameters, [&](const Parameter& parameter) {
            CJsonObject entry(parameters);
            entry.Add("name", parameter.name);
            entry.Add("raw", parameter.raw);
            entry.Add("decoded", parameter.decoded);
            entry.Add("meaning", parameter.meaning);
        });
        AddRequest(object, report);
        if (previous)
        {
            object.Add("previous", static_cast<long long>(previous->id));
            object.Add("sincePrevious", report.time - previous->time);
        }
        else
        {
            object.AddNull("previous");
            object.AddNull("sincePrevious");
        }
    }
    return json;
}

std::string WriteLine(const HitReport& report)
{
    std::string json;
    json.reserve(4096);
    {
        CJsonObject object(json);
        AddSummary(object, report);
        AddVerdicts(object, report);
        object.Begin("fields") += WriteFields(report);
        AddRequest(object, report);
    }
    return json;
}

std::string WriteFields(const HitReport& report)
{
    std::string json = "{";
    const std::size_t end = std::min(report.parameters.size(), mostFields);
    for (std::size_t index = 0; index < end; ++index)
    {
        if (CameBefore(report.parameters, index))
            continue;
        if (json.size() > 1)
            json += ',';
        AppendJsonText(json, report.parameters[index].meaning);
        json += ':';
        AppendJsonText(json, report.parameters[index].decoded);
    }
    return json + '}';
}

std::string WriteHeaders(const HitReport& report)
{
    std::string json;
    AppendJsonArray(json, report.request.headers, [&](const Header& header) {
        json += '[';
        AppendJsonText(json, header.name);
        json += ',';
        AppendJsonText(json, header.value);
        json += ']';
    });
    return json;
}

std::vector<Header> ReadHeaders(std::string_view json)
{
    std::vector<Header> headers;
    const nlohmann::json parsed = nlohmann::json::parse(json, nullptr, false);
    if (parsed.is_array())
        for (const nlohmann::json& pair : parsed)
            if (pair.is_array() && pair.size() == 2 && pair[0].is_string() && pair[1].is_string())
                headers.push_back({pair[0].get<std::string>(), pair[1].get<std::string>()});
    return headers;
}

Hit ReadLine(std::string_view line)
{
    try
    {
        const nlohmann::json parsed = nlohmann::json::parse(line);
        const nlohmann::json& request = parsed.at("request");
        Hit hit;
        hit.connection = parsed.value("connection", std::uint64_t{0});
        hit.time = std::chrono::system_clock::time_point(
            std::chrono::milliseconds(parsed.at("time").get<std::int64_t>()));
        hit.method = request.at("method").get<std::string>();
        hit.target = request.at("target").get<std::string>();
        hit.version = request.value("version", "");
        hit.body = request.value("body", "");
        if (parsed.contains("headers"))
            hit.headers = ReadHeaders(parsed["headers"].dump());
        return hit;
    }
    catch (const nlohmann::json::exception& problem)
    {
        throw std::runtime_error(std::string("no hit: ") + problem.what());
    }
}

} // namespace collector
