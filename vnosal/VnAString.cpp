#include "zotracker/vnosal/VnAString.h"

#include "vnosal/CodePages.h"
#include "vnosal/Utf8.h"

#include <cstring>

namespace VnOSAL {
namespace {

EConversion Encode(std::wstring_view text, std::uint32_t page, char* out,
                   std::size_t& length) noexcept
{
    if (page != codePageUtf8)
        return EncodeCodePage(text, page, out, length);
    bool replaced = false;
    length = EncodeUtf8(text, out, replaced);
    return replaced ? EConversion::Replaced : EConversion::Exact;
}

EConversion Decode(std::string_view bytes, std::uint32_t page, wchar_t* out,
                   std::size_t& length) noexcept
{
    if (page != codePageUtf8)
        return DecodeCodePage(bytes, page, out, length);
    bool replaced = false;
    length = DecodeUtf8(bytes, out, replaced);
    return replaced ? EConversion::Replaced : EConversion::Exact;
}

bool Succeeded(EConversion conversion) noexcept
{
    return conversion == EConversion::Exact || conversion == EConversion::Replaced;
}

} // namespace

// Makes room for `next` bytes and a zero behind them.
bool VnAString::SetLength(std::size_t next) noexcept
{
    if (next == 0)
        return true;
    const std::size_t units = next / sizeof(wchar_t) + 1;
    wchar_t* const room = bytes.OpenBuffer(units);
    if (!room)
    {
        conversion = EConversion::OutOfMemory;
        return false;
    }
    room[units - 1] = L'\0';
    bytes.CloseBuffer(units);
    length = next;
    return true;
}

VnAString::VnAString(std::wstring_view text, std::uint32_t page) noexcept : codePage(page)
{
    std::size_t needed = 0;
    conversion = Encode(text, page, nullptr, needed);
    if (Succeeded(conversion) && SetLength(needed) && needed != 0)
        Encode(text, page, reinterpret_cast<char*>(bytes.OpenBuffer(bytes.GetLength())), needed);
}

VnAString VnAString::FromBytes(std::string_view bytes, std::uint32_t page) noexcept
{
    VnAString made;
    made.codePage = page;
    if (made.SetLength(bytes.size()) && !bytes.empty())
        std::memcpy(made.bytes.OpenBuffer(made.bytes.GetLength()), bytes.data(), bytes.size());
    return made;
}

VnString VnAString::ToString(EConversion* result) const noexcept
{
    VnString text = bytes.IsValid() ? VnString() : bytes;
    std::size_t needed = 0;
    EConversion decoded =
        text.IsValid() ? Decode(*this, codePage, nullptr, needed) : EConversion::OutOfMemory;
    if (Succeeded(decoded) && needed != 0)
    {
        wchar_t* const units = text.OpenBuffer(needed);
        if (!units)
            decoded = EConversion::OutOfMemory;
        else
        {
            Decode(*this, codePage, units, needed);
            text.CloseBuffer(needed);
        }
    }
    if (result)
        *result = decoded;
    return text;
}

} // namespace VnOSAL
