#pragma once

#include "tools/collector/HitReport.h"
#include "tools/collector/QueryText.h"

#include <string>
#include <vector>

namespace collector {

// Appends the parameter, or the parts of "utme" and "utmcc", each with a meaning of its own.
void AppendClassic(const Piece& piece, std::vector<Parameter>& parameters);

std::string GetClassicKind(const std::vector<Parameter>& parameters);

} // namespace collector
