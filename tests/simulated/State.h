#pragma once

#include <mutex>

namespace simulated {

// What simulated::Reset() puts back.
class CResettable
{
public:
    CResettable();
    CResettable(const CResettable&) = delete;
    CResettable& operator=(const CResettable&) = delete;
    virtual void Reset() = 0;

protected:
    ~CResettable() = default;
};

// A part of the model's state with its lock, for static objects. `state->field` holds the lock for
// the whole expression, Hold() for as long as its result lives. A thread may hold it twice.
template <class T>
class CState final : public CResettable
{
    struct Guarded
    {
        std::recursive_mutex mutex;
        T value{};
    };
    Guarded& guarded = *new Guarded; // outlives every thread

public:
    class CHeld
    {
    public:
        explicit CHeld(Guarded& held) : guarded(held), lock(held.mutex) {}
        T* operator->() const { return &guarded.value; }
        T& operator*() const { return guarded.value; }

    private:
        Guarded& guarded;
        std::unique_lock<std::recursive_mutex> lock;
    };

    CHeld Hold() { return CHeld(guarded); }
    CHeld operator->() { return Hold(); }
    void Reset() override { *Hold() = T(); }
};

} // namespace simulated
