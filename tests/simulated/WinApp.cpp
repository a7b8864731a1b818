#include "platform/WinApp.h"

namespace platform {

namespace {

CWinApp* application = nullptr;

} // namespace

CWinApp::CWinApp() noexcept { application = this; }

CWinApp::~CWinApp() { application = nullptr; }

CWinApp* CWinApp::GetApp() noexcept { return application; }

} // namespace platform
