#include "platform/SystemFacts.h"

#include <winsock2.h>

#include <iphlpapi.h>

#include <gtest/gtest.h>

#include <cstring>

// By the system's younger list, which has the same facts in other fields.
TEST(NetworkAdapters, HaveTheirOwnAddressAndTheirGateways)
{
    ULONG size = 1 << 16;
    std::vector<std::byte> block(size);
    auto* const list = reinterpret_cast<IP_ADAPTER_ADDRESSES*>(block.data());
    ASSERT_EQ(::GetAdaptersAddresses(AF_INET, GAA_FLAG_INCLUDE_GATEWAYS, nullptr, list, &size), 0u);
    for (const platform::NetworkAdapter& adapter : platform::ListNetworkAdapters())
    {
        const IP_ADAPTER_ADDRESSES* same = list;
        while (same && std::memcmp(same->PhysicalAddress, adapter.address.data(), 6) != 0)
            same = same->Next;
        ASSERT_NE(same, nullptr);
        EXPECT_EQ(adapter.type, same->IfType);
        std::string gateway;
        if (same->FirstGatewayAddress)
        {
            const auto* const address =
                reinterpret_cast<const sockaddr_in*>(same->FirstGatewayAddress->Address.lpSockaddr);
            const auto& bytes = address->sin_addr.S_un.S_un_b;
            for (const int part : {bytes.s_b1, bytes.s_b2, bytes.s_b3, bytes.s_b4})
                gateway += (gateway.empty() ? "" : ".") + std::to_string(part);
        }
        EXPECT_EQ(adapter.firstGateway, gateway.empty() ? "0.0.0.0" : gateway);
    }
}
