#include "platform/Number.h"

#include <clocale>
#include <cstdlib>

namespace platform {

namespace {

// Made while the module is being loaded, kept until the process ends.
const _locale_t numericLocale = _create_locale(LC_NUMERIC, "C");

} // namespace

double ParseDecimal(const std::string& text)
{
    return _strtod_l(text.c_str(), nullptr, numericLocale);
}

} // namespace platform
