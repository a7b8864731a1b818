#include "tests/simulated/SystemFacts.h"

#include "platform/LastError.h"
#include "platform/SystemPaths.h"
#include "platform/WinApp.h"

namespace simulated {

CState<SystemFacts> facts;
CState<SystemPaths> paths;

} // namespace simulated

namespace platform {

using namespace simulated;

bool QueryVersionEx(SystemVersion& version)
{
    const auto known = facts->version;
    version = known.value_or(version);
    return known.has_value();
}

std::uint32_t QueryPackedVersion() { return facts->packedVersion; }

bool QueryNativeArchitecture(std::uint16_t& architecture)
{
    const auto held = facts.Hold();
    ++held->architectureQueries;
    architecture = held->architecture.value_or(architecture);
    return held->architecture.has_value();
}

std::uint16_t GetUserDefaultLanguageId() { return facts->languageId; }
std::uint32_t GetAnsiCodePage() { return ansiCodePage; }
ScreenSize GetScreenSize() { return facts->screen; }

bool QueryComputerName(std::size_t limit, std::wstring& name)
{
    const auto known = facts->computerName;
    const bool fits = known && known->size() < limit;
    if (fits)
        name = *known;
    return fits;
}

ProcessorVendor QueryProcessorVendor() { return {0x6C65746E, 0x49656E69}; } // "ntel", "ineI"
std::vector<NetworkAdapter> ListNetworkAdapters() { return facts->adapters; }

// Takes for letters what has two cases.
bool IsAlphanumeric(wchar_t unit)
{
    wchar_t cases[] = {unit, unit};
    text::MakeUpper({&cases[0], 1});
    text::MakeLower({&cases[1], 1});
    return cases[0] != cases[1] || (unit >= L'0' && unit <= L'9');
}

void SeedRandom(std::uint32_t seed) { facts->seeds.push_back(seed); }
std::int32_t DrawRandom() { return facts->draw; }

std::wstring GetHostExecutablePath(std::size_t limit)
{
    return limit == 0 ? std::wstring() : paths->executable.substr(0, limit - 1);
}

std::wstring GetSpecialFolder(int folderId) { return paths->specialFolders[folderId]; }

// --- the process -------------------------------------------------------------------------------

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
