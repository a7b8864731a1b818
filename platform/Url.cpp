#include "platform/Url.h"

#include "text/CodePages.h"
#include "zotracker/vnosal/VnAString.h"

#include <algorithm>

namespace platform {

namespace {

bool StartsWithNoCase(std::wstring_view text, std::wstring_view lowerCasePrefix)
{
    return text.size() >= lowerCasePrefix.size() &&
           std::equal(lowerCasePrefix.begin(), lowerCasePrefix.end(), text.begin(),
                      [](wchar_t lower, wchar_t unit) {
                          return unit == lower ||
                                 (unit >= L'A' && unit <= L'Z' && unit - L'A' + L'a' == lower);
                      });
}

// Digits that make a number from 1 to 65535.
bool ReadPort(std::wstring_view digits, std::uint16_t& port)
{
    if (digits.empty() || digits.size() > 5 ||
        !std::all_of(digits.begin(), digits.end(),
                     [](wchar_t unit) { return unit >= L'0' && unit <= L'9'; }))
        return false;
    std::uint32_t number = 0;
    for (const wchar_t digit : digits)
        number = number * 10 + static_cast<std::uint32_t>(digit - L'0');
    if (number == 0 || number > 65535)
        return false;
    port = static_cast<std::uint16_t>(number);
    return true;
}

// "host", "host:port" or "[address]:port"; a user name in front of an "@" is left out.
bool ReadAuthority(std::wstring_view authority, Url& url)
{
    authority.remove_prefix(authority.rfind(L'@') + 1);
    const std::size_t hostEnd = authority.front() == L'[' ? authority.find(L']') : 0;
    if (hostEnd == authority.npos)
        return false;
    const std::size_t colon = authority.find(L':', hostEnd);
    url.host = authority.substr(0, colon);
    url.port = url.secure ? 443 : 80;
    return !url.host.empty() &&
           (colon == authority.npos || ReadPort(authority.substr(colon + 1), url.port));
}

void AppendPercentEncoded(std::wstring& out, std::string_view bytes)
{
    constexpr wchar_t digits[] = L"0123456789ABCDEF";
    for (const char byte : bytes)
    {
        const auto value = static_cast<unsigned char>(byte);
        out += {L'%', digits[value >> 4], digits[value & 15]};
    }
}

} // namespace

bool CrackUrl(std::wstring_view text, Url& url)
{
    Url cracked;
    cracked.secure = StartsWithNoCase(text, L"https://");
    if (!cracked.secure && !StartsWithNoCase(text, L"http://"))
        return false;
    text.remove_prefix(text.find(L"//") + 2);
    const std::size_t authorityEnd = std::min(text.find_first_of(L"/?#\\"), text.size());
    if (authorityEnd == 0 || text[authorityEnd - 1] == L'@' ||
        !ReadAuthority(text.substr(0, authorityEnd), cracked))
        return false;
    cracked.object = text.substr(authorityEnd);
    if (cracked.object.empty() || cracked.object.front() != L'/')
        cracked.object.insert(0, 1, L'/');
    url = std::move(cracked);
    return true;
}

bool ResolveLocation(const Url& base, std::wstring_view location, Url& resolved)
{
    const std::wstring scheme = base.secure ? L"https:" : L"http:";
    if (location.empty())
        return false;
    if (location.starts_with(L"//"))
        return CrackUrl(scheme + std::wstring(location), resolved);
    const std::size_t mark = location.find_first_of(L":/?#");
    if (mark != location.npos && location[mark] == L':')
        return CrackUrl(location, resolved);
    const std::wstring_view path =
        std::wstring_view(base.object).substr(0, base.object.find_first_of(L"?#"));
    Url next = base;
    if (location.front() == L'/')
        next.object = location;
    else if (location.front() == L'?')
        next.object = std::wstring(path).append(location);
    else
        next.object = std::wstring(path.substr(0, path.rfind(L'/') + 1)).append(location);
    resolved = std::move(next);
    return true;
}

std::wstring EscapeObject(std::wstring_view object)
{
    const std::size_t query = object.find(L'?');
    const auto stays = [&](std::size_t i) {
        const wchar_t unit = object[i];
        const bool mayBeDotSegment = unit == L'.' && i > query && object[i - 1] == L'/';
        return unit > L' ' && unit < 0x7F && unit != L'#' && unit != L'\\' && !mayBeDotSegment;
    };
    std::wstring escaped;
    escaped.reserve(object.size());
    for (std::size_t i = 0; i < object.size();)
    {
        const std::size_t start = i;
        while (i < object.size() && !stays(i)) // whole runs keep surrogate pairs together
            ++i;
        AppendPercentEncoded(
            escaped, text::EncodeBytes(object.substr(start, i - start), VnOSAL::codePageUtf8));
        if (i < object.size())
            escaped += object[i++];
    }
    return escaped;
}

} // namespace platform
