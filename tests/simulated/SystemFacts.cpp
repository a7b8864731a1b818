#include "tests/simulated/SystemFacts.h"

#include "platform/DebugOutput.h"
#include "platform/LastError.h"
#include "platform/SystemPaths.h"
#include "platform/VersionResource.h"
#include "platform/WinApp.h"
#include "text/Units.h"

#include <tuple>

simulated::CState<simulated::SystemFacts> simulated::facts;
simulated::CState<simulated::NotificationArea> simulated::area;
simulated::CState<std::vector<std::wstring>> simulated::debugOutput;

namespace platform {

using namespace simulated;

bool QueryVersionEx(SystemVersion& version)
{
    const auto known = facts->version;
    version = known.value_or(version);
    return known.has_value();
}

bool QueryNativeArchitecture(std::uint16_t& architecture)
{
    const auto known = facts->architecture;
    architecture = known.value_or(architecture);
    return known.has_value();
}

bool QueryComputerName(std::size_t limit, std::wstring& name)
{
    const auto known = facts->computerName;
    const bool fits = known && known->size() < limit;
    name = fits ? *known : name;
    return fits;
}

std::uint32_t QueryPackedVersion() { return facts->packedVersion; }
std::uint16_t GetUserDefaultLanguageId() { return facts->languageId; }
std::uint32_t GetAnsiCodePage() { return ansiCodePage; }
ScreenSize GetScreenSize() { return facts->screen; }
ProcessorVendor QueryProcessorVendor() { return {0x6C65746E, 0x49656E69}; } // "ntel", "ineI"
std::vector<NetworkAdapter> ListNetworkAdapters() { return facts->adapters; }
void SeedRandom(std::uint32_t seed) { facts->seeds.push_back(seed); }
std::int32_t DrawRandom() { return facts->draw; }

// Takes for letters what has two cases.
bool IsAlphanumeric(wchar_t unit)
{
    wchar_t cases[] = {unit, unit};
    text::MakeUpper({&cases[0], 1});
    text::MakeLower({&cases[1], 1});
    return cases[0] != cases[1] || (unit >= L'0' && unit <= L'9');
}

std::wstring GetHostExecutablePath(std::size_t limit)
{
    return limit == 0 ? std::wstring() : facts->executable.substr(0, limit - 1);
}

std::wstring GetSpecialFolder(int folderId) { return facts->specialFolders[folderId]; }

// The block holds nothing but the path of its file.
CVersionResource::CVersionResource(const std::wstring& filePath)
{
    if (facts->versionInfos.contains(filePath))
        block = text::EncodeUnits(filePath);
}

bool CVersionResource::QueryFirstTranslation(std::uint16_t& language, std::uint16_t& codePage) const
{
    const auto known = facts->versionInfos[text::DecodeUnits(block)].translations;
    if (!known.empty())
        std::tie(language, codePage) = known.front();
    return !known.empty();
}

std::wstring CVersionResource::QueryText(const std::wstring& path) const
{
    return facts->versionInfos[text::DecodeUnits(block)].texts[path];
}

void WriteDebugOutput(const std::wstring& line) noexcept { debugOutput->push_back(line); }

struct CNotificationIcon::Native
{
    std::uint32_t id;
};

CNotificationIcon::CNotificationIcon(const NotificationIconOptions& options, const CStopSignal&)
    : native(new Native{options.id})
{
    area->icons.emplace(options.id, options);
}

CNotificationIcon::~CNotificationIcon() { area->icons.erase(native->id); }

void CNotificationIcon::ShowBalloon(const std::wstring& title, const std::wstring& text)
{
    area->balloons.emplace_back(title, text);
}

namespace {

CWinApp* application = nullptr;
thread_local std::uint32_t lastError = 0;

} // namespace

CWinApp::CWinApp() noexcept { application = this; }
CWinApp::~CWinApp() { application = nullptr; }
CWinApp* CWinApp::GetApp() noexcept { return application; }

std::uint32_t GetLastSystemError() noexcept { return lastError; }
void SetLastSystemError(std::uint32_t error) noexcept { lastError = error; }

} // namespace platform
