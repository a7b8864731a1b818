#pragma once

#include <string>

namespace frame {

// The full path of the "install.cfg" in the folder of `hostPath`, whether it exists or not. Of a
// name without a folder it is one that as a rule does not exist. Any thread.
std::wstring GetConfigPathBeside(const std::wstring& hostPath);

// The same; empty when there is no such file. Any thread.
std::wstring FindConfigBeside(const std::wstring& hostPath);

} // namespace frame
