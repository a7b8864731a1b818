#include "platform/ProfileFile.h"

#include <windows.h>

namespace platform {

std::size_t CopyProfileText(const std::wstring& section, const std::wstring& key,
                            const std::wstring& defaultValue, std::span<wchar_t> buffer,
                            const std::wstring& path)
{
    return ::GetPrivateProfileStringW(section.c_str(), key.c_str(), defaultValue.c_str(),
                                      buffer.data(), static_cast<DWORD>(buffer.size()),
                                      path.c_str());
}

std::int32_t ReadProfileInt(const std::wstring& section, const std::wstring& key,
                            std::int32_t defaultValue, const std::wstring& path)
{
    return static_cast<std::int32_t>(
        ::GetPrivateProfileIntW(section.c_str(), key.c_str(), defaultValue, path.c_str()));
}

bool WriteProfileText(const std::wstring& section, const std::wstring& key,
                      const std::wstring& value, const std::wstring& path)
{
    return ::WritePrivateProfileStringW(section.c_str(), key.c_str(), value.c_str(),
                                        path.c_str()) == 1;
}

} // namespace platform
