#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

// What the system says of itself. Any thread.
namespace platform {

struct SystemVersion
{
    std::uint32_t major;
    std::uint32_t minor;
};

// The version that the system reports to the host process (GetVersionExW). False on failure.
bool QueryVersionEx(SystemVersion& version);

// The same from GetVersion, which never fails: low byte major, next byte minor.
std::uint32_t QueryPackedVersion();

// Whether the system offers GetNativeSystemInfo; if so, the processor's architecture number
// (9 is x64).
bool QueryNativeArchitecture(std::uint16_t& architecture);

// The user's default language identifier (LANGID).
std::uint16_t GetUserDefaultLanguageId();

// The number of the system's default code page for narrow text.
std::uint32_t GetAnsiCodePage();

// Width and height of the primary screen in pixels.
struct ScreenSize
{
    std::int32_t width;
    std::int32_t height;
};
ScreenSize GetScreenSize();

// The computer's name of at most `limit` - 1 units. False when the system fails or it is longer.
bool QueryComputerName(std::size_t limit, std::wstring& name);

// The registers ECX and EDX after the processor identification instruction with leaf 0.
struct ProcessorVendor
{
    std::uint32_t ecx;
    std::uint32_t edx;
};
ProcessorVendor QueryProcessorVendor();

// One network adapter as GetAdaptersInfo lists it.
struct NetworkAdapter
{
    std::uint32_t type;                  // 6 is Ethernet
    std::string firstGateway;            // text of the first gateway address, may be empty
    std::array<std::uint8_t, 8> address; // hardware address, as much of it as the adapter has
};

// The adapters in the system's order; empty when there are none or the system fails.
std::vector<NetworkAdapter> ListNetworkAdapters();

// The C runtime's classification of one UTF-16 unit as a letter or digit. It comes from a fixed
// table, whatever locale the host has set.
bool IsAlphanumeric(wchar_t unit);

// The runtime's pseudo-random generator, one for each thread. A draw lies between 0 and 32767.
void SeedRandom(std::uint32_t seed);
std::int32_t DrawRandom();

} // namespace platform
