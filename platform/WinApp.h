#pragma once

namespace platform {

// The application object of a module: one static instance, constructed while the module is being
// loaded and destroyed while it is being unloaded, both under the loader's lock.
class CWinApp
{
public:
    CWinApp() noexcept;
    virtual ~CWinApp();
    CWinApp(const CWinApp&) = delete;
    CWinApp& operator=(const CWinApp&) = delete;

    // Called once after all static objects are constructed; false makes the load fail.
    virtual bool InitInstance() { return true; }

    // The module's application object, null when there is none. Loader's lock only.
    static CWinApp* GetApp() noexcept;
};

} // namespace platform
