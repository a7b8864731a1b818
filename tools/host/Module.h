#pragma once

#include "zotracker/ITracker.h"

#include <windows.h>

#include <utility>

namespace host {

// The exports of a module at any path as they are, so that everything can be tried with them.
// Without the module every Get returns null and every Destroy does nothing.
//
// Threads: as the exports; loading and destroying the loader from one thread.
class CModule
{
public:
    // `path` is the module's full path. A module that lacks an export is not used.
    explicit CModule(const wchar_t* path) noexcept : module(::LoadLibraryW(path))
    {
        const bool complete = Find("GetTrackerInstance", getTracker) &&
                              Find("DestroyTrackerInstance", destroyTracker) &&
                              Find("GetKPITrackerInstance", getKpiTracker) &&
                              Find("DestroyKPITrackerInstance", destroyKpiTracker);
        if (!complete)
            Unload();
    }
    ~CModule() { Unload(); }
    CModule(const CModule&) = delete;
    CModule& operator=(const CModule&) = delete;

    explicit operator bool() const noexcept { return module != nullptr; }

    ITracker* GetTracker() const noexcept { return module ? getTracker() : nullptr; }
    void DestroyTracker() const noexcept
    {
        if (module)
            destroyTracker();
    }
    ITracker* GetKpiTracker() const noexcept { return module ? getKpiTracker() : nullptr; }
    void DestroyKpiTracker() const noexcept
    {
        if (module)
            destroyKpiTracker();
    }

    // Unloads the module, which ends the trackers that are still alive.
    void Unload() noexcept
    {
        if (const HMODULE loaded = std::exchange(module, nullptr))
            ::FreeLibrary(loaded);
    }

private:
    template <class Function>
    bool Find(const char* name, Function& function) const noexcept
    {
        if (module)
            function =
                reinterpret_cast<Function>(reinterpret_cast<void*>(::GetProcAddress(module, name)));
        return module && function;
    }

    HMODULE module;
    ITracker* (*getTracker)() noexcept = nullptr;
    void (*destroyTracker)() noexcept = nullptr;
    ITracker* (*getKpiTracker)() noexcept = nullptr;
    void (*destroyKpiTracker)() noexcept = nullptr;
};

} // namespace host
