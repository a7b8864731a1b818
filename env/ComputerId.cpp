#include "env/ComputerId.h"

#include "env/FileSystem.h"
#include "env/HostPaths.h"
#include "env/ProcessCache.h"
#include "env/ProfileText.h"
#include "env/RegistryValues.h"
#include "env/Text.h"
#include "platform/Clock.h"
#include "platform/ProfileFile.h"
#include "text/Format.h"

#include <algorithm>
#include <numeric>

namespace env {

namespace {

using platform::ERegistryRoot;

const wchar_t* const primaryKey = L"CLSID\\{7C2A9E14-3F60-4b8d-92E5-A1D4706B3C58}";
const wchar_t* const userKey = L"SOFTWARE\\Classes\\CLSID\\{7C2A9E14-3F60-4b8d-92E5-A1D4706B3C58}";
const wchar_t* const valueName = L"ID";
const wchar_t* const fileSection = L"ID";
const wchar_t* const fileKey = L"CID";

constexpr std::uint32_t ethernetType = 6; // MIB_IF_TYPE_ETHERNET
constexpr std::size_t addressLength = 6;
constexpr int addressSumLimit = 32; // addresses of virtual adapters are mostly zeros

bool IsIdentifying(const platform::NetworkAdapter& adapter)
{
    const auto end = adapter.address.begin() + addressLength;
    return adapter.type == ethernetType && !adapter.firstGateway.empty() &&
           std::accumulate(adapter.address.begin(), end, 0) > addressSumLimit;
}

std::wstring FormatAddress(const std::vector<platform::NetworkAdapter>& adapters)
{
    const auto adapter = std::find_if(adapters.begin(), adapters.end(), IsIdentifying);
    if (adapter == adapters.end())
        return L"SOMEWHERE";
    const auto& bytes = adapter->address;
    return text::FormatText(L"%02X:%02X:%02X:%02X:%02X:%02X", bytes[0], bytes[1], bytes[2],
                            bytes[3], bytes[4], bytes[5]);
}

// Reads in the process's own view of the registry, while RegWriteString() is told the 32-bit one.
// Deliberate; where the two views are apart, the next process does not find what this one wrote.
std::wstring ReadRegistry(ERegistryRoot root, const wchar_t* subKey)
{
    const auto key = platform::CRegistryKey::Open(root, subKey, platform::ERegistryAccess::Read,
                                                  platform::ERegistryView::Default);
    return key ? RegReadString(key, valueName) : std::wstring();
}

bool WriteRegistry(ERegistryRoot root, const wchar_t* subKey, const std::wstring& id)
{
    return RegWriteString(root, subKey, valueName, id, false) >= 0;
}

std::wstring LoadComputerId(const std::wstring& file)
{
    std::wstring id = ReadRegistry(ERegistryRoot::ClassesRoot, primaryKey);
    if (!id.empty())
        return id;
    id = ReadProfileText(fileSection, fileKey, L"", file);
    if (id.empty())
        id = ReadRegistry(ERegistryRoot::CurrentUser, userKey);
    if (!id.empty())
        WriteRegistry(ERegistryRoot::ClassesRoot, primaryKey, id);
    return id;
}

// The first store that accepts the identifier keeps it.
void SaveComputerId(const std::wstring& id, const std::wstring& file)
{
    if (!WriteRegistry(ERegistryRoot::ClassesRoot, primaryKey, id) &&
        !platform::WriteProfileText(fileSection, fileKey, id, file))
        WriteRegistry(ERegistryRoot::CurrentUser, userKey, id);
}

std::wstring MakeComputerId()
{
    return Md5OfText(BuildComputerIdSeed(platform::ListNetworkAdapters(),
                                         platform::QueryProcessorVendor(), platform::GetUnixTime(),
                                         platform::GetTickMilliseconds()));
}

std::wstring FindComputerId()
{
    const std::wstring folder = GetSuiteFolder();
    CreateMissingFolder(folder);
    const std::wstring file = folder + L"\\" + L"ComputerID.dat";
    std::wstring id = LoadComputerId(file);
    if (id.empty())
    {
        id = MakeComputerId();
        SaveComputerId(id, file);
    }
    return id;
}

} // namespace

std::wstring GetComputerId()
{
    return CProcessCache::Get().FindOrKeep(ECachedText::ComputerId, FindComputerId);
}

std::wstring BuildComputerIdSeed(const std::vector<platform::NetworkAdapter>& adapters,
                                 const platform::ProcessorVendor& vendor, std::int64_t time,
                                 std::uint32_t tick)
{
    return text::FormatText(L"%s%08X%08X%I64d_%lu", FormatAddress(adapters), vendor.ecx, vendor.edx,
                            time, tick);
}

} // namespace env
