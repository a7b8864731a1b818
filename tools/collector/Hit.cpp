#include "tools/collector/Hit.h"

#include <algorithm>
#include <cctype>

namespace collector {

bool EqualsIgnoringCase(std::string_view one, std::string_view other)
{
    return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                      [](unsigned char left, unsigned char right) {
                          return std::tolower(left) == std::tolower(right);
                      });
}

std::string FindHeader(const Hit& hit, std::string_view name)
{
    for (const Header& header : hit.headers)
        if (EqualsIgnoringCase(header.name, name))
            return header.value;
    return {};
}

} // namespace collector
