#include "platform/win32/UniqueHandle.h"

#include <gtest/gtest.h>

#include <vector>

namespace platform {

namespace {

using Numbers = std::vector<int>;
Numbers closed;

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
using CNumber = CUniqueHandle<NumberTraits>;

TEST(UniqueHandle, ClosesOnceAndLeavesTheLastErrorAlone)
{
    closed.clear();
    ::SetLastError(ERROR_FILE_NOT_FOUND);
    {
        CNumber first(1);
        CNumber second(std::move(first));
        EXPECT_FALSE(first);
        EXPECT_EQ(second.Get(), 1);
        EXPECT_EQ(closed, Numbers());
        CNumber& same = second;
        second = std::move(same);
        EXPECT_EQ(second.Get(), 1);
    }
    EXPECT_EQ(closed, (Numbers{1}));
    EXPECT_EQ(::GetLastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
}

} // namespace

} // namespace platform
