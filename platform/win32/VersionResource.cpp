#include "platform/VersionResource.h"

#include <windows.h>

#include <algorithm>
#include <cstring>
#include <span>

namespace platform {

namespace {

// The part of the block that a path names, from its first byte to the block's end; empty when there
// is none. `length` is as the system reports it: bytes, or units of a text.
std::span<const std::uint8_t> Find(const std::vector<std::uint8_t>& block, const std::wstring& path,
                                   UINT& length)
{
    void* found = nullptr;
    if (block.empty() || ::VerQueryValueW(block.data(), path.c_str(), &found, &length) == 0)
        return {};
    const auto offset =
        reinterpret_cast<std::uintptr_t>(found) - reinterpret_cast<std::uintptr_t>(block.data());
    return offset < block.size() ? std::span(block).subspan(offset)
                                 : std::span<const std::uint8_t>();
}

} // namespace

CVersionResource::CVersionResource(const std::wstring& filePath)
{
    DWORD ignored = 0;
    const DWORD size = ::GetFileVersionInfoSizeW(filePath.c_str(), &ignored);
    if (size == 0)
        return;
    block.resize(size);
    if (::GetFileVersionInfoW(filePath.c_str(), 0, size, block.data()) == 0)
        block.clear();
}

bool CVersionResource::QueryFirstTranslation(std::uint16_t& language, std::uint16_t& codePage) const
{
    UINT bytes = 0;
    const auto found = Find(block, L"\\VarFileInfo\\Translation", bytes);
    if (std::min<std::size_t>(bytes, found.size()) < sizeof(language) + sizeof(codePage))
        return false;
    std::memcpy(&language, found.data(), sizeof(language));
    std::memcpy(&codePage, found.data() + sizeof(language), sizeof(codePage));
    return true;
}

std::wstring CVersionResource::QueryText(const std::wstring& path) const
{
    UINT units = 0;
    const auto found = Find(block, path, units);
    std::wstring text(std::min<std::size_t>(units, found.size() / sizeof(wchar_t)), L'\0');
    std::memcpy(text.data(), found.data(), text.size() * sizeof(wchar_t));
    text.resize(std::min(text.find(L'\0'), text.size()));
    return text;
}

} // namespace platform
