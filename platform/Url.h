#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace platform {

// An absolute http or https address, taken apart (RFC 3986).
struct Url
{
    bool secure = false;
    std::wstring host;
    std::uint16_t port = 0;
    std::wstring object; // path and query, begins with "/"
};

// False, with `url` unchanged, when the text is not such an address: another scheme, no host, a
// port that is not a number from 1 to 65535. A fragment stays part of the object.
bool CrackUrl(std::wstring_view text, Url& url);

// The address that a Location header names, seen from `base`: absolute, or relative in any of its
// forms. False when it leads to no http or https address.
bool ResolveLocation(const Url& base, std::wstring_view location, Url& resolved);

// `object` as it can stand in a request line and comes through the system's HTTP client unchanged:
// controls, blanks, "#", backslashes and everything beyond ASCII are percent-encoded as UTF-8, and
// so is a dot behind a slash of the query, which the client would take for a dot segment. Every
// other unit stays as it is, percent signs included.
std::wstring EscapeObject(std::wstring_view object);

} // namespace platform
