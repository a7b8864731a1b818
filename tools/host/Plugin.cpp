#include <windows.h>

namespace {

template <class Function>
void Call(HMODULE module, const char* name) noexcept
{
    if (const auto function =
            reinterpret_cast<Function>(reinterpret_cast<void*>(::GetProcAddress(module, name))))
        function();
}

} // namespace

// As careless hosts do it: under the loader's lock, at the end of the process, too.
extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, void*)
{
    const HMODULE module = ::GetModuleHandleW(L"ZoTracker.dll");
    if (reason != DLL_PROCESS_DETACH || module == nullptr)
        return TRUE;
    Call<void (*)()>(module, "DestroyTrackerInstance");
    Call<void (*)()>(module, "DestroyKPITrackerInstance");
    return TRUE;
}
