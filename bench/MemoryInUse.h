#pragma once

#include <cstddef>

#ifdef _WIN32
// clang-format off
#include <windows.h>
#include <psapi.h>
// clang-format on
#else
#include <malloc.h>
#endif

// The bytes that the process holds: on Linux what the heap has given out, with its own overhead; on
// Windows the memory that belongs to the process alone.
inline std::size_t GetMemoryInUse()
{
#ifdef _WIN32
    PROCESS_MEMORY_COUNTERS counters = {};
    ::GetProcessMemoryInfo(::GetCurrentProcess(), &counters, sizeof(counters));
    return counters.PagefileUsage;
#else
    const struct mallinfo2 info = ::mallinfo2();
    return info.uordblks + info.hblkhd;
#endif
}
