#include "platform/Registry.h"
#include "tests/platform/System.h"

#include <algorithm>
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
            RemoveKey(ERegistryRoot::CurrentUser, L"Software\\Classes\\" + ownClass, view);
            RemoveKey(ERegistryRoot::CurrentUser, ownUserKey + L"\\below", view);
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

TEST_F(Registry, ClassesAreSeparateByViewAndOtherKeysShared)
{
    const struct
    {
        const char* what;
        ERegistryRoot root;
        std::wstring subKey;
        ERegistryView created;
        bool inDefault, in32, in64;
    } cases[] = {
        {"class, 32", ERegistryRoot::ClassesRoot, ownClass, ERegistryView::View32, false, true,
         false},
        {"class, 64", ERegistryRoot::ClassesRoot, ownClass, ERegistryView::View64, true, false,
         true},
        {"class, default", ERegistryRoot::ClassesRoot, ownClass, ERegistryView::Default, true,
         false, true},
        {"user's own CLSID", ERegistryRoot::CurrentUser, ownClass, ERegistryView::View32, true,
         true, true},
        {"user's software", ERegistryRoot::CurrentUser, ownUserKey, ERegistryView::View32, true,
         true, true},
    };
    for (const auto& c : cases)
    {
        bool existed = true;
        ASSERT_TRUE(CRegistryKey::Create(c.root, c.subKey, c.created, existed)) << c.what;
        EXPECT_FALSE(existed) << c.what;
        const auto opens = [&c](ERegistryView view) {
            return bool(CRegistryKey::Open(c.root, c.subKey, ERegistryAccess::Read, view));
        };
        EXPECT_EQ(opens(ERegistryView::Default), c.inDefault) << c.what;
        EXPECT_EQ(opens(ERegistryView::View32), c.in32) << c.what;
        EXPECT_EQ(opens(ERegistryView::View64), c.in64) << c.what;
        ASSERT_TRUE(CRegistryKey::Create(c.root, c.subKey, c.created, existed)) << c.what;
        EXPECT_TRUE(existed) << c.what;
        RemoveKeys();
    }
}

// Whether the user's classes are separate too depends on the system's version; each view sees its
// own in every one.
TEST_F(Registry, AUsersClassIsSeenInTheViewThatCreatedIt)
{
    const std::wstring subKey = L"SOFTWARE\\Classes\\" + ownClass;
    for (const ERegistryView view : {ERegistryView::View32, ERegistryView::View64})
    {
        bool existed = true;
        ASSERT_TRUE(CRegistryKey::Create(ERegistryRoot::CurrentUser, subKey, view, existed));
        EXPECT_TRUE(
            CRegistryKey::Open(ERegistryRoot::CurrentUser, subKey, ERegistryAccess::All, view));
        RemoveKeys();
    }
}

TEST_F(Registry, OpeningWhatIsMissingGivesAnEmptyKeyThatRefusesEverything)
{
    CRegistryKey key = OpenOwn(ERegistryAccess::All);
    EXPECT_FALSE(key);
    std::uint32_t type = 99;
    Bytes buffer(8);
    std::size_t size = 99;
    EXPECT_FALSE(key.QueryType(L"ID", type));
    EXPECT_EQ(key.Query(L"ID", buffer, size), ERegistryQuery::Failed);
    EXPECT_FALSE(key.Set(L"ID", platform::registrySz, {0, 0}));
    EXPECT_EQ(type, 99u);
    EXPECT_EQ(size, 99u);
}

TEST_F(Registry, CreatingMakesTheWholePathAndNamesIgnoreCase)
{
    bool existed = true;
    ASSERT_TRUE(CRegistryKey::Create(ERegistryRoot::CurrentUser, ownUserKey + L"\\below",
                                     ERegistryView::View32, existed));
    EXPECT_FALSE(existed);
    EXPECT_TRUE(OpenOwn(ERegistryAccess::Read));
    CRegistryKey key =
        CRegistryKey::Open(ERegistryRoot::CurrentUser, L"SOFTWARE\\zotracker CONTRACT",
                           ERegistryAccess::All, ERegistryView::View32);
    ASSERT_TRUE(key);
    ASSERT_TRUE(key.Set(L"Name", 3, {1, 2}));
    EXPECT_EQ(Read(key, L"nAME", 2), (Bytes{1, 2}));
}

TEST_F(Registry, ValuesKeepTheirTypeAndExactBytes)
{
    const Bytes units = {'a', 0, 0xAC, 0x20};
    const std::map<std::wstring, std::pair<std::uint32_t, Bytes>> values = {
        {L"terminated", {platform::registrySz, {'a', 0, 0, 0}}},
        {L"unterminated", {platform::registrySz, units}},
        {L"odd", {3, {1, 2, 3}}},
        {L"number", {platform::registryDword, {0x78, 0x56, 0x34, 0x12}}},
        {L"empty", {3, {}}},
        {L"long", {platform::registryExpandSz, Bytes(40'000, 0x41)}},
    };
    CRegistryKey key = CreateOwn();
    for (const auto& [name, value] : values)
        ASSERT_TRUE(key.Set(name, value.first, value.second));
    key = OpenOwn(ERegistryAccess::Read);
    for (const auto& [name, value] : values)
    {
        std::uint32_t type = 0;
        EXPECT_TRUE(key.QueryType(name, type));
        EXPECT_EQ(type, value.first);
        EXPECT_EQ(Read(key, name, 40'000), value.second);
        EXPECT_EQ(Read(key, name, value.second.size()), value.second);
    }
}

TEST_F(Registry, ATextIsStoredWithoutTheZeroThatFollowsItInMemory)
{
    Bytes bytes(68, 0);
    std::fill_n(bytes.begin(), 64, std::uint8_t{0x31});
    bytes.resize(64); // the zeros stay behind the end
    CRegistryKey key = CreateOwn();
    ASSERT_TRUE(key.Set(L"ID", platform::registrySz, bytes));
    EXPECT_EQ(Read(key, L"ID", 100).size(), 64u);
}

TEST_F(Registry, ATooSmallBufferIsMoreData)
{
    CRegistryKey key = CreateOwn();
    ASSERT_TRUE(key.Set(L"ID", 3, {1, 2, 3}));
    for (std::size_t room = 0; room < 3; ++room)
    {
        Bytes buffer(room);
        std::size_t size = 0;
        EXPECT_EQ(key.Query(L"ID", buffer, size), ERegistryQuery::MoreData) << room;
        EXPECT_EQ(size, 3u) << room;
    }
}

TEST_F(Registry, AMissingValueFailsAndAReadKeyIsNotWritten)
{
    CreateOwn();
    CRegistryKey key = OpenOwn(ERegistryAccess::Read);
    std::uint32_t type = 99;
    Bytes buffer(8);
    std::size_t size = 99;
    EXPECT_FALSE(key.Set(L"ID", 3, {1}));
    EXPECT_FALSE(key.QueryType(L"ID", type));
    EXPECT_EQ(key.Query(L"ID", buffer, size), ERegistryQuery::Failed);
    EXPECT_EQ(type, 99u);
    EXPECT_EQ(size, 99u);
}

} // namespace

} // namespace contract
