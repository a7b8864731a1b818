#include "tools/collector/QueryText.h"

#include <cctype>
#include <charconv>
#include <cstdint>

namespace collector {

namespace {

bool IsAsciiLetterOrDigit(std::uint32_t value)
{
    return value < 0x80 && std::isalnum(static_cast<int>(value)) != 0;
}

// The number of upper- or lower-case hexadecimal digits at `text`'s start, at most `most`.
std::size_t CountDigits(std::string_view text, std::size_t most)
{
    std::size_t count = 0;
    while (count < most && count < text.size() &&
           std::isxdigit(static_cast<unsigned char>(text[count])) != 0)
        ++count;
    return count;
}

std::uint32_t ParseDigits(std::string_view text, std::size_t count)
{
    std::uint32_t value = 0;
    std::from_chars(text.data(), text.data() + count, value, 16);
    return value;
}

void AppendUtf8(std::string& text, std::uint32_t character)
{
    const auto append = [&](std::uint32_t byte) { text += static_cast<char>(byte); };
    if (character < 0x80)
        return append(character);
    if (character < 0x800)
        append(0xC0 | character >> 6);
    else
    {
        if (character < 0x10000)
            append(0xE0 | character >> 12);
        else
        {
            append(0xF0 | character >> 18);
            append(0x80 | (character >> 12 & 0x3F));
        }
        append(0x80 | (character >> 6 & 0x3F));
    }
    append(0x80 | (character & 0x3F));
}

// A text in which bytes from the wire and characters of known value mix. Bytes are kept apart until
// a character or the end comes, because only then a UTF-8 sequence is complete.
class CMixedText
{
public:
    void AddByte(char byte) { bytes += byte; }
    void AddCharacter(std::uint32_t character)
    {
        FlushBytes();
        AppendUtf8(text, character);
    }
    std::string Take()
    {
        FlushBytes();
        return std::move(text);
    }

private:
    void FlushBytes();
    std::string bytes;
    std::string text;
};

// The length of the UTF-8 sequence (RFC 3629) that `bytes` starts with, 0 when there is none.
std::size_t GetSequenceLength(std::string_view bytes)
{
    const auto at = [&](std::size_t index) {
        return index < bytes.size() ? static_cast<unsigned char>(bytes[index]) : 0U;
    };
    const unsigned first = at(0);
    const std::size_t length = first < 0x80                    ? 1
                               : first >= 0xC2 && first < 0xE0 ? 2
                               : first >= 0xE0 && first < 0xF0 ? 3
                               : first >= 0xF0 && first < 0xF5 ? 4
                                                               : 0;
    for (std::size_t index = 1; index < length; ++index)
        if ((at(index) & 0xC0) != 0x80)
            return 0;
    const bool overlong = (first == 0xE0 && at(1) < 0xA0) || (first == 0xF0 && at(1) < 0x90);
    const bool outside = (first == 0xED && at(1) >= 0xA0) || (first == 0xF4 && at(1) >= 0x90);
    return overlong || outside ? 0 : length;
}

void CMixedText::FlushBytes()
{
    for (std::string_view rest = bytes; !rest.empty();)
    {
        std::size_t length = GetSequenceLength(rest);
        if (length > 0)
            text += rest.substr(0, length);
        else
        {
            AppendUtf8(text, static_cast<unsigned char>(rest.front()));
            length = 1;
        }
        rest.remove_prefix(length);
    }
    bytes.clear();
}

// A surrogate pair in the form "%D83D%DE00"; 0 when `text` does not start with one.
std::uint32_t ReadSurrogatePair(std::string_view text)
{
    constexpr std::size_t size = 10;
    if (text.size() < size || text[0] != '%' || text[5] != '%' ||
        CountDigits(text.substr(1), 4) < 4 || CountDigits(text.substr(6), 4) < 4)
        return 0;
    const std::uint32_t high = ParseDigits(text.substr(1), 4);
    const std::uint32_t low = ParseDigits(text.substr(6), 4);
    if (high < 0xD800 || high > 0xDBFF || low < 0xDC00 || low > 0xDFFF)
        return 0;
    return 0x10000 + ((high - 0xD800) << 10) + (low - 0xDC00);
}

// Decodes what stands at the start of `text` and returns its length.
std::size_t DecodeOne(std::string_view text, CMixedText& decoded)
{
    const std::size_t digits = text[0] == '%' ? CountDigits(text.substr(1), 4) : 0;
    if (digits == 0)
    {
        decoded.AddByte(text[0]);
        return 1;
    }
    if (const std::uint32_t pair = ReadSurrogatePair(text))
    {
        decoded.AddCharacter(pair);
        return 10;
    }
    const std::size_t two = digits < 2 ? 1 : 2;
    const std::uint32_t value = ParseDigits(text.substr(1), two);
    if (digits == 4 && IsAsciiLetterOrDigit(value))
    {
        decoded.AddCharacter(ParseDigits(text.substr(1), 4));
        return 5;
    }
    decoded.AddByte(static_cast<char>(value));
    return 1 + two;
}

} // namespace

std::string DecodeText(std::string_view text)
{
    unsigned char special = 0;
    for (const unsigned char byte : text)
        special |= static_cast<unsigned char>((byte > '~') | (byte == '%'));
    if (special == 0)
        return std::string(text);
    CMixedText decoded;
    while (!text.empty())
        text.remove_prefix(DecodeOne(text, decoded));
    return decoded.Take();
}

std::vector<std::string_view> Split(std::string_view text, std::string_view separator)
{
    std::vector<std::string_view> parts;
    for (;;)
    {
        const std::size_t end = text.find(separator);
        parts.push_back(text.substr(0, end));
        if (end == std::string_view::npos)
            return parts;
        text.remove_prefix(end + separator.size());
    }
}

std::vector<Piece> SplitQuery(std::string_view query)
{
    std::vector<Piece> pieces;
    for (const std::string_view piece : Split(query, "&"))
    {
        const std::size_t equals = piece.find('=');
        if (equals != std::string_view::npos)
            pieces.push_back({piece.substr(0, equals), piece.substr(equals + 1)});
        else if (!pieces.empty())
        {
            std::string_view& value = pieces.back().value;
            value = {value.data(), value.size() + 1 + piece.size()};
        }
        else if (!piece.empty())
            pieces.push_back({piece, {}});
    }
    return pieces;
}

} // namespace collector
