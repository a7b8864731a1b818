#pragma once

namespace simulated {

enum class EThreads
{
    Run,
    Held, // do not begin before this changes
    Refused
};

// How the module's new threads fare; initially they run.
void SetThreads(EThreads fate);

} // namespace simulated
