#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

// The system registry as far as the module reads and writes it.
namespace platform {

enum class ERegistryRoot
{
    ClassesRoot,
    CurrentUser
};

// Default is the view of the process itself; the module is a 64-bit one.
enum class ERegistryView
{
    Default,
    View32,
    View64
};

enum class ERegistryAccess
{
    Read, // KEY_READ
    All   // KEY_ALL_ACCESS
};

// The type numbers of the system's value types that the module tells apart.
inline constexpr std::uint32_t registrySz = 1;
inline constexpr std::uint32_t registryExpandSz = 2;
inline constexpr std::uint32_t registryDword = 4;

enum class ERegistryQuery
{
    Done,
    MoreData, // the buffer was too small; `size` may tell how much is needed
    Failed
};

// Sole owner of an open key; closes it. Empty when opening failed.
//
// Threads: one at a time; the registry itself may be used from any number of keys and threads.
class CRegistryKey
{
public:
    CRegistryKey() noexcept;
    CRegistryKey(CRegistryKey&& other) noexcept;
    CRegistryKey& operator=(CRegistryKey&& other) noexcept;
    ~CRegistryKey();

    static CRegistryKey Open(ERegistryRoot root, const std::wstring& subKey, ERegistryAccess access,
                             ERegistryView view);

    // Opens with all access, creating what is missing of the path. `existed` is set on success.
    static CRegistryKey Create(ERegistryRoot root, const std::wstring& subKey, ERegistryView view,
                               bool& existed);

    explicit operator bool() const noexcept;

    // The type of a value. False when there is no such value; `type` is then unchanged.
    bool QueryType(const std::wstring& name, std::uint32_t& type) const;

    // Copies the value's bytes to the front of `buffer`; text is UTF-16, low byte first. `size` is
    // the number of bytes of the value.
    ERegistryQuery Query(const std::wstring& name, std::vector<std::uint8_t>& buffer,
                         std::size_t& size) const;

    // Stores exactly the given bytes. True on success.
    bool Set(const std::wstring& name, std::uint32_t type, const std::vector<std::uint8_t>& bytes);

private:
    struct Native;
    explicit CRegistryKey(std::unique_ptr<Native> opened) noexcept;
    std::unique_ptr<Native> native;
};

} // namespace platform
