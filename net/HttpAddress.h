#pragma once

#include <string>
#include <string_view>

// How the HTTPS client reads addresses. They are taken apart by plain text search, not by the rules
// of RFC 3986: whatever stands where, something is asked for, and never without encryption.
// Pure; any thread.
namespace net {

// `url` with a secure scheme: a text without one gets "https://" and `defaultHost` in front, unless
// that is empty; then, where no "https://" stands, every "http://" becomes one.
std::wstring NormalizeUrl(std::wstring url, std::wstring_view defaultHost);

// Finds the host behind the first "://", up to the next "/" or "?". A port stays part of it. False,
// with `host` unchanged, when there is no "://" or nothing in front of it.
bool FindHost(std::wstring_view url, std::wstring& host);

// What is asked of `host`, path and query: `url` without its scheme and host.
std::wstring GetObjectPath(std::wstring_view url, std::wstring_view host);

// Every "http://" in `text` as "https://".
std::wstring UpgradeScheme(const std::wstring& text);

// Whether two addresses are the same but for the case of their letters.
bool IsSameUrl(std::wstring_view one, std::wstring_view other);

} // namespace net
