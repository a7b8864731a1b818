#pragma once

#include <string>

namespace trackers {

// The folder for a product's own data, ready to have a file name put behind it: the configured
// "install"/"UserContentPath" exactly as it stands, or else the product's folder in that of the
// suite, both created when they are missing. Any thread.
std::wstring GetUserContentFolder(const std::wstring& companyFolderWord,
                                  const std::wstring& hostProductName);

} // namespace trackers
