#include "platform/Registry.h"
#include "tests/platform/System.h"

#include <tuple>
#include <utility>

using namespace contract;
using namespace platform;

namespace {

using Bytes = std::vector<std::uint8_t>;
using Registry = CCase;

TEST_F(Registry, ClassesAreSeparateByViewAndOtherKeysShared)
{
    using enum ERegistryRoot;
    using enum ERegistryView;
    using Views = std::vector<ERegistryView>;
    const struct
    {
        ERegistryRoot root;
        std::wstring subKey;
        ERegistryView created;
        Views seen;
    } cases[] = {
        {ClassesRoot, classKey, View32, {View32}},
        {ClassesRoot, classKey, Default, {View64, Default}},
        {CurrentUser, classKey, View32, {View32, View64, Default}},
        {CurrentUser, otherKey, View32, {View32, View64, Default}},
    };
    for (const auto& c : cases)
    {
        const std::string what = testing::PrintToString(c.subKey);
        for (const bool expected : {false, true})
        {
            bool existed = !expected;
            ASSERT_TRUE(CRegistryKey::Create(c.root, c.subKey, c.created, existed)) << what;
            EXPECT_EQ(existed, expected) << what;
        }
        Views seen;
        for (const ERegistryView view : {View32, View64, Default})
            if (CRegistryKey::Open(c.root, c.subKey, ERegistryAccess::All, view))
                seen.push_back(view);
        EXPECT_EQ(seen, c.seen) << what;
        Clean();
    }
}

TEST_F(Registry, ValuesKeepTheirTypeAndExactBytes)
{
    Bytes unterminated(64, 0x31);
    unterminated.resize(66);
    unterminated.resize(64); // the zeros stay behind the end
    const std::tuple<std::wstring, std::uint32_t, Bytes> values[] = {
        {L"unterminated", registrySz, std::move(unterminated)},
        {L"number", registryDword, {0x78, 0x56, 0x34, 0x12}},
        {L"odd", 3, {1, 2, 3}},
        {L"empty", 3, {}},
        {L"long", registryExpandSz, Bytes(40'000, 0x41)},
    };
    bool existed = true;
    CRegistryKey key =
        CRegistryKey::Create(ERegistryRoot::CurrentUser, otherKey, ERegistryView::Default, existed);
    for (const auto& [name, type, bytes] : values)
        ASSERT_TRUE(key.Set(name, type, bytes));
    key = CRegistryKey::Open(ERegistryRoot::CurrentUser, L"software\\ZOTRACKER contract",
                             ERegistryAccess::Read, ERegistryView::Default);
    for (const auto& [name, type, bytes] : values)
    {
        std::uint32_t foundType = 0;
        EXPECT_TRUE(key.QueryType(name, foundType));
        EXPECT_EQ(foundType, type);
        for (const std::size_t room : {bytes.size() + 1, bytes.size(), bytes.size() / 2})
        {
            Bytes found(room);
            std::size_t size = 0;
            EXPECT_EQ(key.Query(name, found, size),
                      room < bytes.size() ? ERegistryQuery::MoreData : ERegistryQuery::Done);
            EXPECT_EQ(size, bytes.size());
            found.resize(size);
            EXPECT_EQ(found == bytes, room >= bytes.size()) << testing::PrintToString(name);
        }
    }
}

} // namespace
