#pragma once

#include <span>
#include <string_view>

// Upper-case and lower-case forms, unit by unit, in the system's invariant table: as the file
// system compares names. Any thread.
namespace text {

void MakeUpper(std::span<wchar_t> units) noexcept;
void MakeLower(std::span<wchar_t> units) noexcept;

// Whether two texts are the same but for the case of their letters.
bool EqualIgnoringCase(std::wstring_view one, std::wstring_view other) noexcept;

} // namespace text
