#pragma once

#include "zotracker/vnosal/VnString.h"

#include <string_view>

namespace VnOSAL {

// Code pages by their Windows numbers; any number that the system knows may be used. Elsewhere than
// on Windows the first two mean UTF-8.
inline constexpr std::uint32_t codePageAnsi = 0; // the system's default for narrow text
inline constexpr std::uint32_t codePageOem = 1;  // the default of its console
inline constexpr std::uint32_t codePageLatin1 = 28591;
inline constexpr std::uint32_t codePageUtf8 = 65001;

// What became of a conversion.
enum class EConversion : std::uint8_t
{
    Exact,
    Replaced,        // something had no counterpart; a replacement stands in its place
    UnknownCodePage, // the result is empty
    OutOfMemory      // the result is empty; a VnString is invalid, too
};

// Narrow text in a code page, for handing to interfaces that want bytes. Never changes; copies
// share the bytes.
//
// A character that the code page lacks becomes the code page's own default character, usually "?",
// never one that merely looks similar; an unpaired surrogate becomes U+FFFD in UTF-8. Bytes that
// are no text become U+FFFD, in UTF-8 one for each longest beginning of a character (the practice
// that the Unicode standard recommends, chapter 3.9).
//
// Threads: as VnString.
class ZO_VNOSAL_API VnAString
{
public:
    VnAString() noexcept = default;
    explicit VnAString(std::wstring_view text, std::uint32_t page = codePageAnsi) noexcept;

    // Takes the bytes as they are.
    static VnAString FromBytes(std::string_view bytes, std::uint32_t page = codePageAnsi) noexcept;

    // The bytes, zero-terminated; valid as long as the object.
    const char* GetText() const noexcept
    {
        return bytes.IsEmpty() ? "" : reinterpret_cast<const char*>(bytes.GetText());
    }
    std::size_t GetLength() const noexcept { return length; }
    bool IsEmpty() const noexcept { return length == 0; }
    operator std::string_view() const noexcept { return {GetText(), length}; }
    std::uint32_t GetCodePage() const noexcept { return codePage; }

    // How the conversion that made this object went.
    EConversion GetConversion() const noexcept { return conversion; }

    // The text; `result`, where given, tells how the conversion went.
    VnString ToString(EConversion* result = nullptr) const noexcept;

private:
    bool SetLength(std::size_t next) noexcept;

    VnString bytes; // two or four bytes in each unit, the last padded with zeros
    std::size_t length = 0;
    std::uint32_t codePage = codePageAnsi;
    EConversion conversion = EConversion::Exact;
};

} // namespace VnOSAL
