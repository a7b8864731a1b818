#include "text/Units.h"

#include "vnosal/Surrogates.h"

namespace text {

namespace {

constexpr std::size_t unitSize = 2; // bytes

} // namespace

void AppendCharacter(std::wstring& units, std::uint32_t character)
{
    if (character <= 0xFFFF)
        units += static_cast<wchar_t>(character);
    else
        units += {VnOSAL::HighSurrogate(character), VnOSAL::LowSurrogate(character)};
}

std::vector<std::uint8_t> EncodeUnits(std::wstring_view units)
{
    std::vector<std::uint8_t> bytes;
    bytes.reserve(units.size() * unitSize);
    for (const wchar_t unit : units)
    {
        bytes.push_back(static_cast<std::uint8_t>(unit));
        bytes.push_back(static_cast<std::uint8_t>(unit >> 8));
    }
    return bytes;
}

std::wstring DecodeUnits(std::span<const std::uint8_t> bytes)
{
    std::wstring units(bytes.size() / unitSize, L'\0');
    for (std::size_t i = 0; i < units.size(); ++i)
        units[i] = static_cast<wchar_t>(bytes[i * unitSize] | bytes[i * unitSize + 1] << 8);
    return units;
}

} // namespace text
