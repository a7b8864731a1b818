#include "vnosal/RuntimeNumbers.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace VnOSAL {

std::size_t PrintDouble(char* buffer, std::size_t size, double value, char conversion,
                        int precision, bool alternate) noexcept
{
    char format[8] = "%";
    char* next = format + 1;
    if (alternate)
        *next++ = '#';
    *next++ = '.';
    *next++ = '*';
    *next = conversion;
    const int length = std::snprintf(buffer, size, format, precision, value);
    return static_cast<std::size_t>(std::max(length, 0));
}

double ScanDouble(const char* text, char*& end) noexcept { return std::strtod(text, &end); }

} // namespace VnOSAL
