#include "tools/collector/JsonText.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace collector {

void AppendJsonText(std::string& json, std::string_view text)
{
    const bool plain = std::all_of(text.begin(), text.end(), [](char byte) {
        return byte >= ' ' && byte < 0x7F && byte != '"' && byte != '\\';
    });
    if (plain)
        json.append("\"").append(text).append("\"");
    else
        json += nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

} // namespace collector
