#include "platform/SystemFacts.h"
#include "platform/SystemPaths.h"
#include "platform/VersionResource.h"
#include "tests/platform/System.h"

#include <gmock/gmock.h>

#include <clocale>
#include <string_view>

namespace contract {

namespace {

class SystemFacts : public testing::Test
{
protected:
    SystemFacts() { BeginCase(); }
};

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
        for (unsigned shift = 0; shift < 32; shift += 8)
            EXPECT_THAT(letters >> shift & 0xFF,
                        testing::AllOf(testing::Ge(0x20u), testing::Lt(0x7Fu)));
    for (const platform::NetworkAdapter& adapter : platform::ListNetworkAdapters())
        EXPECT_EQ(adapter.firstGateway.find_first_not_of("0123456789."), std::string::npos);
}

TEST_F(SystemFacts, LettersAndDigitsDoNotFollowTheHostsLocale)
{
    for (const char* locale : {"", "Turkish_Turkey.1254", "C"})
    {
        if (std::setlocale(LC_ALL, locale) == nullptr)
            continue; // the second one has this name on Windows only
        for (const wchar_t unit : std::wstring_view(L"aZ9\xB2\xC0\xFF\x3C9\x410"))
            EXPECT_TRUE(platform::IsAlphanumeric(unit)) << locale << ' ' << +unit;
        for (const wchar_t unit : std::wstring_view(L"@_\x7F\xA0\xD7\x20AC\xD800"))
            EXPECT_FALSE(platform::IsAlphanumeric(unit)) << locale << ' ' << +unit;
    }
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
