#include "platform/WinApp.h"

#include "platform/ModuleState.h"

#include <windows.h>

namespace platform {

namespace {

constinit CWinApp* application = nullptr;

} // namespace

CWinApp::CWinApp() noexcept { application = this; }

CWinApp::~CWinApp() { application = nullptr; }

CWinApp* CWinApp::GetApp() noexcept { return application; }

} // namespace platform

// Runs after the constructors of the static objects and before their destructors.
extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, void* processEnds)
{
    using namespace platform;
    if (reason == DLL_PROCESS_ATTACH && CWinApp::GetApp() != nullptr)
        return CWinApp::GetApp()->InitInstance() ? TRUE : FALSE;
    if (reason == DLL_PROCESS_DETACH)
        SetModuleState(processEnds != nullptr ? EModuleState::ProcessEnding
                                              : EModuleState::Unloading);
    return TRUE;
}
