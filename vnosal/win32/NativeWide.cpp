#include "vnosal/NativeWide.h"

namespace VnOSAL {

VnString ToNativeWide(const VnString& text) noexcept { return text; }
VnString FromNativeWide(const VnString& text) noexcept { return text; }

} // namespace VnOSAL
