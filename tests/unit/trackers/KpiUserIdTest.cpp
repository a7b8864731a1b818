#include "trackers/kpi/KpiUserId.h"

#include "tests/simulated/Registry.h"
#include "tests/simulated/Simulated.h"
#include "tests/simulated/SystemFacts.h"
#include "tests/simulated/VirtualTime.h"
#include "text/Units.h"

#include <gtest/gtest.h>

#include <optional>

namespace {

using platform::ERegistryRoot;
using platform::ERegistryView;
using simulated::ERegistryDenial;

const wchar_t* const kpiKey = L"CLSID\\{A3D17F52-6B0E-4C19-8E2A-5F71C03B9D64}";

TEST(KpiUserId, OverlapsItsPieces)
{
    const struct
    {
        const char* what;
        std::uint32_t tick;
        std::int64_t time;
        const wchar_t *name, *expected;
    } cases[] = {
        {"five digits", 12345, 1500000000, L"AB", L"12345150006566656665666566656665"},
        {"last piece cut", 123456789, 1500000000, L"d", L"12345678915000000010010010010010"},
        {"wide name", 1234567890, 1500000000, L"\x0416", L"12345678901500000000104610461046"},
        {"long uptime", 4294967295, 1500000000, L"AB", L"-1156566656665666566656665666566"},
        {"clock never set", 1234567890, 7, L"AB", L"12345678907000000000656665666566"},
        {"longest texts", 0x80000000, INT64_MIN, L"AB", L"-2147483648-92233720366566656665"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(trackers::BuildKpiUserId(c.tick, c.time, c.name), c.expected) << c.what;
}

class KpiUserIdTest : public testing::Test
{
protected:
    void SetUp() override
    {
        simulated::Reset();
        simulated::SetUnixTime(1'500'000'000);
        simulated::SetTickMilliseconds(123'456);
    }
    static std::vector<std::uint8_t> FindBytes(ERegistryRoot root)
    {
        const auto value = simulated::FindRegistryValue(root, kpiKey, ERegistryView::View32, L"ID");
        return value && value->type == platform::registrySz ? value->bytes
                                                            : std::vector<std::uint8_t>();
    }
    static void Put(ERegistryRoot root, const std::wstring& text, std::size_t size)
    {
        auto bytes = simulated::TerminatedText(text);
        bytes.resize(size);
        simulated::PutRegistryValue(root, kpiKey, ERegistryView::View32, L"ID",
                                    {platform::registrySz, bytes});
    }

    const std::wstring kept = L"abcdefghijklmnopqrstuvwxyz012345";
    // "123456", the time from its seventh unit on, the codes of "COMPUTER" from the thirteenth on.
    const std::wstring made = L"12345615000067797780858469826779";
};

TEST_F(KpiUserIdTest, IsMadeAnewUnlessItHasItsExactLength)
{
    for (const std::size_t size : {64, 66, 62, 63, 0})
    {
        const std::wstring& expected = size == 64 ? kept : made;
        Put(ERegistryRoot::ClassesRoot, kept, size);
        EXPECT_EQ(trackers::GetKpiUserId(), expected) << size;
        EXPECT_EQ(FindBytes(ERegistryRoot::ClassesRoot), text::EncodeUnits(expected)) << size;
    }
    EXPECT_TRUE(FindBytes(ERegistryRoot::CurrentUser).empty());
}

TEST_F(KpiUserIdTest, LivesWithTheUserWhereTheClassesRootHasNoKeyThatOpens)
{
    Put(ERegistryRoot::CurrentUser, kept, 64);
    EXPECT_EQ(trackers::GetKpiUserId(), kept);
    Put(ERegistryRoot::ClassesRoot, made, 0);
    EXPECT_EQ(trackers::GetKpiUserId(), made); // no further than the first key that opens

    simulated::SetRegistryDenial(ERegistryRoot::ClassesRoot, ERegistryDenial::Opening);
    EXPECT_EQ(trackers::GetKpiUserId(), kept);
    simulated::RemoveRegistryKey(ERegistryRoot::CurrentUser, kpiKey, ERegistryView::View32);
    EXPECT_EQ(trackers::GetKpiUserId(), made);
    EXPECT_EQ(FindBytes(ERegistryRoot::CurrentUser), text::EncodeUnits(made));

    simulated::SetRegistryDenial(ERegistryRoot::CurrentUser, ERegistryDenial::Opening);
    EXPECT_EQ(trackers::GetKpiUserId(), made);
}

TEST_F(KpiUserIdTest, StandsInForAComputersMissingName)
{
    // The codes of "5e0b7a93c1d24f68..." behind the texts of tick and time.
    const std::wstring expected = L"12345615000053101489855975751994";
    for (const auto& name : {std::optional<std::wstring>(), std::optional<std::wstring>(L""),
                             std::optional<std::wstring>(L"SIXTEEN_LETTERS_")})
    {
        simulated::registry.Reset();
        simulated::facts->computerName = name;
        EXPECT_EQ(trackers::GetKpiUserId(), expected);
    }
}

} // namespace
