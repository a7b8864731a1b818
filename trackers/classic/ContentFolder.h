#pragma once

#include <string>

namespace trackers {

// The folder for a product's own data, ready to have a file name put behind it: the configured
// "install"/"UserContentPath" exactly as it stands, or else the product's folder in that of the
// suite, both created when they are missing. Any thread.
std::wstring GetUserContentFolder(const std::wstring& companyFolderWord,
                                  const std::wstring& hostProductName);

// Creates a folder that GetUserContentFolder has returned again, if it has gone since. Asks nothing
// that needs the loader's lock.
void RestoreUserContentFolder(const std::wstring& folder);

} // namespace trackers
