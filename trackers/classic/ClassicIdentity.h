#pragma once

#include <string>

// The numbers by which the cookies of classic requests name site and visitor. Any thread.
namespace trackers {

// 9 decimal digits out of the digest of the tracking id.
std::wstring MakeDomainHash(const std::wstring& trackingId);

// The character codes of the product user id, one behind the other.
std::wstring MakeVisitorNumber(const std::wstring& productUserId);

} // namespace trackers
