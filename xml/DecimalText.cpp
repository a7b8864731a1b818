#include "xml/DecimalText.h"

#include "text/Decimal.h"

#include <string>

namespace xml {

namespace {

std::string_view SkipWhiteSpace(std::string_view text)
{
    const std::size_t begin = text.find_first_not_of(" \t\n\v\f\r");
    return begin == text.npos ? std::string_view() : text.substr(begin);
}

// Moves the digits at the front of `rest` to the end of `number`. False when there are none.
bool MoveDigits(std::string_view& rest, std::string& number)
{
    const std::size_t length = rest.find_first_not_of("0123456789");
    const std::string_view digits = rest.substr(0, length);
    number += digits;
    rest.remove_prefix(digits.size());
    return !digits.empty();
}

void MoveSign(std::string_view& rest, std::string& number)
{
    if (!rest.starts_with('+') && !rest.starts_with('-'))
        return;
    number += rest.front();
    rest.remove_prefix(1);
}

// The exponent at the front of `rest`, empty when it has no digits.
std::string ReadExponent(std::string_view rest)
{
    if (!rest.starts_with('e') && !rest.starts_with('E'))
        return {};
    std::string exponent = "e";
    rest.remove_prefix(1);
    MoveSign(rest, exponent);
    return MoveDigits(rest, exponent) ? exponent : std::string();
}

} // namespace

double ReadNumber(std::string_view text)
{
    std::string_view rest = SkipWhiteSpace(text);
    std::string number;
    MoveSign(rest, number);
    bool hasDigits = MoveDigits(rest, number);
    if (rest.starts_with('.') || rest.starts_with(','))
    {
        number += '.';
        rest.remove_prefix(1);
        hasDigits |= MoveDigits(rest, number);
    }
    return hasDigits ? text::ReadDouble((number + ReadExponent(rest)).c_str()) : 0;
}

} // namespace xml
