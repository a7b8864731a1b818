#pragma once

#include "tools/collector/Hit.h"

#include <optional>
#include <string_view>

namespace collector {

// The request out of one line of a log, without its line end; nothing when it holds none. Taken are
//   - the combined format of nginx and Apache, with the body of a POST in one more quoted field at
//     its end if the server was told so ("$request_body"): docs/collecting.md;
//   - the collector's own JSON lines.
// The bytes that servers escape ("\x22", "\"") are what they were. Of the headers such a log has
// User-Agent and Referer.
std::optional<Hit> ReadLogLine(std::string_view line);

} // namespace collector
