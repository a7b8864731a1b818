#include "platform/win32/DeadlineCall.h"
#include "platform/win32/UniqueHandle.h"

#include <gtest/gtest.h>

using namespace std::chrono_literals;
using platform::CKernelHandle;
using platform::ECallEnd;

TEST(DeadlineCall, IsLeftAtItsDeadline)
{
    platform::CStopSignal stop;
    const auto released =
        std::make_shared<CKernelHandle>(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
    const auto wait = [released] { ::WaitForSingleObject(released->Get(), INFINITE); };
    EXPECT_EQ(platform::RunWithinDeadline(wait, 50ms, stop), ECallEnd::Abandoned);
    ::SetEvent(released->Get());
    EXPECT_EQ(platform::RunWithinDeadline(wait, 1h, stop), ECallEnd::Returned);
}
