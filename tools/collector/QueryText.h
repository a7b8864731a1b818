#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace collector {

// One "name=value" of a query; both point into it.
struct Piece
{
    std::string_view name;
    std::string_view value;
};

// Undoes the percent forms that the clients mix in one text, and gives UTF-8.
//
// Values are written as "%" and the upper-case hexadecimal of a UTF-16 unit without padding ("%9",
// "%20", "%20AC"); the transport adds standard two-digit escapes for blanks and for the UTF-8 bytes
// of other characters. The two cannot always be told apart: "%20AC" is a blank and "AC" as well as
// U+20AC. The reading taken, in this order:
//   1. two escapes that are a surrogate pair, "%D83D%DE00", are that one character;
//   2. two digits, as the standard says; unless that is an ASCII letter or digit, which neither
//      form ever escapes: then four digits are one unit, "%4E2D";
//   3. one digit, when no second follows.
// Bytes that are no UTF-8 stand for U+0080 to U+00FF. A "%" without a digit stays.
std::string DecodeText(std::string_view text);

// The pieces "name=value" of a query in their order, names and values as sent. A piece without "="
// continues the value before it, because the clients insert some values with a bare "&" in them.
std::vector<Piece> SplitQuery(std::string_view query);

// The parts between the separators; one empty part for an empty text.
std::vector<std::string_view> Split(std::string_view text, std::string_view separator);

} // namespace collector
