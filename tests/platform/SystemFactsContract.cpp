#include "platform/HostPaths.h"
#include "platform/SystemFacts.h"
#include "platform/VersionResource.h"
#include "tests/platform/System.h"

#include <gmock/gmock.h>

#include <clocale>
#include <thread>

namespace contract {

namespace {

using testing::ElementsAre;

class SystemFacts : public testing::Test
{
protected:
    SystemFacts() { BeginCase(); }

    static std::vector<std::int32_t> Draw(int count)
    {
        std::vector<std::int32_t> draws;
        for (int i = 0; i < count; ++i)
            draws.push_back(platform::DrawRandom());
        return draws;
    }
};

TEST_F(SystemFacts, BothVersionsAgree)
{
    platform::SystemVersion version = {};
    ASSERT_TRUE(platform::QueryVersionEx(version));
    EXPECT_GE(version.major, 6u);
    EXPECT_EQ(platform::QueryPackedVersion() & 0xFFFF, version.major | version.minor << 8);
}

TEST_F(SystemFacts, TheMachineIsDescribed)
{
    std::uint16_t architecture = 0;
    EXPECT_TRUE(platform::QueryNativeArchitecture(architecture));
    EXPECT_EQ(architecture, 9);
    EXPECT_EQ(platform::GetAnsiCodePage(), 1252u);
    EXPECT_NE(platform::GetUserDefaultLanguageId(), 0);
    EXPECT_GE(platform::GetScreenSize().width, 640);
    EXPECT_GE(platform::GetScreenSize().height, 480);

    const platform::ProcessorVendor vendor = platform::QueryProcessorVendor();
    for (const std::uint32_t letters : {vendor.ecx, vendor.edx})
        for (unsigned shift = 0; shift < 32; shift += 8)
            EXPECT_THAT(letters >> shift & 0xFF,
                        testing::AllOf(testing::Ge(0x20u), testing::Lt(0x7Fu)));
    for (const platform::NetworkAdapter& adapter : platform::ListNetworkAdapters())
        EXPECT_EQ(adapter.firstGateway.find_first_not_of("0123456789."), std::string::npos);
}

TEST_F(SystemFacts, LettersAndDigitsDoNotFollowTheHostsLocale)
{
    const struct
    {
        wchar_t unit;
        bool isAlphanumeric;
    } cases[] = {
        {'a', true},   {'Z', true},   {'9', true},   {'@', false},    {'_', false},
        {0x7F, false}, {0xA0, false}, {0xB2, true},  {0xC0, true},    {0xD7, false},
        {0xFF, true},  {0x3C9, true}, {0x410, true}, {0x20AC, false}, {0xD800, false},
    };
    for (const char* locale : {"C", "", "Turkish_Turkey.1254"})
    {
        if (std::setlocale(LC_ALL, locale) == nullptr)
            continue; // the last one has this name on Windows only
        for (const auto& c : cases)
            EXPECT_EQ(platform::IsAlphanumeric(c.unit), c.isAlphanumeric)
                << locale << ' ' << +c.unit;
    }
    std::setlocale(LC_ALL, "C");
}

TEST_F(SystemFacts, TheComputersNameFitsOrFails)
{
    std::wstring name;
    ASSERT_TRUE(platform::QueryComputerName(16, name));
    ASSERT_FALSE(name.empty());
    std::wstring again;
    EXPECT_TRUE(platform::QueryComputerName(name.size() + 1, again));
    EXPECT_EQ(again, name);
    again = L"before";
    EXPECT_FALSE(platform::QueryComputerName(name.size(), again));
    EXPECT_EQ(again, L"before");
}

TEST_F(SystemFacts, EachThreadDrawsTheRuntimesSeries)
{
    platform::SeedRandom(1);
    EXPECT_THAT(Draw(3), ElementsAre(41, 18467, 6334));
    std::thread other([] {
        EXPECT_THAT(Draw(1), ElementsAre(41)) << "a new thread starts as if seeded with 1";
        platform::SeedRandom(0xFFFFFFFF);
        EXPECT_THAT(Draw(2), ElementsAre(35, 29739));
    });
    other.join();
    EXPECT_THAT(Draw(2), ElementsAre(26500, 19169));
}

TEST_F(SystemFacts, TheHostsPathIsCutToTheBuffer)
{
    const std::wstring path = platform::GetHostExecutablePath(32780);
    ASSERT_THAT(path, testing::EndsWith(L".exe"));
    EXPECT_EQ(path.find(L":\\"), 1u);
    EXPECT_EQ(platform::GetHostExecutablePath(path.size() + 1), path);
    EXPECT_EQ(platform::GetHostExecutablePath(path.size()), path.substr(0, path.size() - 1));
    EXPECT_EQ(platform::GetHostExecutablePath(0), L"");
}

TEST_F(SystemFacts, SpecialFoldersAreKnownByNumber)
{
    EXPECT_EQ(platform::GetSpecialFolder(35), L"C:\\ProgramData");
    EXPECT_EQ(platform::GetSpecialFolder(0x7FFF), L"");
}

TEST_F(SystemFacts, AVersionResourceAnswersByPath)
{
    const platform::CVersionResource none(L"C:\\none.exe");
    const platform::CVersionResource resource(platform::GetHostExecutablePath(32780));
    std::uint16_t language = 99;
    std::uint16_t codePage = 99;
    EXPECT_TRUE(none.IsEmpty());
    EXPECT_FALSE(none.QueryFirstTranslation(language, codePage));
    EXPECT_EQ(language, 99);
    EXPECT_EQ(codePage, 99);
    ASSERT_FALSE(resource.IsEmpty());
    EXPECT_TRUE(resource.QueryFirstTranslation(language, codePage));
    EXPECT_EQ(language, 0x0407);
    EXPECT_EQ(codePage, 1200);
    const struct
    {
        const wchar_t* path;
        const wchar_t* text;
    } cases[] = {
        {L"\\StringFileInfo\\040704B0\\productname", L"Produkt \u20AC"},
        {L"\\StringFileInfo\\040704b0\\ProductVersion", L"1.2.3.4 (beta)"},
        {L"\\StringFileInfo\\040904b0\\ProductName", L"Product"},
        {L"\\StringFileInfo\\040904b0\\ProductVersion", L""},
        {L"\\StringFileInfo\\040c04b0\\ProductName", L""},
    };
    for (const auto& c : cases)
    {
        EXPECT_EQ(resource.QueryText(c.path), c.text);
        EXPECT_EQ(none.QueryText(c.path), L"");
    }
}

} // namespace

} // namespace contract
