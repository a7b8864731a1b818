#include "frame/ClosingPhase.h"

namespace frame {

void CClosingPhase::NoteDelivery(bool delivered) noexcept
{
    if (!delivered && stop.IsRequested())
        failed = true;
}

} // namespace frame
