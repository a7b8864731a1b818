#include "tests/module/ModuleTest.h"

#include <fstream>

namespace module {

namespace fs = std::filesystem;

namespace {

const collector::CAuthority& GetAuthority()
{
    static const collector::CAuthority authority(CWinePrefix::GetAuthorityFolder());
    return authority;
}

collector::CollectorSettings ListenOn(int port)
{
    collector::CollectorSettings settings;
    settings.port = port;
    return settings;
}

fs::path MakeHostFolder()
{
    const fs::path folder = MakeTemporaryFolder("host");
    for (const char* file : {"ZoTracker.dll", "host.exe", "plugin.dll"})
        fs::copy_file(GetWindowsBuild() / file, folder / file);
    return folder;
}

} // namespace

std::optional<CWinePrefix> CModuleTest::prefix;

CModuleTest::CModuleTest(int port)
    : hostFolder(MakeHostFolder()), collector(GetAuthority(), ListenOn(port))
{}

CModuleTest::~CModuleTest() { fs::remove_all(hostFolder); }

CWinePrefix& CModuleTest::GetPrefix()
{
    if (!prefix)
        prefix.emplace();
    return *prefix;
}

void CModuleTest::PutConfig(const std::string& text) const
{
    std::ofstream file(hostFolder / "install.cfg", std::ios::binary);
    for (const char unit : text)
        file << (unit == '\n' ? "\r\n" : std::string(1, unit));
}

std::string CModuleTest::MakeConfig(const std::string& installLines) const
{
    return "[install]\ntracking=1\nGAURL=" + collector.GetUrl("/__utm.gif?") + "\n" + installLines +
           "[web]\nPIWIKURL=" + collector.GetUrl("/piwik.php") + "\n";
}

ProgramResult CModuleTest::RunHost(const std::string& commands, std::chrono::seconds limit) const
{
    return GetPrefix().Run({hostFolder / "host.exe", "--watch"}, commands, limit);
}

void ExpectCleanEnd(const ProgramResult& run)
{
    EXPECT_EQ(run.status, 0) << (run.hung ? "hung: " : "") << run.output;
    const std::pair<std::string, int> limits[] = {{"\nrelease main ", releaseLimit},
                                                  {"\nrelease kpi ", releaseLimit},
                                                  {"\nunload ", unloadLimit},
                                                  {"\nblocked ", blockLimit}};
    for (const auto& [what, limit] : limits)
        for (std::size_t at = 0; (at = run.output.find(what, at)) != std::string::npos; ++at)
            EXPECT_LE(std::stoi(run.output.substr(at + what.size())), limit)
                << what << "in: " << run.output;
}

} // namespace module
