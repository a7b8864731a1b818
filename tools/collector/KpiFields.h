#pragma once

#include "tools/collector/HitReport.h"
#include "tools/collector/QueryText.h"

namespace collector {

// The parameter; of "_cvar" the product's name, when it holds one.
Parameter MakeKpiParameter(const Piece& piece);

} // namespace collector
