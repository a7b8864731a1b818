#include "tools/collector/HitLog.h"

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <nlohmann/json.hpp>

namespace collector {

namespace {

using nlohmann::ordered_json;

std::string FormatTime(const std::tm& time, const char* format)
{
    char text[40];
    return {text, std::strftime(text, sizeof text, format, &time)};
}

std::string FormatUtc(std::chrono::system_clock::time_point time)
{
    const auto milliseconds =
        std::chrono::duration_cast<std::chrono::milliseconds>(time.time_since_epoch()).count();
    const std::time_t seconds = static_cast<std::time_t>(milliseconds / 1000);
    std::tm parts{};
    ::gmtime_r(&seconds, &parts);
    char fraction[16];
    std::snprintf(fraction, sizeof fraction, ".%03dZ", static_cast<int>(milliseconds % 1000));
    return FormatTime(parts, "%Y-%m-%dT%H:%M:%S") + fraction;
}

std::string FormatLocal(std::chrono::system_clock::time_point time)
{
    const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
    std::tm parts{};
    ::localtime_r(&seconds, &parts);
    return FormatTime(parts, "%H:%M:%S");
}

ordered_json WriteFields(const std::vector<Field>& fields)
{
    ordered_json object = ordered_json::object();
    for (const Field& field : fields)
    {
        ordered_json& value = object[field.name];
        if (value.is_null())
            value = field.value;
        else if (value.is_array())
            value.push_back(field.value);
        else
            value = ordered_json::array({value, field.value});
    }
    return object;
}

ordered_json WriteHeaders(const std::vector<Header>& headers)
{
    ordered_json list = ordered_json::array();
    for (const Header& header : headers)
        list.push_back({header.name, header.value});
    return list;
}

std::string MakePrintable(std::string text)
{
    for (char& byte : text)
        if (static_cast<unsigned char>(byte) < 0x20 || byte == 0x7F)
            byte = '?';
    return text;
}

// Long values are cut for the eye; the JSON line keeps them whole.
std::string Shorten(std::string text)
{
    constexpr std::size_t longest = 300;
    if (text.size() > longest)
        text = text.substr(0, longest) + "... (" + std::to_string(text.size()) + " bytes)";
    return MakePrintable(std::move(text));
}

std::size_t GetWidestName(const std::vector<Field>& fields)
{
    constexpr std::size_t widest = 24;
    std::size_t width = 0;
    for (const Field& field : fields)
        width = std::max(width, field.name.size());
    return std::min(width, widest);
}

} // namespace

std::string WriteJsonLine(const Hit& hit, const DecodedHit& decoded)
{
    const ordered_json line = {
        {"sequence", hit.sequence},
        {"connection", hit.connection},
        {"time", FormatUtc(hit.time)},
        {"endpoint", GetName(decoded.endpoint)},
        {"kind", decoded.kind},
        {"method", hit.method},
        {"target", hit.target},
        {"headers", WriteHeaders(hit.headers)},
        {"body", hit.body},
        {"fields", WriteFields(decoded.fields)},
    };
    return line.dump(-1, ' ', false, ordered_json::error_handler_t::replace);
}

std::string WriteReadable(const Hit& hit, const DecodedHit& decoded, bool colour)
{
    const char* strong = colour ? "\033[1;36m" : "";
    const char* faint = colour ? "\033[2m" : "";
    const char* plain = colour ? "\033[0m" : "";
    const std::string description =
        decoded.endpoint == EEndpoint::Other ? hit.method + ' ' + hit.target : DescribeHit(decoded);
    std::string text = strong + ("#" + std::to_string(hit.sequence)) + ' ' + FormatLocal(hit.time) +
                       ' ' + GetName(decoded.endpoint) + ' ' + Shorten(decoded.kind) + "  " +
                       Shorten(description) + plain + '\n';
    const std::size_t width = GetWidestName(decoded.fields);
    for (const Field& field : decoded.fields)
    {
        std::string name = Shorten(field.name);
        name.resize(std::max(name.size(), width), ' ');
        text.append("    ").append(faint).append(name).append(plain).append("  ");
        text.append(Shorten(field.value)).append("\n");
    }
    return text;
}

} // namespace collector
