// Where the exception handling of the compiler's runtime keeps, for each thread, what is being
// caught and how many exceptions are in flight. Takes the place of __cxa_get_globals and
// __cxa_get_globals_fast (libstdc++, eh_globals.cc; Itanium C++ ABI, section 2.2.2), which ask for
// memory at the first exception of a thread and end the process when there is none.
//
// The place is part of the thread's block for this module that the loader makes before the thread
// or the load goes on (PE format, the .tls section), so there is nothing to ask for and nothing to
// free.
#include <windows.h>

#include <cstddef>

#pragma GCC diagnostic ignored "-Warray-bounds" // GCC 12 takes an address in a segment for null

extern "C" {

extern ULONG _tls_index;       // of this module; set by the loader
extern std::byte _tls_start[]; // the block as it is in the file
}

namespace {

struct Globals
{
    void* caughtExceptions;
    unsigned int uncaughtExceptions;
};

// Named to stand between the linker's marks for the section's start and end.
[[gnu::section(".tls$zo"), gnu::used]] constinit Globals pattern{};

constexpr std::ptrdiff_t blocksInEnvironment = 0x58; // of a 64-bit thread's environment block

} // namespace

extern "C" Globals* __cxa_get_globals() noexcept
{
    auto* const environment = reinterpret_cast<std::byte*>(::NtCurrentTeb());
    auto* const blocks = *reinterpret_cast<std::byte***>(environment + blocksInEnvironment);
    const std::ptrdiff_t offset = reinterpret_cast<std::byte*>(&pattern) - _tls_start;
    return reinterpret_cast<Globals*>(blocks[_tls_index] + offset);
}

extern "C" Globals* __cxa_get_globals_fast() noexcept { return __cxa_get_globals(); }
