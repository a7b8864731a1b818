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

fs::path MakeHostFolder()
{
    const fs::path folder = MakeTemporaryFolder("host");
    for (const char* file : {"ZoTracker.dll", "host.exe", "plugin.dll"})
        fs::copy_file(GetWindowsBuild() / file, folder / file);
    return folder;
}

} // namespace

std::optional<CWinePrefix> CModuleTest::prefix;

CModuleTest::CModuleTest() : hostFolder(MakeHostFolder()), collector(GetAuthority()) {}

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

std::vector<std::string> CModuleTest::GetTargets() const
{
    std::vector<std::string> targets;
    for (const collector::Hit& hit : collector.GetHits())
        targets.push_back(hit.target);
    return targets;
}

fs::path GetWindowsBuild() { return fs::path(ZO_SOURCE_FOLDER) / "build/windows"; }

int GetMilliseconds(const ProgramResult& result, const std::string& what)
{
    const std::string label = what + " ";
    const std::size_t start = result.output.find(label);
    if (start == std::string::npos)
    {
        ADD_FAILURE() << "no \"" << what << "\" in: " << result.output;
        return -1;
    }
    return std::stoi(result.output.substr(start + label.size()));
}

std::string GetParameter(const std::string& target, const std::string& key)
{
    std::size_t start = target.find("&" + key + "=");
    if (start == std::string::npos)
    {
        ADD_FAILURE() << "no " << key << " in: " << target;
        return {};
    }
    start += key.size() + 2;
    return target.substr(start, target.find('&', start) - start);
}

} // namespace module
