#include "net/Md5.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

namespace net {

namespace {

constexpr std::size_t blockSize = 64;
constexpr std::size_t countOffset = 56; // where the message's length stands in the last block

using Block = std::array<std::uint32_t, 16>;

// The integer parts of 2^32 * abs(sin(i + 1)).
constexpr std::array<std::uint32_t, 64> sines = {
    0xd76aa478, 0xe8c7b756, 0x242070db, 0xc1bdceee, 0xf57c0faf, 0x4787c62a, 0xa8304613, 0xfd469501,
    0x698098d8, 0x8b44f7af, 0xffff5bb1, 0x895cd7be, 0x6b901122, 0xfd987193, 0xa679438e, 0x49b40821,
    0xf61e2562, 0xc040b340, 0x265e5a51, 0xe9b6c7aa, 0xd62f105d, 0x02441453, 0xd8a1e681, 0xe7d3fbc8,
    0x21e1cde6, 0xc33707d6, 0xf4d50d87, 0x455a14ed, 0xa9e3e905, 0xfcefa3f8, 0x676f02d9, 0x8d2a4c8a,
    0xfffa3942, 0x8771f681, 0x6d9d6122, 0xfde5380c, 0xa4beea44, 0x4bdecfa9, 0xf6bb4b60, 0xbebfbc70,
    0x289b7ec6, 0xeaa127fa, 0xd4ef3085, 0x04881d05, 0xd9d4d039, 0xe6db99e5, 0x1fa27cf8, 0xc4ac5665,
    0xf4292244, 0x432aff97, 0xab9423a7, 0xfc93a039, 0x655b59c3, 0x8f0ccc92, 0xffeff47d, 0x85845dd1,
    0x6fa87e4f, 0xfe2ce6e0, 0xa3014314, 0x4e0811a1, 0xf7537e82, 0xbd3af235, 0x2ad7d2bb, 0xeb86d391};

// How far each of the four repeating steps of a round rotates, and which word of the block the
// round's steps take: (first + step * stride) modulo 16.
constexpr int rotations[4][4] = {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}};
constexpr std::size_t firsts[4] = {0, 1, 5, 0};
constexpr std::size_t strides[4] = {1, 5, 3, 7};

template <std::size_t round>
constexpr std::uint32_t Mix(std::uint32_t x, std::uint32_t y, std::uint32_t z) noexcept
{
    if constexpr (round == 0)
        return z ^ (x & (y ^ z));
    else if constexpr (round == 1)
        return y ^ (z & (x ^ y));
    else if constexpr (round == 2)
        return x ^ y ^ z;
    else
        return y ^ (x | ~z);
}

// Step `index` of 64. The registers change their roles from step to step instead of their values.
template <std::size_t index>
inline void Step(std::array<std::uint32_t, 4>& registers, const Block& words) noexcept
{
    constexpr std::size_t round = index / 16;
    std::uint32_t& a = registers[(64 - index) % 4];
    const std::uint32_t b = registers[(65 - index) % 4];
    const std::uint32_t c = registers[(66 - index) % 4];
    const std::uint32_t d = registers[(67 - index) % 4];
    const std::uint32_t word = words[(firsts[round] + index * strides[round]) % 16];
    a = b + std::rotl(a + Mix<round>(b, c, d) + word + sines[index], rotations[round][index % 4]);
}

template <std::size_t... indices>
inline void RunSteps(std::array<std::uint32_t, 4>& registers, const Block& words,
                     std::index_sequence<indices...>) noexcept
{
    (Step<indices>(registers, words), ...);
}

Block ReadBlock(const std::uint8_t* bytes) noexcept
{
    Block words;
    for (std::size_t i = 0; i < words.size(); ++i, bytes += 4)
        words[i] =
            static_cast<std::uint32_t>(bytes[0]) | static_cast<std::uint32_t>(bytes[1]) << 8 |
            static_cast<std::uint32_t>(bytes[2]) << 16 | static_cast<std::uint32_t>(bytes[3]) << 24;
    return words;
}

void Transform(std::array<std::uint32_t, 4>& state, const std::uint8_t* bytes) noexcept
{
    std::array<std::uint32_t, 4> registers = state;
    RunSteps(registers, ReadBlock(bytes), std::make_index_sequence<64>());
    for (std::size_t i = 0; i < state.size(); ++i)
        state[i] += registers[i];
}

void WriteWords(std::span<const std::uint32_t> words, std::uint8_t* bytes) noexcept
{
    for (const std::uint32_t word : words)
        for (int shift = 0; shift < 32; shift += 8)
            *bytes++ = static_cast<std::uint8_t>(word >> shift);
}

} // namespace

void Md5Context::Initialize() noexcept
{
    *this = {};
    state = {0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476};
}

void Md5Context::Update(std::span<const std::uint8_t> bytes) noexcept
{
    const std::size_t offset = (bitCount[0] / 8) % blockSize;
    const auto low = static_cast<std::uint32_t>(bytes.size() << 3);
    bitCount[0] += low;
    bitCount[1] += static_cast<std::uint32_t>(bytes.size() >> 29) + (bitCount[0] < low ? 1 : 0);

    const std::size_t room = blockSize - offset;
    if (bytes.size() < room)
    {
        std::copy(bytes.begin(), bytes.end(), block.data() + offset);
        return;
    }
    std::copy_n(bytes.begin(), room, block.data() + offset);
    Transform(state, block.data());
    for (bytes = bytes.subspan(room); bytes.size() >= blockSize; bytes = bytes.subspan(blockSize))
        Transform(state, bytes.data());
    std::copy(bytes.begin(), bytes.end(), block.begin());
}

void Md5Context::Finish() noexcept
{
    static constexpr std::array<std::uint8_t, blockSize> padding = {0x80};
    std::array<std::uint8_t, 8> encodedCount;
    WriteWords(bitCount, encodedCount.data());

    const std::size_t offset = (bitCount[0] / 8) % blockSize;
    const std::size_t next = offset < countOffset ? countOffset : countOffset + blockSize;
    Update(std::span(padding).first(next - offset));
    Update(encodedCount);

    std::array<std::uint8_t, 16> result;
    WriteWords(state, result.data());
    *this = {};
    digest = result;
}

std::wstring DigestToHex(std::span<const std::uint8_t, 16> digest)
{
    static constexpr wchar_t digits[] = L"0123456789abcdef";
    std::wstring text;
    text.reserve(2 * digest.size());
    for (const std::uint8_t byte : digest)
    {
        text += digits[byte >> 4];
        text += digits[byte & 0xF];
    }
    return text;
}

std::wstring Md5Hex(const char* bytes)
{
    Md5Context context;
    context.Initialize();
    context.Update({reinterpret_cast<const std::uint8_t*>(bytes), std::strlen(bytes)});
    context.Finish();
    return DigestToHex(context.digest);
}

} // namespace net
