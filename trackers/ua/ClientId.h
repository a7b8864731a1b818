#pragma once

#include <string>

namespace trackers {

// The identifier of this installation of the host's product: 32 lower-case hexadecimal digits, kept
// in the registry below a key of the product's own. A new one, made of `productUserId` and the tick
// count, is written for the machine and for the user, where either is allowed. Any thread.
std::wstring FindOrMakeClientId(const std::wstring& productUserId);

} // namespace trackers
