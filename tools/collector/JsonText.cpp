#include "tools/collector/JsonText.h"

#include <nlohmann/json.hpp>

namespace collector {

void AppendJsonText(std::string& json, std::string_view text)
{
    // One look at each byte and no early end, so that the compiler takes many at once.
    unsigned char special = 0;
    for (const unsigned char byte : text)
        special |= static_cast<unsigned char>((byte < ' ') | (byte > '~') | (byte == '"') |
                                              (byte == '\\'));
    if (special == 0)
        json.append("\"").append(text).append("\"");
    else
        json += nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

} // namespace collector
