#include "vnosal/posix/NativeName.h"

#include "vnosal/Surrogates.h"
#include "vnosal/Utf8.h"

#include <algorithm>
#include <cerrno>

namespace VnOSAL {
namespace {

constexpr bool IsEscapedByte(wchar_t unit) { return unit >= 0xDC80 && unit <= 0xDCFF; }

// Bytes of the character that begins at `position`; 0 when none does.
std::size_t MeasureCharacter(std::string_view bytes, std::size_t position)
{
    for (std::size_t count = 1; count <= 4 && position + count <= bytes.size(); ++count)
    {
        wchar_t units[4];
        bool replaced = false;
        DecodeUtf8(bytes.substr(position, count), units, replaced);
        if (!replaced)
            return count;
    }
    return 0;
}

VnString DecodeEscaping(std::string_view bytes)
{
    VnString name;
    for (std::size_t i = 0; i < bytes.size();)
    {
        const std::size_t count = MeasureCharacter(bytes, i);
        wchar_t units[4];
        bool replaced = false;
        if (count == 0)
            name.Append(static_cast<wchar_t>(0xDC00 + static_cast<unsigned char>(bytes[i])));
        else
            name.Append({units, DecodeUtf8(bytes.substr(i, count), units, replaced)});
        i += std::max<std::size_t>(count, 1);
    }
    return name;
}

std::string EncodeEscaping(std::wstring_view name)
{
    std::string bytes;
    for (std::size_t i = 0; i < name.size(); ++i)
    {
        if (IsEscapedByte(name[i]))
        {
            bytes += static_cast<char>(name[i] - 0xDC00);
            continue;
        }
        const std::size_t count = i + 1 < name.size() && IsPair(name[i], name[i + 1]) ? 2 : 1;
        char encoded[4];
        bool replaced = false;
        bytes.append(encoded, EncodeUtf8(name.substr(i, count), encoded, replaced));
        i += count - 1;
    }
    return bytes;
}

} // namespace

std::string ToNativeName(std::wstring_view name)
{
    bool replaced = false;
    std::string bytes(EncodeUtf8(name, nullptr, replaced), '\0');
    if (replaced)
        return EncodeEscaping(name);
    EncodeUtf8(name, bytes.data(), replaced);
    return bytes;
}

VnString FromNativeName(std::string_view name)
{
    bool replaced = false;
    const std::size_t length = DecodeUtf8(name, nullptr, replaced);
    if (replaced)
        return DecodeEscaping(name);
    VnString text;
    if (wchar_t* const units = text.OpenBuffer(length))
    {
        DecodeUtf8(name, units, replaced);
        text.CloseBuffer(length);
    }
    return text;
}

bool ToNativePath(const VnString& path, std::string& native)
{
    const VnPath parsed(path);
    const bool isNative = parsed.GetForm() == EPathForm::Relative ||
                          parsed.GetForm() == EPathForm::Rooted || path.StartsWith(L"//");
    if (!isNative)
        return false;
    native = ToNativeName(path);
    std::replace(native.begin(), native.end(), '\\', '/');
    return native.find('\0') == std::string::npos;
}

// Names may end in dots and spaces here.
VnString CleanPath(const VnString& path) noexcept { return path; }

SystemError ErrorOf(long result) noexcept
{
    return result == -1 ? static_cast<SystemError>(errno) : 0;
}

} // namespace VnOSAL
