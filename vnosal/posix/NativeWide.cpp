#include "vnosal/NativeWide.h"

#include "vnosal/Surrogates.h"

namespace VnOSAL {

VnString ToNativeWide(const VnString& text) noexcept
{
    VnString wide;
    for (std::size_t i = 0; i < text.GetLength(); ++i)
    {
        const bool pair = IsPair(text[i], text[i + 1]);
        wide.Append(pair ? static_cast<wchar_t>(JoinPair(text[i], text[i + 1])) : text[i]);
        i += pair ? 1 : 0;
    }
    return text.IsValid() ? wide : text;
}

VnString FromNativeWide(const VnString& text) noexcept
{
    VnString units;
    for (const wchar_t unit : text)
    {
        const auto character = static_cast<std::uint32_t>(unit);
        if (character >= 0x10000 && character <= 0x10FFFF)
            units.Append(HighSurrogate(character)).Append(LowSurrogate(character));
        else
            units.Append(character > 0x10FFFF ? L'\xFFFD' : unit);
    }
    return text.IsValid() ? units : text;
}

} // namespace VnOSAL
