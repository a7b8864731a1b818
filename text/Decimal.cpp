#include "text/Decimal.h"

#include "vnosal/NumberText.h"

namespace text {

double ReadDouble(const char* number) noexcept { return VnOSAL::ReadDouble(number); }

} // namespace text
