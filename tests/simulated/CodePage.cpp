#include "tests/simulated/CodePage.h"

#include "platform/CodePage.h"

#include <array>
#include <atomic>
#include <cstdint>

namespace simulated {

namespace {

std::atomic<bool> decodingFails;

constexpr wchar_t replacement = 0xFFFD;

// Code page 1252 differs from Latin-1 in these 32 places; five are unassigned and map to
// themselves.
constexpr std::array<wchar_t, 32> codePage1252From80 = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

bool IsHighSurrogate(std::uint32_t unit) { return (unit & 0xFFFFFC00) == 0xD800; }
bool IsSurrogate(std::uint32_t unit) { return (unit & 0xFFFFF800) == 0xD800; }
bool IsLowSurrogate(std::uint32_t unit) { return (unit & 0xFFFFFC00) == 0xDC00; }
bool IsWithin(wchar_t unit, wchar_t first, wchar_t last) { return first <= unit && unit <= last; }

// Takes one code point from the front of `text`.
std::uint32_t TakeCodePoint(std::wstring_view& text)
{
    const std::uint32_t first = static_cast<std::uint32_t>(text[0]) & 0xFFFF;
    const std::uint32_t next = text.size() > 1 ? static_cast<std::uint32_t>(text[1]) & 0xFFFF : 0;
    if (IsHighSurrogate(first) && IsLowSurrogate(next))
    {
        text.remove_prefix(2);
        return 0x10000 + ((first - 0xD800) << 10) + (next - 0xDC00);
    }
    text.remove_prefix(1);
    return IsSurrogate(first) ? replacement : first;
}

void AppendUtf8(std::string& bytes, std::uint32_t codePoint)
{
    const auto append = [&bytes](std::uint32_t byte) { bytes += static_cast<char>(byte); };
    const auto appendLow = [&](unsigned shift) { append(0x80 | (codePoint >> shift & 0x3F)); };
    if (codePoint < 0x80)
        append(codePoint);
    else if (codePoint < 0x800)
        append(0xC0 | codePoint >> 6), appendLow(0);
    else if (codePoint < 0x10000)
        append(0xE0 | codePoint >> 12), appendLow(6), appendLow(0);
    else
        append(0xF0 | codePoint >> 18), appendLow(12), appendLow(6), appendLow(0);
}

void AppendUtf16(std::wstring& text, std::uint32_t codePoint)
{
    if (codePoint < 0x10000)
    {
        text += static_cast<wchar_t>(codePoint);
        return;
    }
    text += static_cast<wchar_t>(0xD800 + ((codePoint - 0x10000) >> 10));
    text += static_cast<wchar_t>(0xDC00 + (codePoint & 0x3FF));
}

// The number of continuation bytes after a first byte, and the range of the first of them (RFC
// 3629, section 4); a count of 0 marks a byte that starts no longer sequence.
struct Sequence
{
    unsigned continuations;
    std::uint32_t bits;
    unsigned char low;
    unsigned char high;
};

Sequence SequenceOf(unsigned char first)
{
    if (first >= 0xC2 && first <= 0xDF)
        return {1, first & 0x1Fu, 0x80, 0xBF};
    if (first >= 0xE0 && first <= 0xEF)
        return {2, first & 0x0Fu, static_cast<unsigned char>(first == 0xE0 ? 0xA0 : 0x80),
                static_cast<unsigned char>(first == 0xED ? 0x9F : 0xBF)};
    if (first >= 0xF0 && first <= 0xF4)
        return {3, first & 0x07u, static_cast<unsigned char>(first == 0xF0 ? 0x90 : 0x80),
                static_cast<unsigned char>(first == 0xF4 ? 0x8F : 0xBF)};
    return {0, 0, 0, 0};
}

// Takes one sequence, or the longest beginning of one, from the front of `bytes`.
std::uint32_t TakeSequence(std::string_view& bytes)
{
    const unsigned char first = static_cast<unsigned char>(bytes[0]);
    bytes.remove_prefix(1);
    if (first < 0x80)
        return first;
    Sequence sequence = SequenceOf(first);
    if (sequence.continuations == 0)
        return replacement;
    for (; sequence.continuations > 0; --sequence.continuations)
    {
        const unsigned char next = bytes.empty() ? 0 : static_cast<unsigned char>(bytes[0]);
        if (next < sequence.low || next > sequence.high)
            return replacement;
        bytes.remove_prefix(1);
        sequence = {sequence.continuations, sequence.bits << 6 | (next & 0x3Fu), 0x80, 0xBF};
    }
    return sequence.bits;
}

} // namespace

void SetUtf8DecodingFails(bool fails) { decodingFails = fails; }

void ResetCodePage() { decodingFails = false; }

std::string EncodeAnsi(std::wstring_view text)
{
    std::string bytes;
    for (const wchar_t unit : text)
    {
        char byte = unit < 0x80 || IsWithin(unit, 0xA0, 0xFF) ? static_cast<char>(unit) : '?';
        for (std::size_t i = 0; i < codePage1252From80.size(); ++i)
            if (codePage1252From80[i] == unit)
                byte = static_cast<char>(0x80 + i);
        bytes += byte;
    }
    return bytes;
}

} // namespace simulated

namespace platform {

using simulated::IsWithin;

std::string EncodeUtf8(std::wstring_view text)
{
    std::string bytes;
    while (!text.empty())
        simulated::AppendUtf8(bytes, simulated::TakeCodePoint(text));
    return bytes;
}

std::size_t DecodeUtf8(std::string_view bytes, std::wstring& text)
{
    if (bytes.empty() || simulated::decodingFails)
        return 0;
    text.clear();
    while (!bytes.empty())
        simulated::AppendUtf16(text, simulated::TakeSequence(bytes));
    return text.size();
}

std::wstring DecodeAnsi(std::string_view bytes)
{
    std::wstring text;
    for (const char byte : bytes)
    {
        const unsigned char value = static_cast<unsigned char>(byte);
        text += value >= 0x80 && value < 0xA0 ? simulated::codePage1252From80[value - 0x80u]
                                              : static_cast<wchar_t>(value);
    }
    return text;
}

bool IsAlphanumeric(wchar_t unit)
{
    return IsWithin(unit, L'0', L'9') || IsWithin(unit, L'A', L'Z') || IsWithin(unit, L'a', L'z') ||
           unit == 0xB2 || unit == 0xB3 || unit == 0xB9 || // superscript digits
           (IsWithin(unit, 0xC0, 0xFF) && unit != 0xD7 && unit != 0xF7) ||
           (IsWithin(unit, 0x391, 0x3C9) && unit != 0x3A2) || IsWithin(unit, 0x400, 0x45F);
}

wchar_t ToUpper(wchar_t unit)
{
    if (IsWithin(unit, L'a', L'z') || (IsWithin(unit, 0xE0, 0xFE) && unit != 0xF7) ||
        (IsWithin(unit, 0x3B1, 0x3C9) && unit != 0x3C2) || IsWithin(unit, 0x430, 0x44F))
        return unit - 0x20;
    if (unit == 0xFF)
        return 0x178;
    return IsWithin(unit, 0x450, 0x45F) ? unit - 0x50 : unit;
}

wchar_t ToLower(wchar_t unit)
{
    if (IsWithin(unit, L'A', L'Z') || (IsWithin(unit, 0xC0, 0xDE) && unit != 0xD7) ||
        (IsWithin(unit, 0x391, 0x3A9) && unit != 0x3A2) || IsWithin(unit, 0x410, 0x42F))
        return unit + 0x20;
    if (unit == 0x178)
        return 0xFF;
    return IsWithin(unit, 0x400, 0x40F) ? unit + 0x50 : unit;
}

} // namespace platform
