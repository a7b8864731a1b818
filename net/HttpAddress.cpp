#include "net/HttpAddress.h"

#include "text/Case.h"

namespace net {

namespace {

constexpr std::wstring_view secureScheme = L"https://";
constexpr std::wstring_view plainScheme = L"http://";

bool Contains(std::wstring_view text, std::wstring_view part)
{
    return text.find(part) != text.npos;
}

bool SkipPrefix(std::wstring_view& text, std::wstring_view prefix)
{
    const bool found = text.starts_with(prefix);
    if (found)
        text.remove_prefix(prefix.size());
    return found;
}

} // namespace

std::wstring NormalizeUrl(std::wstring url, std::wstring_view defaultHost)
{
    if (!Contains(url, secureScheme) && !Contains(url, plainScheme) && !defaultHost.empty())
        url.insert(0, defaultHost).insert(0, secureScheme);
    return Contains(url, secureScheme) ? url : UpgradeScheme(url);
}

bool FindHost(std::wstring_view url, std::wstring& host)
{
    constexpr std::wstring_view mark = L"://";
    const std::size_t scheme = url.find(mark);
    if (scheme == url.npos || scheme == 0)
        return false;
    url.remove_prefix(scheme + mark.size());
    host = url.substr(0, url.find_first_of(L"/?"));
    return true;
}

std::wstring GetObjectPath(std::wstring_view url, std::wstring_view host)
{
    if (!SkipPrefix(url, secureScheme))
        SkipPrefix(url, plainScheme);
    while (SkipPrefix(url, L":"))
    {}
    while (SkipPrefix(url, L"//"))
    {}
    SkipPrefix(url, host);
    return std::wstring(url);
}

std::wstring UpgradeScheme(const std::wstring& text)
{
    std::wstring upgraded;
    std::size_t done = 0;
    for (std::size_t i; (i = text.find(plainScheme, done)) != text.npos;
         done = i + plainScheme.size())
        upgraded.append(text, done, i - done).append(secureScheme);
    return upgraded.append(text, done);
}

bool IsSameUrl(std::wstring_view one, std::wstring_view other)
{
    return text::EqualIgnoringCase(one, other);
}

} // namespace net
