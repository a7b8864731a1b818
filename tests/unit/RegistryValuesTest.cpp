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
    static std::wstring ReadString(std::uint32_t type, const Bytes& bytes)
    {
        return env::RegReadString(Put(type, bytes), L"v");
    }
    static std::uint32_t ReadDword(std::uint32_t type, const Bytes& bytes)
    {
        return env::RegReadDword(Put(type, bytes), L"v");
    }
};

TEST_F(RegistryValuesTest, WritesTerminatedTextIntoTheAskedView)
{
    const auto write = [](const wchar_t* text, bool use64BitView) {
        return env::RegWriteString(ERegistryRoot::ClassesRoot, keyPath, L"ID", text, use64BitView);
    };
    const auto find = [](ERegistryView view) {
        return simulated::FindRegistryValue(ERegistryRoot::ClassesRoot, keyPath, view, L"ID");
    };
    EXPECT_EQ(write(L"a\x20AC", false), 0);
    EXPECT_FALSE(find(ERegistryView::View64));
    ASSERT_TRUE(find(ERegistryView::View32));
    EXPECT_EQ(find(ERegistryView::View32)->type, platform::registrySz);
    EXPECT_EQ(find(ERegistryView::View32)->bytes, (Bytes{'a', 0, 0xAC, 0x20, 0, 0}));

    EXPECT_EQ(write(L"", false), 1);
    EXPECT_EQ(find(ERegistryView::View32)->bytes, (Bytes{0, 0}));
    EXPECT_EQ(write(L"b", true), 0);
    EXPECT_EQ(find(ERegistryView::View64)->bytes, (Bytes{'b', 0, 0, 0}));
}

TEST_F(RegistryValuesTest, ReportsARefusedWrite)
{
    for (const auto denial :
         {simulated::ERegistryDenial::Creating, simulated::ERegistryDenial::Opening,
          simulated::ERegistryDenial::Setting})
    {
        simulated::SetRegistryDenial(ERegistryRoot::CurrentUser, denial);
        EXPECT_EQ(env::RegWriteString(ERegistryRoot::CurrentUser, keyPath, L"ID", L"a", false), -1);
    }
}

TEST_F(RegistryValuesTest, ReadsEveryKindOfValueAsText)
{
    simulated::PutEnvironmentVariable(L"NAME", L"value");
    const struct
    {
        const char* what;
        std::uint32_t type;
        Bytes bytes;
        const wchar_t* expected;
    } cases[] = {
        {"terminated", 1, {'a', 0, 0xAC, 0x20, 0, 0}, L"a\x20AC"},
        {"not terminated", 1, {'a', 0, 'b', 0}, L"ab"},
        {"odd byte behind", 1, {'a', 0, 'b'}, L"a"},
        {"zero inside", 1, {'a', 0, 0, 0, 'b', 0}, L"a"},
        {"no bytes", 1, {}, L""},
        {"text with a variable", 1, simulated::TerminatedText(L"%NAME%"), L"%NAME%"},
        {"expandable", 2, simulated::TerminatedText(L"<%name%>"), L"<value>"},
        {"expandable, unknown", 2, simulated::TerminatedText(L"%OTHER%"), L"%OTHER%"},
        {"number", 4, {0xFF, 0xFF, 0xFF, 0xFF}, L"4294967295"},
        {"short number", 4, {1, 0}, L"0"},
        {"long number", 4, {1, 0, 0, 0, 0, 0, 0, 0}, L"0"},
        {"binary", 3, {'a', 0}, L""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(ReadString(c.type, c.bytes), c.expected) << c.what;
    EXPECT_EQ(env::RegReadString(Put(1, {}), L"other"), L"");
    EXPECT_EQ(env::RegReadString(CRegistryKey(), L"v"), L"");

    simulated::SetExpandingFails(true);
    EXPECT_EQ(ReadString(2, simulated::TerminatedText(L"%NAME%")), L"%NAME%");
}

TEST_F(RegistryValuesTest, GrowsItsBufferWithinReason)
{
    for (const std::size_t length : {16'382u, 16'383u, 16'384u, 20'479u, 500'000u})
        EXPECT_EQ(ReadString(1, simulated::TerminatedText(std::wstring(length, L'x'))).size(),
                  length);
    EXPECT_EQ(ReadString(1, simulated::TerminatedText(std::wstring(2'000'000, L'x'))), L"");
}

TEST_F(RegistryValuesTest, ReadsNumbers)
{
    EXPECT_EQ(ReadDword(4, {0x78, 0x56, 0x34, 0x12}), 0x12345678u);
    EXPECT_EQ(ReadDword(4, {1, 2, 3}), 0u);
    EXPECT_EQ(ReadDword(1, simulated::TerminatedText(L" 42x")), 42u);
    EXPECT_EQ(ReadDword(1, simulated::TerminatedText(L"-1")), 0xFFFFFFFFu);
    EXPECT_EQ(ReadDword(1, simulated::TerminatedText(L"4294967295")), 0x7FFFFFFFu);
    EXPECT_EQ(ReadDword(2, simulated::TerminatedText(L"42")), 0u);
    EXPECT_EQ(ReadDword(3, {1, 0, 0, 0}), 0u);
    EXPECT_EQ(env::RegReadDword(Put(4, {1, 0, 0, 0}), L"other"), 0u);
}

} // namespace
