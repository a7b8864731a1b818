#pragma once

#include "zotracker/ITracker.h"

#include <windows.h>

#include <utility>

namespace zotracker {

// Loads ZoTracker.dll at run time and gives access to its exports, so that a host starts with or
// without the module. Without it, every Get returns null and every Destroy does nothing.
//
// Threads: as the exports; loading and destroying the loader from one thread.
class CLoader
{
public:
    // `path` is the module's full path. A module that lacks an export is not used.
    explicit CLoader(const wchar_t* path) noexcept : module(::LoadLibraryW(path))
    {
        const bool complete = Find("GetTrackerInstance", getTracker) &&
                              Find("DestroyTrackerInstance", destroyTracker) &&
                              Find("GetKPITrackerInstance", getKpiTracker) &&
                              Find("DestroyKPITrackerInstance", destroyKpiTracker);
        if (!complete)
            Unload();
    }
    ~CLoader() { Unload(); }
    CLoader(const CLoader&) = delete;
    CLoader& operator=(const CLoader&) = delete;

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

} // namespace zotracker
