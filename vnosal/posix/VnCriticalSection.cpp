#include "zotracker/vnosal/VnCriticalSection.h"

#include <pthread.h>

#include <new>

namespace VnOSAL {
namespace {

pthread_mutex_t* Native(std::byte* storage) noexcept
{
    return std::launder(reinterpret_cast<pthread_mutex_t*>(storage));
}

} // namespace

VnCriticalSection::VnCriticalSection() noexcept
{
    static_assert(sizeof(storage) >= sizeof(pthread_mutex_t));
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutex_init(new (storage) pthread_mutex_t, &attributes);
    pthread_mutexattr_destroy(&attributes);
}

VnCriticalSection::~VnCriticalSection() { pthread_mutex_destroy(Native(storage)); }
void VnCriticalSection::Enter() noexcept { pthread_mutex_lock(Native(storage)); }
bool VnCriticalSection::TryEnter() noexcept { return pthread_mutex_trylock(Native(storage)) == 0; }
void VnCriticalSection::Leave() noexcept { pthread_mutex_unlock(Native(storage)); }

} // namespace VnOSAL
