#include "platform/SystemFacts.h"
#include "platform/SystemPaths.h"
#include "platform/VersionResource.h"
#include "tests/platform/System.h"

#include <string_view>

using namespace contract;

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
    EXPECT_EQ(vendor.ecx & vendor.edx & 0x40404040, 0x40404040u) << "letters";
    for (const wchar_t unit : std::wstring_view(L"\xC0\xFF\x3C9\x410"))
        EXPECT_TRUE(platform::IsAlphanumeric(unit)) << +unit;
    for (const wchar_t unit : std::wstring_view(L"\xA0\xD7\x20AC\xD800"))
        EXPECT_FALSE(platform::IsAlphanumeric(unit)) << +unit;
}

TEST_F(SystemFacts, TextsFitTheirBuffers)
{
    std::wstring name;
    ASSERT_TRUE(platform::QueryComputerName(16, name));
    std::wstring again = L"before";
    EXPECT_FALSE(platform::QueryComputerName(name.size(), again));
    EXPECT_EQ(again, L"before");
    EXPECT_TRUE(platform::QueryComputerName(name.size() + 1, again));
    EXPECT_EQ(again, name);
    EXPECT_NE(name, L"");

    const std::wstring path = platform::GetHostExecutablePath(32780);
    EXPECT_TRUE(path.ends_with(L".exe"));
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
    std::uint16_t language = 99;
    std::uint16_t codePage = 99;
    EXPECT_FALSE(none.QueryFirstTranslation(language, codePage));
    EXPECT_EQ(language + codePage, 198);
    EXPECT_TRUE(resource.QueryFirstTranslation(language, codePage));
    EXPECT_EQ(language, 0x0407);
    EXPECT_EQ(codePage, 1200);
    const std::wstring german = L"\\StringFileInfo\\040704b0\\";
    EXPECT_EQ(resource.QueryText(L"\\StringFileInfo\\040704B0\\productname"), L"Produkt \u20AC");
    EXPECT_EQ(resource.QueryText(german + L"ProductVersion"), L"1.2.3.4 (beta)");
    EXPECT_EQ(resource.QueryText(german + L"Comments"), L"");
    EXPECT_EQ(none.QueryText(german + L"ProductName"), L"");
}

} // namespace
