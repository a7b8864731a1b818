#pragma once

#include "text/Case.h"

#include <functional>
#include <mutex>
#include <string>
#include <vector>

// The simulated Windows that native tests link instead of platform/win32: a small model of what
// the module asks of the system. The headers beside this one hold the controls that tests set it
// up and look at it with; the contract cases of tests/platform hold it to the real system.
// Any control may be called from any thread while the logic under test runs.
namespace simulated {

inline std::vector<std::function<void()>> resets;

// Puts everything back to the state of a freshly started test: an empty disk and registry, the
// default facts, no failures, no records. Call it before each case.
inline void Reset()
{
    for (const auto& reset : resets)
        reset();
}

// A part of the model's state with its lock, for static objects. `state->field` holds the lock for
// the whole expression, Hold() for as long as its result lives. A thread may hold it twice.
template <class T>
class CState
{
    std::recursive_mutex& mutex = *new std::recursive_mutex; // outlives every thread
    T& value = *new T;

public:
    struct CHeld
    {
        std::unique_lock<std::recursive_mutex> lock;
        T& value;
        T* operator->() const { return &value; }
        T& operator*() const { return value; }
    };

    CState() { resets.emplace_back(std::bind_front(&CState::Reset, this)); }
    CHeld Hold() { return {std::unique_lock(mutex), value}; }
    CHeld operator->() { return Hold(); }
    void Reset() { *Hold() = T(); }
};

// The order of names without regard to case.
struct IgnoringCase
{
    bool operator()(std::wstring one, std::wstring other) const
    {
        text::MakeUpper(one);
        text::MakeUpper(other);
        return one < other;
    }
};

// Whether a path names `top` or something below it, in any case.
inline bool IsAtOrBelow(const std::wstring& path, const std::wstring& top)
{
    return text::EqualIgnoringCase((path + L'\\').substr(0, top.size() + 1), top + L'\\');
}

} // namespace simulated
