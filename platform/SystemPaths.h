#pragma once

#include <cstddef>
#include <string>

namespace platform {

// The full path of the host process's executable, cut to `limit` - 1 units; empty on failure.
// Any thread.
std::wstring GetHostExecutablePath(std::size_t limit);

// The path of a shell special folder by its CSIDL number, without creating it and without a
// trailing separator; empty on failure. Any thread.
std::wstring GetSpecialFolder(int folderId);

} // namespace platform
