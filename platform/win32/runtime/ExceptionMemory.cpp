// Memory for exceptions in flight. The compiler's runtime sets 73 KB aside for the case that there
// is no memory left, when the module is loaded, and never gives them back; a host that loads and
// unloads the module again and again would lose them each time. This has a few static places for
// that case, because running out of memory is what nearly every exception of this module is about.
//
// Only for the GNU runtime: its exception handling asks for memory by these names (Itanium C++ ABI,
// section 2.4.2).
#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <cstring>

namespace {

// At least the header that the runtime keeps in front of an exception, which it calls
// __cxa_refcounted_exception.
constexpr std::size_t headerSize = 256;
constexpr std::size_t reservedSize = headerSize + 128; // no exception of this module is larger
constexpr std::size_t reservedCount = 16;

struct alignas(std::max_align_t) Reserve
{
    std::byte memory[reservedSize];
};

constinit Reserve reserves[reservedCount] = {};
constinit std::atomic<bool> reserveTaken[reservedCount] = {};

void* TakeReserve(std::size_t size) noexcept
{
    for (std::size_t i = 0; size <= reservedSize && i < reservedCount; ++i)
        if (!reserveTaken[i].exchange(true))
            return reserves[i].memory;
    return nullptr;
}

bool GiveReserve(const void* memory) noexcept
{
    for (std::size_t i = 0; i < reservedCount; ++i)
        if (memory == reserves[i].memory)
            return reserveTaken[i] = false, true;
    return false;
}

} // namespace

extern "C" void* __cxa_allocate_exception(std::size_t size) noexcept
{
    const std::size_t wanted = size + headerSize;
    void* memory = std::malloc(wanted);
    if (memory == nullptr)
        memory = TakeReserve(wanted);
    if (memory == nullptr)
        std::abort();
    std::memset(memory, 0, headerSize);
    return static_cast<std::byte*>(memory) + headerSize;
}

extern "C" void __cxa_free_exception(void* thrown) noexcept
{
    void* const memory = static_cast<std::byte*>(thrown) - headerSize;
    if (!GiveReserve(memory))
        std::free(memory);
}
