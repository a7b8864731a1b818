#include "platform/Registry.h"
#include "tests/platform/System.h"

#include <map>

namespace contract {

namespace {

using platform::CRegistryKey;
using platform::ERegistryAccess;
using platform::ERegistryQuery;
using platform::ERegistryRoot;
using platform::ERegistryView;
using Bytes = std::vector<std::uint8_t>;

const std::wstring ownClass = L"CLSID\\{B2C64E0F-9A17-4D33-8F5B-60E1A7D2C984}";
const std::wstring ownUserClass = L"SOFTWARE\\Classes\\" + ownClass;
const std::wstring ownUserKey = L"Software\\ZoTracker contract";

class Registry : public testing::Test
{
protected:
    Registry()
    {
        BeginCase();
        RemoveKeys();
    }
    ~Registry() override { RemoveKeys(); }

    static void RemoveKeys()
    {
        for (const ERegistryView view : {ERegistryView::View32, ERegistryView::View64})
        {
            RemoveKey(ERegistryRoot::ClassesRoot, ownClass, view);
            RemoveKey(ERegistryRoot::CurrentUser, ownClass, view);
            RemoveKey(ERegistryRoot::CurrentUser, ownUserClass, view);
            RemoveKey(ERegistryRoot::CurrentUser, ownUserKey, view);
        }
    }

    static CRegistryKey CreateOwn()
    {
        bool existed = false;
        return CRegistryKey::Create(ERegistryRoot::CurrentUser, ownUserKey, ERegistryView::Default,
                                    existed);
    }

    static CRegistryKey OpenOwn(ERegistryAccess access)
    {
        return CRegistryKey::Open(ERegistryRoot::CurrentUser, ownUserKey, access,
                                  ERegistryView::Default);
    }

    // The value's bytes, read with a buffer of `room` bytes.
    static Bytes Read(const CRegistryKey& key, const std::wstring& name, std::size_t room)
    {
        Bytes buffer(room);
        std::size_t size = 0;
        EXPECT_EQ(key.Query(name, buffer, size), ERegistryQuery::Done);
        buffer.resize(size);
        return buffer;
    }
};

// Whether the user's classes are separate too depends on the system's version; each view sees its
// own in every one.
TEST_F(Registry, ClassesAreSeparateByViewAndOtherKeysShared)
{
    using enum ERegistryView;
    using Views = std::vector<ERegistryView>;
    const struct
    {
        const char* what;
        ERegistryRoot root;
        std::wstring subKey;
        ERegistryView created;
        Views seen, hidden;
    } cases[] = {
        {"class", ERegistryRoot::ClassesRoot, ownClass, View32, {View32}, {View64, Default}},
        {"class", ERegistryRoot::ClassesRoot, ownClass, Default, {View64, Default}, {View32}},
        {"user's class", ERegistryRoot::CurrentUser, ownUserClass, View32, {View32}, {}},
        {"user's class", ERegistryRoot::CurrentUser, ownUserClass, View64, {View64}, {}},
        {"CLSID", ERegistryRoot::CurrentUser, ownClass, View32, {View32, View64, Default}, {}},
        {"other", ERegistryRoot::CurrentUser, ownUserKey, View32, {View32, View64, Default}, {}},
    };
    for (const auto& c : cases)
    {
        const auto opens = [&c](ERegistryView view) {
            return bool(CRegistryKey::Open(c.root, c.subKey, ERegistryAccess::All, view));
        };
        for (const bool expected : {false, true})
        {
            bool existed = !expected;
            ASSERT_TRUE(CRegistryKey::Create(c.root, c.subKey, c.created, existed)) << c.what;
            EXPECT_EQ(existed, expected) << c.what;
        }
        for (const ERegistryView view : c.seen)
            EXPECT_TRUE(opens(view)) << c.what << static_cast<int>(view);
        for (const ERegistryView view : c.hidden)
            EXPECT_FALSE(opens(view)) << c.what << static_cast<int>(view);
        RemoveKeys();
    }
}

TEST_F(Registry, ValuesKeepTheirTypeAndExactBytes)
{
    Bytes unterminated(66, 0x31);
    unterminated[64] = unterminated[65] = 0;
    unterminated.resize(64); // the zeros stay behind the end
    const std::map<std::wstring, std::pair<std::uint32_t, Bytes>> values = {
        {L"terminated", {platform::registrySz, {'a', 0, 0, 0}}},          {L"odd", {3, {1, 2, 3}}},
        {L"number", {platform::registryDword, {0x78, 0x56, 0x34, 0x12}}}, {L"empty", {3, {}}},
        {L"long", {platform::registryExpandSz, Bytes(40'000, 0x41)}},
    };
    CRegistryKey key = CreateOwn();
    for (const auto& [name, value] : values)
        ASSERT_TRUE(key.Set(name, value.first, value.second));
    ASSERT_TRUE(key.Set(L"unterminated", platform::registrySz, unterminated));
    key = OpenOwn(ERegistryAccess::Read);
    EXPECT_EQ(Read(key, L"UNterminated", 100).size(), 64u);
    for (const auto& [name, value] : values)
    {
        std::uint32_t type = 0;
        EXPECT_TRUE(key.QueryType(name, type));
        EXPECT_EQ(type, value.first);
        EXPECT_EQ(Read(key, name, 40'000), value.second);
        EXPECT_EQ(Read(key, name, value.second.size()), value.second);
    }
    for (std::size_t room = 0; room < 3; ++room)
    {
        Bytes buffer(room);
        std::size_t size = 0;
        EXPECT_EQ(key.Query(L"odd", buffer, size), ERegistryQuery::MoreData) << room;
        EXPECT_EQ(size, 3u) << room;
    }
}

} // namespace

} // namespace contract
