#include "tests/fuzz/FuzzInput.h"
#include "text/CodePages.h"
#include "text/Units.h"
#include "zotracker/vnosal/VnAString.h"

#include <iconv.h>
#include <iterator>
#include <optional>

namespace fuzz {

namespace {

// What the C library makes of it; nothing for what is no text.
std::optional<std::string> Convert(const char* to, const char* from, std::string bytes)
{
    static std::string out(1 << 16, 0);
    const iconv_t converter = iconv_open(to, from);
    char* in = bytes.data();
    char* begin = out.data();
    std::size_t left = bytes.size();
    std::size_t room = out.size();
    const bool done = iconv(converter, &in, &left, &begin, &room) != static_cast<std::size_t>(-1);
    iconv_close(converter);
    return done ? std::optional(out.substr(0, out.size() - room)) : std::nullopt;
}

std::string BytesOf(std::wstring_view units)
{
    const std::vector<std::uint8_t> bytes = text::EncodeUnits(units);
    return {bytes.begin(), bytes.end()};
}

} // namespace

// The first byte chooses the code page, the others are a text in it, or units for it.
void Check(FuzzInput input)
{
    constexpr std::uint32_t pages[] = {65001, 0,     1,   1252, 1250,  1251,  932,
                                       936,   54936, 437, 850,  28591, 20127, 12345};
    const std::uint32_t page = pages[input.TakeByte() % std::size(pages)];
    const std::string bytes(input.rest);
    const std::wstring units = ReadUnits(bytes);
    const std::wstring decoded = text::DecodeBytes(bytes, page);
    const std::string encoded = text::EncodeBytes(units, page);
    // Text that a code page has comes back from it.
    const VnOSAL::VnAString exact(decoded, page);
    if (exact.GetConversion() == VnOSAL::EConversion::Exact)
        Require(text::DecodeBytes(exact, page) == decoded, "back");
    if (page != VnOSAL::codePageUtf8)
        return;
    if (const auto expected = Convert("UTF-16LE", "UTF-8", bytes))
        Require(*expected == BytesOf(decoded), "UTF-8 read");
    if (const auto expected = Convert("UTF-8", "UTF-16LE", BytesOf(units)))
        Require(*expected == encoded, "UTF-8 written");
    Require(Convert("UTF-16LE", "UTF-8", encoded).has_value(), "valid UTF-8");
}

} // namespace fuzz
