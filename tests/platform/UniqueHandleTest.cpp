#include "platform/win32/UniqueHandle.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

std::vector<int> closed;

struct NumberTraits
{
    using Raw = int;
    static Raw None() noexcept { return 0; }
    static bool IsValid(Raw raw) noexcept { return raw != 0; }
    static void Close(Raw raw) noexcept
    {
        closed.push_back(raw);
        ::SetLastError(ERROR_INVALID_HANDLE);
    }
};

TEST(UniqueHandle, ClosesOnceAndLeavesTheLastErrorAlone)
{
    ::SetLastError(ERROR_FILE_NOT_FOUND);
    {
        platform::CUniqueHandle<NumberTraits> first(1);
        platform::CUniqueHandle<NumberTraits> second(std::move(first));
        EXPECT_FALSE(first);
        auto& same = second;
        second = std::move(same);
        EXPECT_EQ(second.Get(), 1);
        EXPECT_TRUE(closed.empty());
    }
    EXPECT_EQ(closed, std::vector<int>{1});
    EXPECT_EQ(::GetLastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
}

} // namespace
