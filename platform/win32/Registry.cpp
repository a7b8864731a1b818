#include "platform/Registry.h"

#include "platform/win32/UniqueHandle.h"

#include <utility>

namespace platform {

namespace {

struct RegistryKeyTraits
{
    using Raw = HKEY;
    static Raw None() noexcept { return nullptr; }
    static bool IsValid(Raw raw) noexcept { return raw != nullptr; }
    static void Close(Raw raw) noexcept { ::RegCloseKey(raw); }
};
using CKeyHandle = CUniqueHandle<RegistryKeyTraits>;

HKEY RootKey(ERegistryRoot root)
{
    return root == ERegistryRoot::ClassesRoot ? HKEY_CLASSES_ROOT : HKEY_CURRENT_USER;
}

REGSAM ViewFlag(ERegistryView view)
{
    switch (view)
    {
    case ERegistryView::View32:
        return KEY_WOW64_32KEY;
    case ERegistryView::View64:
        return KEY_WOW64_64KEY;
    default:
        return 0;
    }
}

} // namespace

struct CRegistryKey::Native
{
    CKeyHandle handle;
};

CRegistryKey::CRegistryKey() noexcept = default;
CRegistryKey::CRegistryKey(CRegistryKey&& other) noexcept = default;
CRegistryKey& CRegistryKey::operator=(CRegistryKey&& other) noexcept = default;
CRegistryKey::~CRegistryKey() = default;
CRegistryKey::CRegistryKey(std::unique_ptr<Native> opened) noexcept : native(std::move(opened)) {}
CRegistryKey::operator bool() const noexcept { return native != nullptr; }

CRegistryKey CRegistryKey::Open(ERegistryRoot root, const std::wstring& subKey,
                                ERegistryAccess access, ERegistryView view)
{
    const REGSAM rights = access == ERegistryAccess::All ? KEY_ALL_ACCESS : KEY_READ;
    auto opened = std::make_unique<Native>();
    if (::RegOpenKeyExW(RootKey(root), subKey.c_str(), 0, rights | ViewFlag(view),
                        opened->handle.Put()) != ERROR_SUCCESS)
        return {};
    return CRegistryKey(std::move(opened));
}

CRegistryKey CRegistryKey::Create(ERegistryRoot root, const std::wstring& subKey,
                                  ERegistryView view, bool& existed)
{
    DWORD disposition = 0;
    auto opened = std::make_unique<Native>();
    if (::RegCreateKeyExW(RootKey(root), subKey.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                          KEY_ALL_ACCESS | ViewFlag(view), nullptr, opened->handle.Put(),
                          &disposition) != ERROR_SUCCESS)
        return {};
    existed = disposition == REG_OPENED_EXISTING_KEY;
    return CRegistryKey(std::move(opened));
}

bool CRegistryKey::QueryType(const std::wstring& name, std::uint32_t& type) const
{
    DWORD found = 0;
    if (!native || ::RegQueryValueExW(native->handle.Get(), name.c_str(), nullptr, &found, nullptr,
                                      nullptr) != ERROR_SUCCESS)
        return false;
    type = found;
    return true;
}

ERegistryQuery CRegistryKey::Query(const std::wstring& name, std::vector<std::uint8_t>& buffer,
                                   std::size_t& size) const
{
    if (!native)
        return ERegistryQuery::Failed;
    // A null buffer would make this a query for the size alone.
    std::uint8_t nothing = 0;
    DWORD count = static_cast<DWORD>(buffer.size());
    const LSTATUS status = ::RegQueryValueExW(native->handle.Get(), name.c_str(), nullptr, nullptr,
                                              buffer.empty() ? &nothing : buffer.data(), &count);
    if (status != ERROR_SUCCESS && status != ERROR_MORE_DATA)
        return ERegistryQuery::Failed;
    size = count;
    return status == ERROR_SUCCESS ? ERegistryQuery::Done : ERegistryQuery::MoreData;
}

bool CRegistryKey::Set(const std::wstring& name, std::uint32_t type,
                       const std::vector<std::uint8_t>& bytes)
{
    if (!native)
        return false;
    // The system stores a zero unit that follows a text in memory along with it, whatever length it
    // is told; so something else follows.
    std::vector<std::uint8_t> guarded = bytes;
    guarded.insert(guarded.end(), {0xFF, 0xFF});
    return ::RegSetValueExW(native->handle.Get(), name.c_str(), 0, type, guarded.data(),
                            static_cast<DWORD>(bytes.size())) == ERROR_SUCCESS;
}

} // namespace platform
