#pragma once

#include <string>
#include <string_view>

// The five predefined entities of XML 1.0 and its character references. Any thread.
namespace xml {

// '&', '"', '<', '>' and '\'' as entities.
std::string EscapeXml(std::string_view text);

// The same; a vertical tab becomes a space.
std::wstring EscapeXml(std::wstring_view text);

// Entities in the order "&quot;" "&lt;" "&gt;" "&amp;" "&apos;", then character references,
// decimal or hexadecimal: what "&amp;" leaves behind may thus be taken for an apostrophe or a
// reference. A reference beyond U+FFFF becomes a surrogate pair; one that names no character (0, a
// surrogate, beyond U+10FFFF, no number) stays as it is.
std::wstring UnescapeXml(std::wstring text);

} // namespace xml
