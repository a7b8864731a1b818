#include "vnosal/CodePages.h"

#include "vnosal/Surrogates.h"
#include "vnosal/Utf8.h"

#include <cerrno>
#include <iconv.h>
#include <string>

namespace VnOSAL {
namespace {

const auto noConverter = reinterpret_cast<iconv_t>(-1);
constexpr auto failed = static_cast<std::size_t>(-1);
constexpr const char* units16 = "UTF-16LE";

std::string NameOf(std::uint32_t page)
{
    switch (page)
    {
    case 20127:
        return "US-ASCII";
    case 20866:
        return "KOI8-R";
    case 21866:
        return "KOI8-U";
    case 51932:
        return "EUC-JP";
    case 51949:
        return "EUC-KR";
    case 54936:
        return "GB18030";
    case 65000:
        return "UTF-7";
    default:
        break;
    }
    if (page > 28590 && page < 28607)
        return "ISO-8859-" + std::to_string(page - 28590);
    return "CP" + std::to_string(page);
}

class CConverter
{
public:
    CConverter(const std::string& to, const std::string& from)
        : descriptor(iconv_open(to.c_str(), from.c_str()))
    {}
    ~CConverter()
    {
        if (*this)
            iconv_close(descriptor);
    }
    CConverter(const CConverter&) = delete;
    CConverter& operator=(const CConverter&) = delete;

    explicit operator bool() const { return descriptor != noConverter; }

    // Converts as far as `input` can be converted and cuts that off it; true when that was all.
    bool Convert(std::string_view& input, std::string& output)
    {
        char buffer[1024];
        std::size_t result = failed;
        do
        {
            char* in = const_cast<char*>(input.data());
            std::size_t left = input.size();
            char* out = buffer;
            std::size_t room = sizeof(buffer);
            result = iconv(descriptor, left != 0 ? &in : nullptr, &left, &out, &room);
            output.append(buffer, sizeof(buffer) - room);
            input.remove_prefix(input.size() - left);
        } while (result == failed && errno == E2BIG);
        return result != failed;
    }

private:
    const iconv_t descriptor;
};

std::string ToBytes(std::wstring_view text)
{
    std::string bytes;
    for (const wchar_t unit : text)
    {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8 & 0xFF);
    }
    return bytes;
}

bool IsUtf8(std::uint32_t page) { return page <= codePageOem; }

// Bytes of the first character: one unit or a pair.
std::size_t MeasureCharacter(std::string_view units)
{
    const auto unitAt = [units](std::size_t i) {
        return static_cast<wchar_t>(static_cast<unsigned char>(units[i]) |
                                    static_cast<unsigned char>(units[i + 1]) << 8);
    };
    return units.size() >= 4 && IsPair(unitAt(0), unitAt(2)) ? 4 : 2;
}

} // namespace

EConversion EncodeCodePage(std::wstring_view text, std::uint32_t page, char* out,
                           std::size_t& length) noexcept
{
    bool replaced = false;
    if (IsUtf8(page))
    {
        length = EncodeUtf8(text, out, replaced);
        return replaced ? EConversion::Replaced : EConversion::Exact;
    }
    CConverter converter(NameOf(page), units16);
    if (!converter)
        return EConversion::UnknownCodePage;
    const std::string units = ToBytes(text);
    std::string_view rest = units;
    std::string bytes;
    while (!rest.empty() && !converter.Convert(rest, bytes))
    {
        replaced = true;
        rest.remove_prefix(MeasureCharacter(rest));
        std::string_view questionMark("?\0", 2);
        converter.Convert(questionMark, bytes);
    }
    std::string_view end;
    converter.Convert(end, bytes);
    if (out)
        bytes.copy(out, bytes.size());
    length = bytes.size();
    return replaced ? EConversion::Replaced : EConversion::Exact;
}

EConversion DecodeCodePage(std::string_view bytes, std::uint32_t page, wchar_t* out,
                           std::size_t& length) noexcept
{
    bool replaced = false;
    if (IsUtf8(page))
    {
        length = DecodeUtf8(bytes, out, replaced);
        return replaced ? EConversion::Replaced : EConversion::Exact;
    }
    CConverter converter(units16, NameOf(page));
    if (!converter)
        return EConversion::UnknownCodePage;
    std::string units;
    while (!bytes.empty() && !converter.Convert(bytes, units))
    {
        replaced = true;
        bytes.remove_prefix(1);
        units += "\xFD\xFF";
    }
    length = units.size() / 2;
    for (std::size_t i = 0; out && i < length; ++i)
        out[i] = static_cast<wchar_t>(static_cast<unsigned char>(units[2 * i]) |
                                      static_cast<unsigned char>(units[2 * i + 1]) << 8);
    return replaced ? EConversion::Replaced : EConversion::Exact;
}

} // namespace VnOSAL
