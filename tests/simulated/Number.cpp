#include "platform/Number.h"

#include <cstdlib>
#include <locale.h>

namespace platform {

namespace {

// Never freed: elements may be read until the process ends.
const locale_t numericLocale = newlocale(LC_NUMERIC_MASK, "C", nullptr);

} // namespace

double ParseDecimal(const std::string& text)
{
    return strtod_l(text.c_str(), nullptr, numericLocale);
}

} // namespace platform
