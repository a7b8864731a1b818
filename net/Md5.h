#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>

// MD5 message digests (RFC 1321). They name and anonymise; nothing here relies on their strength.
// Any thread; one context belongs to one thread at a time.
namespace net {

// The running state of one digest: Initialize(), any number of Update(), Finish().
struct Md5Context
{
    std::array<std::uint32_t, 4> state;
    std::array<std::uint32_t, 2> bitCount; // of the message so far, low word first, modulo 2^64
    std::array<std::uint8_t, 64> block;    // the bytes of the current, incomplete block
    std::array<std::uint8_t, 16> digest;   // written by Finish()

    void Initialize() noexcept;
    void Update(std::span<const std::uint8_t> bytes) noexcept;

    // Leaves the result in `digest` and everything else cleared.
    void Finish() noexcept;
};

// The bytes in order, each as two lower-case hexadecimal digits: 32 characters.
std::wstring DigestToHex(std::span<const std::uint8_t, 16> digest);

// The digest of the bytes before the terminating zero, as 32 lower-case hexadecimal digits.
std::wstring Md5Hex(const char* bytes);

} // namespace net
