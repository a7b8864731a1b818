#pragma once

#include <string>

namespace app {

// The full path of the "install.cfg" in the folder of `hostPath`; empty when there is no such file.
// Any thread.
std::wstring FindConfigBeside(const std::wstring& hostPath);

} // namespace app
