#include "net/Md5.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace {

using net::Md5Context;

std::span<const std::uint8_t> BytesOf(const std::string& text)
{
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

TEST(Md5, HashesTheSuiteOfTheStandardAndPadsAtEveryEdgeOfABlock)
{
    const struct
    {
        std::string message;
        const wchar_t* digest;
    } cases[] = {
        {"", L"d41d8cd98f00b204e9800998ecf8427e"},
        {"message digest", L"f96b697d7cb7938d525a2f31aaf161d0"},
        {"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789",
         L"d174ab98d277d9f5a5611c2c9f419d9f"},
        {std::string(55, 'a'), L"ef1772b6dff9a122358552954ad0df65"},
        {std::string(56, 'a'), L"3b0c8ac703f828b04c6c197006d17218"},
        {std::string(64, 'a'), L"014842d480b571495a4a0363793f7367"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(net::Md5Hex(c.message.c_str()), c.digest) << c.message;
}

TEST(Md5, TakesAMessageInPiecesOfAnySizeAndKeepsNothingButTheDigest)
{
    const std::string message(1000, 'a');
    for (const std::size_t piece : {1u, 63u, 64u, 65u, 128u, 1000u})
    {
        Md5Context context;
        context.Initialize();
        for (std::size_t at = 0; at < message.size(); at += piece)
            context.Update(BytesOf(message).subspan(at, std::min(piece, message.size() - at)));
        context.Finish();
        EXPECT_EQ(net::DigestToHex(context.digest), L"cabe45dcc9ae5b66ba86600cca6b8ba8") << piece;
        EXPECT_EQ(context.state, (std::array<std::uint32_t, 4>{}));
        EXPECT_EQ(context.bitCount, (std::array<std::uint32_t, 2>{}));
        EXPECT_EQ(context.block, (std::array<std::uint8_t, 64>{}));
    }
}

} // namespace
