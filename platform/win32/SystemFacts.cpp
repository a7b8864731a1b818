#include "platform/SystemFacts.h"

#include <winsock2.h> // before <iphlpapi.h>

#include <intrin.h>
#include <iphlpapi.h>

#include <algorithm>
#include <cstdlib>
#include <cwctype>
#include <iterator>

namespace platform {

bool QueryVersionEx(SystemVersion& version)
{
    OSVERSIONINFOW info = {};
    static_assert(sizeof(info) == 276);
    info.dwOSVersionInfoSize = sizeof(info);
    if (::GetVersionExW(&info) == 0)
        return false;
    version = {info.dwMajorVersion, info.dwMinorVersion};
    return true;
}

std::uint32_t QueryPackedVersion() { return ::GetVersion(); }

bool QueryNativeArchitecture(std::uint16_t& architecture)
{
    using Query = void(WINAPI*)(SYSTEM_INFO*);
    const HMODULE kernel = ::GetModuleHandleW(L"kernel32.dll");
    const FARPROC found =
        kernel == nullptr ? nullptr : ::GetProcAddress(kernel, "GetNativeSystemInfo");
    if (found == nullptr)
        return false;
    SYSTEM_INFO info = {};
    // Through void (*)(), the type that compilers take for any function.
    reinterpret_cast<Query>(reinterpret_cast<void (*)()>(found))(&info);
    architecture = info.wProcessorArchitecture;
    return true;
}

std::uint16_t GetUserDefaultLanguageId() { return ::GetUserDefaultLangID(); }

std::uint32_t GetAnsiCodePage() { return ::GetACP(); }

ScreenSize GetScreenSize()
{
    return {::GetSystemMetrics(SM_CXSCREEN), ::GetSystemMetrics(SM_CYSCREEN)};
}

bool QueryComputerName(std::size_t limit, std::wstring& name)
{
    std::wstring buffer(limit, L'\0');
    DWORD length = static_cast<DWORD>(limit);
    if (::GetComputerNameW(buffer.data(), &length) == 0 || length >= limit)
        return false;
    name.assign(buffer, 0, length);
    return true;
}

ProcessorVendor QueryProcessorVendor()
{
    int registers[4] = {}; // EAX, EBX, ECX, EDX
    ::__cpuidex(registers, 0, 0);
    return {static_cast<std::uint32_t>(registers[2]), static_cast<std::uint32_t>(registers[3])};
}

namespace {

// The system's list in one block: records that point to each other.
std::vector<std::byte> ReadAdapterList()
{
    ULONG size = 0;
    if (::GetAdaptersInfo(nullptr, &size) != ERROR_BUFFER_OVERFLOW)
        return {};
    std::vector<std::byte> block(size);
    if (::GetAdaptersInfo(reinterpret_cast<IP_ADAPTER_INFO*>(block.data()), &size) != ERROR_SUCCESS)
        return {};
    return block;
}

NetworkAdapter Describe(const IP_ADAPTER_INFO& info)
{
    NetworkAdapter adapter = {info.Type, {}, {}};
    const auto& gateway = info.GatewayList.IpAddress.String;
    adapter.firstGateway.assign(std::begin(gateway),
                                std::find(std::begin(gateway), std::end(gateway), '\0'));
    std::copy(std::begin(info.Address), std::end(info.Address), adapter.address.begin());
    return adapter;
}

static_assert(MAX_ADAPTER_ADDRESS_LENGTH == std::tuple_size_v<decltype(NetworkAdapter::address)>);

} // namespace

std::vector<NetworkAdapter> ListNetworkAdapters()
{
    const std::vector<std::byte> block = ReadAdapterList();
    const std::size_t most = block.size() / sizeof(IP_ADAPTER_INFO);
    const auto isInside = [&block, most](const IP_ADAPTER_INFO* info) {
        const auto begin = reinterpret_cast<std::uintptr_t>(block.data());
        const auto at = reinterpret_cast<std::uintptr_t>(info);
        return most > 0 && at >= begin && at - begin <= block.size() - sizeof(IP_ADAPTER_INFO);
    };
    std::vector<NetworkAdapter> adapters;
    const auto* info = reinterpret_cast<const IP_ADAPTER_INFO*>(block.data());
    for (; isInside(info) && adapters.size() < most; info = info->Next)
        adapters.push_back(Describe(*info));
    return adapters;
}

bool IsAlphanumeric(wchar_t unit) { return std::iswalnum(unit) != 0; }

void SeedRandom(std::uint32_t seed) { std::srand(seed); }

std::int32_t DrawRandom() { return std::rand(); }

} // namespace platform
