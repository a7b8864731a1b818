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

TEST(Md5, HashesTheSuiteOfTheStandard)
{
    const struct
    {
        const char* message;
        const wchar_t* digest;
    } cases[] = {
        {"", L"d41d8cd98f00b204e9800998ecf8427e"},
        {"a", L"0cc175b9c0f1b6a831c399e269772661"},
        {"abc", L"900150983cd24fb0d6963f7d28e17f72"},
        {"message digest", L"f96b697d7cb7938d525a2f31aaf161d0"},
        {"abcdefghijklmnopqrstuvwxyz", L"c3fcd3d76192e4007dfb496cca67e13b"},
        {"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789",
         L"d174ab98d277d9f5a5611c2c9f419d9f"},
        {"12345678901234567890123456789012345678901234567890123456789012345678901234567890",
         L"57edf4a22be3c955ac49da2e2107b67a"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(net::Md5Hex(c.message), c.digest) << c.message;
}

// A run of 'a' of each length around the edges of the padding.
TEST(Md5, PadsAtEveryEdgeOfABlock)
{
    const struct
    {
        std::size_t length;
        const wchar_t* digest;
    } cases[] = {
        {55, L"ef1772b6dff9a122358552954ad0df65"},   {56, L"3b0c8ac703f828b04c6c197006d17218"},
        {63, L"b06521f39153d618550606be297466d5"},   {64, L"014842d480b571495a4a0363793f7367"},
        {65, L"c743a45e0d2e6a95cb859adae0248435"},   {119, L"8a7bd0732ed6a28ce75f6dabc90e1613"},
        {120, L"5f61c0ccad4cac44c75ff505e1f1e537"},  {128, L"e510683b3f5ffe4093d021808bc6ff70"},
        {1000, L"cabe45dcc9ae5b66ba86600cca6b8ba8"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(net::Md5Hex(std::string(c.length, 'a').c_str()), c.digest) << c.length;
}

TEST(Md5, TakesAMessageInPiecesOfAnySize)
{
    const std::string message(1000, 'a');
    for (const std::size_t piece : {1u, 7u, 55u, 63u, 64u, 65u, 127u, 128u, 999u})
    {
        Md5Context context;
        context.Initialize();
        for (std::size_t at = 0; at < message.size(); at += piece)
            context.Update(BytesOf(message).subspan(at, std::min(piece, message.size() - at)));
        context.Finish();
        EXPECT_EQ(net::DigestToHex(context.digest), L"cabe45dcc9ae5b66ba86600cca6b8ba8") << piece;
    }
}

TEST(Md5, CountsBitsAcrossBothWords)
{
    Md5Context context;
    context.Initialize();
    context.bitCount = {0xFFFFFE00, 5};
    context.Update(BytesOf(std::string(64, 'a')));
    EXPECT_EQ(context.bitCount, (std::array<std::uint32_t, 2>{0, 6}));
}

TEST(Md5, KeepsNothingButTheDigest)
{
    Md5Context context;
    context.Initialize();
    context.Update(BytesOf("abc"));
    context.Finish();
    EXPECT_EQ(context.state, (std::array<std::uint32_t, 4>{}));
    EXPECT_EQ(context.bitCount, (std::array<std::uint32_t, 2>{}));
    EXPECT_EQ(context.block, (std::array<std::uint8_t, 64>{}));
    EXPECT_EQ(net::DigestToHex(context.digest), L"900150983cd24fb0d6963f7d28e17f72");
}

} // namespace
