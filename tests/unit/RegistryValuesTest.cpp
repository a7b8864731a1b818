#include "env/RegistryValues.h"
#include "tests/simulated/Files.h"
#include "tests/simulated/Registry.h"
#include "tests/simulated/Simulated.h"

#include <gtest/gtest.h>

namespace {

using platform::CRegistryKey;
using platform::ERegistryRoot;
using platform::ERegistryView;
using Bytes = std::vector<std::uint8_t>;

const wchar_t* const keyPath = L"CLSID\\{key}";

class RegistryValuesTest : public testing::Test
{
protected:
    void SetUp() override { simulated::Reset(); }

    static CRegistryKey Put(std::uint32_t type, const Bytes& bytes)
    {
        simulated::PutRegistryValue(ERegistryRoot::ClassesRoot, keyPath, ERegistryView::Default,
                                    L"v", {type, bytes});
        return CRegistryKey::Open(ERegistryRoot::ClassesRoot, keyPath,
                                  platform::ERegistryAccess::Read, ERegistryView::Default);
    }
    static Bytes Text(const std::wstring& text) { return simulated::TerminatedText(text); }
};

TEST_F(RegistryValuesTest, WritesTerminatedTextIntoTheAskedView)
{
    const auto write = [](const wchar_t* text, bool use64BitView) {
        return env::RegWriteString(ERegistryRoot::ClassesRoot, keyPath, L"ID", text, use64BitView);
    };
    const auto find = [](ERegistryView view) {
        const auto value =
            simulated::FindRegistryValue(ERegistryRoot::ClassesRoot, keyPath, view, L"ID");
        return value && value->type == platform::registrySz ? value->bytes : Bytes();
    };
    EXPECT_EQ(write(L"a\x20AC", false), 0);
    EXPECT_EQ(find(ERegistryView::View32), (Bytes{'a', 0, 0xAC, 0x20, 0, 0}));
    EXPECT_EQ(find(ERegistryView::View64), Bytes());
    EXPECT_EQ(write(L"", false), 1);
    EXPECT_EQ(find(ERegistryView::View32), (Bytes{0, 0}));
    EXPECT_EQ(write(L"b", true), 0);
    EXPECT_EQ(find(ERegistryView::View64), (Bytes{'b', 0, 0, 0}));

    for (const auto denial :
         {simulated::ERegistryDenial::Opening, simulated::ERegistryDenial::Setting})
    {
        simulated::SetRegistryDenial(ERegistryRoot::ClassesRoot, denial);
        EXPECT_EQ(write(L"c", false), -1);
    }
}

TEST_F(RegistryValuesTest, ReadsEveryKindOfValueAsTextAndAsNumber)
{
    simulated::PutEnvironmentVariable(L"NAME", L"value");
    const struct
    {
        const char* what;
        std::uint32_t type;
        Bytes bytes;
        const wchar_t* text;
        std::uint32_t number;
    } cases[] = {
        {"terminated", 1, {'a', 0, 0xAC, 0x20, 0, 0}, L"a\x20AC", 0},
        {"not terminated", 1, {'1', 0, '2', 0}, L"12", 12},
        {"zero inside", 1, {'1', 0, 0, 0, '2', 0}, L"1", 1},
        {"no bytes", 1, {}, L"", 0},
        {"text with a variable", 1, Text(L"%NAME%"), L"%NAME%", 0},
        {"signed text", 1, Text(L"-1"), L"-1", 0xFFFFFFFF},
        {"expandable", 2, Text(L"<%name%>"), L"<value>", 0},
        {"number", 4, {0x78, 0x56, 0x34, 0xF2}, L"4063516280", 0xF2345678},
        {"short number", 4, {1, 2, 3}, L"0", 0},
        {"binary", 3, {1, 0, 0, 0}, L"", 0},
    };
    for (const auto& c : cases)
    {
        EXPECT_EQ(env::RegReadString(Put(c.type, c.bytes), L"v"), c.text) << c.what;
        EXPECT_EQ(env::RegReadDword(Put(c.type, c.bytes), L"v"), c.number) << c.what;
    }
    EXPECT_EQ(env::RegReadString(Put(1, Text(L"1")), L"other"), L"");
    EXPECT_EQ(env::RegReadDword(CRegistryKey(), L"v"), 0u);

    simulated::disk->expandingFails = true;
    EXPECT_EQ(env::RegReadString(Put(2, Text(L"%NAME%")), L"v"), L"%NAME%");
}

TEST_F(RegistryValuesTest, GrowsItsBufferWithinReason)
{
    for (const std::size_t length : {16'382u, 16'383u, 500'000u, 2'000'000u})
        EXPECT_EQ(env::RegReadString(Put(1, Text(std::wstring(length, L'x'))), L"v").size(),
                  length < 2'000'000 ? length : 0);
}

} // namespace
