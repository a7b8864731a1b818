#include "text/CodePages.h"

#include "text/StandardText.h"

namespace text {

using VnOSAL::VnAString;

std::wstring DecodeBytes(std::string_view bytes, std::uint32_t codePage)
{
    return ToStandard(VnAString::FromBytes(bytes, codePage).ToString());
}

std::string EncodeBytes(std::wstring_view units, std::uint32_t codePage)
{
    return ToStandard(VnAString(units, codePage));
}

} // namespace text
