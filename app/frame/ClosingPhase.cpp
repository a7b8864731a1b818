#include "app/frame/ClosingPhase.h"

namespace app {

void CClosingPhase::NoteAttempt(bool delivered) noexcept
{
    if (!delivered && stop.IsRequested())
        failed = true;
}

} // namespace app
