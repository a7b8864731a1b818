#pragma once

#include "tools/collector/Decode.h"

#include <string>

namespace collector {

// One hit as one JSON object on one line, without the line end: sequence, connection, time (UTC),
// endpoint, kind, method, target, headers (pairs in their order), body and fields. A field that
// occurs twice holds an array. Bytes that are no UTF-8 are replaced by U+FFFD.
std::string WriteJsonLine(const Hit& hit, const DecodedHit& decoded);

// One hit for a person to read: a header line with number, local time, endpoint, kind and
// description, then a line per field. Control characters are shown as "?", so that a request cannot
// steer the terminal. `colour` adds terminal colours.
std::string WriteReadable(const Hit& hit, const DecodedHit& decoded, bool colour);

} // namespace collector
