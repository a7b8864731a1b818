#include "vnosal/Utf8.h"

#include "vnosal/Surrogates.h"

#include <cstdint>

namespace VnOSAL {
namespace {

constexpr std::uint32_t replacement = 0xFFFD;

// Counts what is written, and writes where there is something to write to.
template <class Unit>
struct Sink
{
    Unit* out;
    std::size_t length = 0;

    void Put(std::uint32_t unit) noexcept
    {
        if (out)
            out[length] = static_cast<Unit>(unit);
        ++length;
    }
};

void PutUtf8(Sink<char>& sink, std::uint32_t character) noexcept
{
    if (character < 0x80)
        return sink.Put(character);
    if (character < 0x800)
        sink.Put(0xC0 | character >> 6);
    else
    {
        if (character < 0x10000)
            sink.Put(0xE0 | character >> 12);
        else
        {
            sink.Put(0xF0 | character >> 18);
            sink.Put(0x80 | (character >> 12 & 0x3F));
        }
        sink.Put(0x80 | (character >> 6 & 0x3F));
    }
    sink.Put(0x80 | (character & 0x3F));
}

void PutUtf16(Sink<wchar_t>& sink, std::uint32_t character) noexcept
{
    if (character < 0x10000)
        return sink.Put(character);
    sink.Put(static_cast<std::uint32_t>(HighSurrogate(character)));
    sink.Put(static_cast<std::uint32_t>(LowSurrogate(character)));
}

// What a first byte promises: how many bytes follow it and where the second one lies.
struct Lead
{
    int more;
    unsigned low;
    unsigned high;
};

Lead ReadLead(unsigned byte) noexcept
{
    if (byte >= 0xC2 && byte <= 0xDF)
        return {1, 0x80, 0xBF};
    if (byte >= 0xE0 && byte <= 0xEF)
        return {2, byte == 0xE0 ? 0xA0u : 0x80u, byte == 0xED ? 0x9Fu : 0xBFu};
    if (byte >= 0xF0 && byte <= 0xF4)
        return {3, byte == 0xF0 ? 0x90u : 0x80u, byte == 0xF4 ? 0x8Fu : 0xBFu};
    return {0, 0, 0};
}

// The character behind a first byte of 0x80 and above; ends before the first byte that does not
// belong to it.
std::uint32_t TakeCharacter(std::string_view bytes, std::size_t& position) noexcept
{
    const auto first = static_cast<unsigned char>(bytes[position++]);
    Lead lead = ReadLead(first);
    if (lead.more == 0)
        return replacement;
    std::uint32_t character = first & (0x3Fu >> lead.more);
    for (; lead.more > 0; --lead.more, ++position)
    {
        const unsigned next =
            position < bytes.size() ? static_cast<unsigned char>(bytes[position]) : 0;
        if (next < lead.low || next > lead.high)
            return replacement;
        character = character << 6 | (next & 0x3F);
        lead.low = 0x80;
        lead.high = 0xBF;
    }
    return character;
}

// Whether the bytes at `position` spell U+FFFD itself.
bool SpellsReplacement(std::string_view bytes, std::size_t position) noexcept
{
    return bytes.compare(position, 3, "\xEF\xBF\xBD") == 0;
}

} // namespace

std::size_t EncodeUtf8(std::wstring_view text, char* out, bool& replaced) noexcept
{
    Sink<char> sink{out};
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        std::uint32_t character = static_cast<std::uint32_t>(text[i]) & 0xFFFF;
        if (i + 1 < text.size() && IsPair(text[i], text[i + 1]))
        {
            character = JoinPair(text[i], text[i + 1]);
            ++i;
        }
        else if (IsSurrogate(character))
        {
            character = replacement;
            replaced = true;
        }
        PutUtf8(sink, character);
    }
    return sink.length;
}

std::size_t DecodeUtf8(std::string_view bytes, wchar_t* out, bool& replaced) noexcept
{
    Sink<wchar_t> sink{out};
    for (std::size_t i = 0; i < bytes.size();)
    {
        const auto byte = static_cast<unsigned char>(bytes[i]);
        if (byte < 0x80)
        {
            sink.Put(byte);
            ++i;
            continue;
        }
        const std::size_t start = i;
        const std::uint32_t character = TakeCharacter(bytes, i);
        if (character == replacement && !SpellsReplacement(bytes, start))
            replaced = true;
        PutUtf16(sink, character);
    }
    return sink.length;
}

} // namespace VnOSAL
