// The few thread functions that the compiler's runtime asks for when it throws an exception or
// builds a function's static object. Those of its own thread library bring 26 KB and an end of
// threads that must not be met under the loader's lock; these need nothing but a word or a slot
// each, and nothing of them waits for anybody's end.
//
// Only for MinGW's posix thread model, and only for the module.
#include "platform/win32/ThreadValues.h"

#include <windows.h>

#include <pthread.h>

#include <atomic>
#include <cerrno>
#include <cstdint>

namespace {

// --- mutexes: a word that is negative while it is free ------------------------------------------

// Owner in the low half, depth in the high one. Every mutex is recursive.
constexpr std::int64_t oneDeeper = std::int64_t{1} << 32;
constexpr std::int64_t freeMutex = -1;

std::atomic_ref<std::int64_t> WordOf(pthread_mutex_t* mutex) noexcept
{
    static_assert(sizeof(pthread_mutex_t) == sizeof(std::int64_t));
    return std::atomic_ref<std::int64_t>(*reinterpret_cast<std::int64_t*>(mutex));
}

bool IsHeldBy(std::int64_t word, DWORD thread) noexcept
{
    return word >= 0 && static_cast<DWORD>(word) == thread;
}

// --- keys: slots of the system, and who cleans up after a thread --------------------------------

using Destructor = void (*)(void*);

struct Key
{
    std::atomic<Destructor> destructor{nullptr};
    DWORD slot = 0;
};

constinit Key keys[8];
constinit std::atomic<int> keyCount{0};

// As POSIX has it: the value is cleared first, so that a destructor may set it again.
void CleanUpAfterThread() noexcept
{
    for (int i = 0; i < keyCount; ++i)
    {
        const Destructor destructor = keys[i].destructor;
        void* const value = destructor ? ::TlsGetValue(keys[i].slot) : nullptr;
        if (value == nullptr)
            continue;
        ::TlsSetValue(keys[i].slot, nullptr);
        destructor(value);
    }
}

// Gives the slots back when the module is unloaded. Constructed before all other static objects and
// so destroyed after them: the end of the trackers still throws and catches.
struct CSlotOwner
{
    ~CSlotOwner()
    {
        CleanUpAfterThread();
        for (int i = keyCount.exchange(0); i > 0; --i)
            ::TlsFree(keys[i - 1].slot);
    }
};

[[gnu::init_priority(101)]] const CSlotOwner slotOwner;

void NTAPI OnThread(void*, DWORD reason, void*) noexcept
{
    if (reason == DLL_THREAD_DETACH)
        CleanUpAfterThread();
}

} // namespace

void platform::FreeThreadValues() noexcept { CleanUpAfterThread(); }

// In the list of functions that the loader calls for each thread.
extern "C" {
[[gnu::section(".CRT$XLC"), gnu::used]] PIMAGE_TLS_CALLBACK zoOnThread = OnThread;
}

int pthread_mutex_init(pthread_mutex_t* mutex, const pthread_mutexattr_t*)
{
    WordOf(mutex) = freeMutex;
    return 0;
}

int pthread_mutex_destroy(pthread_mutex_t*) { return 0; }

int pthread_mutex_lock(pthread_mutex_t* mutex)
{
    const DWORD self = ::GetCurrentThreadId();
    const auto word = WordOf(mutex);
    for (int i = 0;; ++i)
    {
        std::int64_t current = word;
        if (IsHeldBy(current, self))
            return word += oneDeeper, 0;
        if (current < 0 && word.compare_exchange_weak(current, oneDeeper | self))
            return 0;
        ::Sleep(i < 100 ? 0 : 1);
    }
}

int pthread_mutex_unlock(pthread_mutex_t* mutex)
{
    const auto word = WordOf(mutex);
    const std::int64_t left = word - oneDeeper;
    word = left < oneDeeper ? freeMutex : left;
    return 0;
}

// Nobody waits but for a static object that another thread is just building.
int pthread_cond_wait(pthread_cond_t*, pthread_mutex_t* mutex)
{
    pthread_mutex_unlock(mutex);
    ::Sleep(1);
    return pthread_mutex_lock(mutex);
}

int pthread_cond_broadcast(pthread_cond_t*) { return 0; }

int pthread_once(pthread_once_t* control, void (*routine)())
{
    enum : long
    {
        notYet = PTHREAD_ONCE_INIT,
        running,
        done
    };
    const std::atomic_ref<long> state(*control);
    long expected = notYet;
    if (state.compare_exchange_strong(expected, running))
    {
        routine();
        state = done;
    }
    while (state != done)
        ::Sleep(0);
    return 0;
}

int pthread_key_create(pthread_key_t* key, void (*destructor)(void*))
{
    const DWORD slot = ::TlsAlloc();
    const int index = keyCount;
    if (slot == TLS_OUT_OF_INDEXES || index == static_cast<int>(std::size(keys)))
        return EAGAIN;
    keys[index].slot = slot;
    keys[index].destructor = destructor;
    keyCount = index + 1;
    *key = slot;
    return 0;
}

void* pthread_getspecific(pthread_key_t key)
{
    const DWORD error = ::GetLastError(); // which TlsGetValue clears
    void* const value = ::TlsGetValue(key);
    ::SetLastError(error);
    return value;
}

int pthread_setspecific(pthread_key_t key, const void* value)
{
    return ::TlsSetValue(key, const_cast<void*>(value)) ? 0 : ENOMEM;
}
