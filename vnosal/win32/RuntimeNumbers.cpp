#include "vnosal/RuntimeNumbers.h"

#include <stdio.h>
#include <stdlib.h>

namespace VnOSAL {

// The runtime library's own printer: the compiler's replacement for it would be linked into the
// module. It knows no default precision for a negative one, and returns -1 when the room ends.
std::size_t PrintDouble(char* buffer, std::size_t size, double value, char conversion,
                        int precision, bool alternate) noexcept
{
    char format[8] = "%";
    char* next = format + 1;
    if (alternate)
        *next++ = '#';
    if (precision >= 0)
    {
        *next++ = '.';
        *next++ = '*';
    }
    *next = conversion;
    const int length = precision >= 0 ? _snprintf(buffer, size, format, precision, value)
                                      : _snprintf(buffer, size, format, value);
    return length < 0 ? size : static_cast<std::size_t>(length);
}

// Without a locale the runtime library takes the current one.
double ScanDouble(const char* text, char*& end) noexcept { return _strtod_l(text, &end, nullptr); }

} // namespace VnOSAL
