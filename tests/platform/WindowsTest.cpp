// What the Windows side has that the simulation has not.
#include "platform/SystemFacts.h"
#include "platform/win32/DeadlineCall.h"
#include "platform/win32/UniqueHandle.h"

#include <winsock2.h>

#include <iphlpapi.h>

#include <gtest/gtest.h>

#include <cstring>

using namespace platform;
using namespace std::chrono_literals;

// By the system's younger list, which has the same facts in other fields.
TEST(NetworkAdapters, HaveTheirOwnAddressAndTheirGateways)
{
    ULONG size = 1 << 16;
    std::vector<std::byte> block(size);
    auto* const list = reinterpret_cast<IP_ADAPTER_ADDRESSES*>(block.data());
    ASSERT_EQ(::GetAdaptersAddresses(AF_INET, GAA_FLAG_INCLUDE_GATEWAYS, nullptr, list, &size), 0u);
    for (const NetworkAdapter& adapter : ListNetworkAdapters())
    {
        const IP_ADAPTER_ADDRESSES* same = list;
        while (same && std::memcmp(same->PhysicalAddress, adapter.address.data(), 6) != 0)
            same = same->Next;
        ASSERT_NE(same, nullptr);
        EXPECT_EQ(adapter.type, same->IfType);
        EXPECT_EQ(adapter.firstGateway != "0.0.0.0", same->FirstGatewayAddress != nullptr);
    }
}

TEST(UniqueHandle, HasOneOwnerAndLeavesTheLastErrorAlone)
{
    const HANDLE closed = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
    ::CloseHandle(closed);
    ::SetLastError(ERROR_FILE_NOT_FOUND);
    {
        CKernelHandle first(closed);
        const CKernelHandle second(std::move(first));
        EXPECT_FALSE(first);
    }
    EXPECT_EQ(::GetLastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
}

TEST(DeadlineCall, IsLeftAtItsDeadline)
{
    CStopSignal stop;
    const auto released =
        std::make_shared<CKernelHandle>(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
    const auto wait = [released] { ::WaitForSingleObject(released->Get(), INFINITE); };
    EXPECT_EQ(RunWithinDeadline(wait, 50ms, stop), ECallEnd::Abandoned);
    ::SetEvent(released->Get());
    EXPECT_EQ(RunWithinDeadline(wait, 1h, stop), ECallEnd::Returned);
}
