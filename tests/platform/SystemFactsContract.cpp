#include "platform/SystemFacts.h"
#include "platform/SystemPaths.h"
#include "platform/VersionResource.h"
#include "tests/platform/System.h"

#include <gmock/gmock.h>

#include <clocale>
#include <string_view>

namespace contract {

namespace {

using SystemFacts = CCase;

TEST_F(SystemFacts, TheMachineIsDescribed)
{
    platform::SystemVersion version = {};
    ASSERT_TRUE(platform::QueryVersionEx(version));
    EXPECT_GE(version.major, 6u);
    EXPECT_EQ(platform::QueryPackedVersion() & 0xFFFF, version.major | version.minor << 8);
    std::uint16_t architecture = 0;
    EXPECT_TRUE(platform::QueryNativeArchitecture(architecture));
    EXPECT_EQ(architecture, 9);
    EXPECT_EQ(platform::GetAnsiCodePage(), 1252u);
    EXPECT_NE(platform::GetUserDefaultLanguageId(), 0);
    EXPECT_GE(platform::GetScreenSize().width, 640);
    EXPECT_GE(platform::GetScreenSize().height, 480);
    const platform::ProcessorVendor vendor = platform::QueryProcessorVendor();
    for (const std::uint32_t letters : {vendor.ecx, vendor.edx})
        EXPECT_EQ(letters & 0xC0C0C0C0, 0x40404040u);
}

TEST_F(SystemFacts, LettersDoNotFollowTheHostsLocale)
{
    for (const char* locale : {"", "C"})
    {
        std::setlocale(LC_ALL, locale);
        for (const wchar_t unit : std::wstring_view(L"\xC0\xFF\x3C9\x410"))
            EXPECT_TRUE(platform::IsAlphanumeric(unit)) << locale << ' ' << +unit;
        for (const wchar_t unit : std::wstring_view(L"\xA0\xD7\x20AC\xD800"))
            EXPECT_FALSE(platform::IsAlphanumeric(unit)) << locale << ' ' << +unit;
    }
}

TEST_F(SystemFacts, TheComputersNameFitsOrFails)
{
    std::wstring name;
    ASSERT_TRUE(platform::QueryComputerName(16, name));
    std::wstring again = L"before";
    EXPECT_FALSE(platform::QueryComputerName(name.size(), again));
    EXPECT_EQ(again, L"before");
    EXPECT_TRUE(platform::QueryComputerName(name.size() + 1, again));
    EXPECT_EQ(again, name);
    EXPECT_NE(name, L"");
}

TEST_F(SystemFacts, TheHostsPathIsCutToTheBuffer)
{
    const std::wstring path = platform::GetHostExecutablePath(32780);
    ASSERT_THAT(path, testing::EndsWith(L".exe"));
    EXPECT_EQ(platform::GetHostExecutablePath(path.size() + 1), path);
    EXPECT_EQ(platform::GetHostExecutablePath(path.size()), path.substr(0, path.size() - 1));
    EXPECT_EQ(platform::GetHostExecutablePath(0), L"");
    EXPECT_EQ(platform::GetSpecialFolder(35), L"C:\\ProgramData");
    EXPECT_EQ(platform::GetSpecialFolder(0x7FFF), L"");
}

TEST_F(SystemFacts, AVersionResourceAnswersByPath)
{
    const platform::CVersionResource none(L"C:\\none.exe");
    const platform::CVersionResource resource(platform::GetHostExecutablePath(32780));
    EXPECT_TRUE(none.IsEmpty());
    ASSERT_FALSE(resource.IsEmpty());
    using Translation = std::pair<std::uint16_t, std::uint16_t>;
    Translation translation(99, 99);
    EXPECT_FALSE(none.QueryFirstTranslation(translation.first, translation.second));
    EXPECT_EQ(translation, Translation(99, 99));
    EXPECT_TRUE(resource.QueryFirstTranslation(translation.first, translation.second));
    EXPECT_EQ(translation, Translation(0x0407, 1200));
    const std::pair<const wchar_t*, const wchar_t*> texts[] = {
        {L"\\StringFileInfo\\040704B0\\productname", L"Produkt \u20AC"},
        {L"\\StringFileInfo\\040704b0\\ProductVersion", L"1.2.3.4 (beta)"},
        {L"\\StringFileInfo\\040904b0\\ProductName", L"Product"},
        {L"\\StringFileInfo\\040904b0\\ProductVersion", L""},
    };
    for (const auto& [path, text] : texts)
    {
        EXPECT_EQ(resource.QueryText(path), text);
        EXPECT_EQ(none.QueryText(path), L"");
    }
}

} // namespace

} // namespace contract
