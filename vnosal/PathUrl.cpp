#include "zotracker/vnosal/VnAString.h"
#include "zotracker/vnosal/VnPath.h"

#include "vnosal/PathText.h"

namespace VnOSAL {
namespace {

constexpr std::string_view unescaped = "-._~!$&'()*+,;=:@/";

bool StandsForItself(char byte) noexcept
{
    return (byte >= '0' && byte <= '9') || (byte >= 'a' && byte <= 'z') ||
           (byte >= 'A' && byte <= 'Z') || unescaped.find(byte) != std::string_view::npos;
}

VnString Escape(const VnString& text) noexcept
{
    VnString escaped;
    const VnAString bytes(text, codePageUtf8);
    for (const char byte : std::string_view(bytes))
        if (StandsForItself(byte))
            escaped.Append(static_cast<wchar_t>(byte));
        else
            escaped.AppendFormat(L"%%%02X",
                                 static_cast<unsigned>(static_cast<unsigned char>(byte)));
    return escaped;
}

// The byte that two hexadecimal digits behind a "%" stand for; -1 when they are none.
int ReadEscape(std::wstring_view digits) noexcept
{
    std::uint64_t value = 0;
    if (digits.size() != 2 || digits[0] == L'+' || digits[0] == L'-' ||
        !VnString(digits).ToUInt64(value, 16) || value > 0xFF)
        return -1;
    return static_cast<int>(value);
}

// False for an escaped zero or separator, which no file name can hold.
bool Unescape(std::wstring_view text, VnString& unescapedText) noexcept
{
    const VnAString encoded(text, codePageUtf8);
    VnString buffer; // its units serve as bytes
    auto* const bytes = reinterpret_cast<char*>(buffer.OpenBuffer(encoded.GetLength() + 1));
    if (!bytes)
        return false;
    const std::string_view from = encoded;
    std::size_t length = 0;
    for (std::size_t i = 0; i < from.size(); ++i)
    {
        bytes[length] = from[i];
        if (from[i] == '%' && i + 2 < from.size())
        {
            const wchar_t digits[] = {static_cast<wchar_t>(from[i + 1]),
                                      static_cast<wchar_t>(from[i + 2])};
            const int value = ReadEscape({digits, 2});
            if (value == 0 || value == '/' || value == '\\')
                return false;
            if (value > 0)
            {
                bytes[length] = static_cast<char>(value);
                i += 2;
            }
        }
        ++length;
    }
    EConversion conversion = EConversion::Exact;
    unescapedText = VnAString::FromBytes({bytes, length}, codePageUtf8).ToString(&conversion);
    return conversion == EConversion::Exact;
}

} // namespace

VnPath VnPath::FromFilePath(const VnPath& path) noexcept
{
    VnPath plain = path;
    plain.RemoveExtended();
    VnString slashes = plain.text;
    slashes.ReplaceAll(L"\\", L"/");
    switch (plain.form)
    {
    case EPathForm::DriveAbsolute:
        return VnPath(L"file:///" + Escape(slashes));
    case EPathForm::Unc:
        return VnPath(L"file:" + Escape(slashes));
    case EPathForm::Rooted:
        return VnPath(L"file://" + Escape(slashes));
    default:
        return {};
    }
}

bool VnPath::MakeFilePath() noexcept
{
    if (form != EPathForm::FileUrl)
        return false;
    VnString path;
    if (!Unescape(GetPart(5, pathEnd), path)) // behind "file:"
        return false;
    if (path.StartsWith(L"//"))
    {
        std::wstring_view rest = Part(path, 2);
        const VnString host(Part(rest, 0, rest.find(L'/')));
        if (host.IsEmpty() || host.Compare(L"localhost", ECase::Ignore) == 0)
            path.Remove(0, 2 + host.GetLength());
    }
    if (path[0] == L'/' && IsDrive(Part(path, 1)))
        path.Remove(0, 1);
    path.ReplaceAll(L"/", L"\\");
    if (path.IsEmpty())
        return false;
    *this = VnPath(path);
    return true;
}

} // namespace VnOSAL
