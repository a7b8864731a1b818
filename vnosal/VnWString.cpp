#include "zotracker/vnosal/VnWString.h"

#include "vnosal/NativeWide.h"

namespace VnOSAL {

VnWString::VnWString(const VnString& text) noexcept : wide(ToNativeWide(text)) {}

VnWString::VnWString(const VnAString& narrow) noexcept : VnWString(narrow.ToString()) {}

VnWString VnWString::FromWide(const wchar_t* text) noexcept
{
    VnWString made;
    made.wide = text;
    return made;
}

VnString VnWString::ToString() const noexcept { return FromNativeWide(wide); }

} // namespace VnOSAL
