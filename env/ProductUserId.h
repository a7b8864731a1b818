#pragma once

#include <string>

namespace env {

// The identifier that a product reports for this machine: 32 lower-case hexadecimal digits, the
// digest of the computer identifier and the product's name. An empty name means the host
// application's product, and only that identifier is kept for the process. Any thread.
std::wstring GetProductUserId(const std::wstring& productName);

} // namespace env
