#include "zotracker/vnosal/VnResult.h"

#include "vnosal/FileSystem.h"

namespace VnOSAL {

VnResult::VnResult(std::uint32_t error, VnString failedItem) noexcept
    : systemError(error), kind(ReadErrorKind(error))
{
    if (kind != EError::None)
        item = static_cast<VnString&&>(failedItem);
}

VnResult::VnResult(EError error, VnString failedItem) noexcept
    : VnResult(NumberOf(error), static_cast<VnString&&>(failedItem))
{}

VnString VnResult::GetText() const noexcept
{
    return *this ? VnString() : item + L": " + ReadErrorText(systemError);
}

} // namespace VnOSAL
