#include "tests/unit/TemporaryFolder.h"
#include "tests/unit/TlsClient.h"
#include "tools/collector/Collector.h"

#include <algorithm>
#include <chrono>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>
#include <sys/stat.h>

using namespace collector;
using namespace std::chrono_literals;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

using Clock = std::chrono::steady_clock;

// One authority for all cases; each case has a collector of its own.
class CollectorServer : public testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        folder.emplace();
        authority.emplace(folder->path);
    }
    static void TearDownTestSuite()
    {
        authority.reset();
        folder.reset();
    }

    // A connected client after its handshake; the test fails without one.
    static CTlsClient Connect(const CCollector& collector)
    {
        CTlsClient client(collector.GetPort());
        EXPECT_TRUE(client.IsConnected() && client.Handshake(authority->GetPemPath()));
        return client;
    }

    // What comes back to the bytes until the connection ends.
    std::string Exchange(const std::string& bytes) const
    {
        CTlsClient client = Connect(server);
        client.Send(bytes);
        return client.Read();
    }

    std::string Get(const std::string& target) const
    {
        return Exchange("GET " + target + " HTTP/1.1\r\nConnection: close\r\n\r\n");
    }

    static inline std::optional<CTemporaryFolder> folder;
    static inline std::optional<CAuthority> authority;
    CCollector server{*authority};
};

TEST_F(CollectorServer, RecordsEveryByteOfARequest)
{
    Exchange("GET /piwik.php?send_image=0&ua=A/1 (W; X)&_cvar={\"1\":[\"p\", \"\xC3\xA9\xFF\"]} "
             "HTTP/1.1\r\nX-b:  two \r\nHost: h:1\r\nx-B:\tone\r\n\r\n"
             "POST /collect?z=7 HTTP/1.1\r\nContent-Length: 6\r\n\r\na=1\r\n&"
             "DELETE /x%zz HTTP/1.0\r\nConnection: keep-alive\r\n\r\n"
             "\r\nPOST /c HTTP/1.1\r\nTransfer-Encoding: chunked\r\nConnection: close\r\n\r\n"
             "3;x=y\r\nabc\r\nA\r\n0123456789\r\n0\r\nTrailer: t\r\n\r\n");
    Connect(server).Send("PUT / HTTP/1.1\r\n\r\n");
    ASSERT_TRUE(server.WaitForHits(5, 10s));

    const std::vector<Hit> hits = server.GetHits();
    std::vector<std::string> lines;
    for (const Hit& hit : hits)
        lines.push_back(std::to_string(hit.connection) + '.' + std::to_string(hit.sequence) + ' ' +
                        hit.method + ' ' + hit.target + ' ' + hit.version + ' ' + hit.body);
    EXPECT_THAT(lines, testing::ElementsAre(
                           "1.1 GET /piwik.php?send_image=0&ua=A/1 (W; X)&_cvar="
                           "{\"1\":[\"p\", \"\xC3\xA9\xFF\"]} HTTP/1.1 ",
                           "1.2 POST /collect?z=7 HTTP/1.1 a=1\r\n&", "1.3 DELETE /x%zz HTTP/1.0 ",
                           "1.4 POST /c HTTP/1.1 abc0123456789", "2.5 PUT / HTTP/1.1 "));
    ASSERT_EQ(hits[0].headers.size(), 3U);
    EXPECT_EQ(hits[0].headers[0].name + '=' + hits[0].headers[0].value, "X-b=two");
    EXPECT_EQ(hits[0].headers[2].name + '=' + hits[0].headers[2].value, "x-B=one");
    EXPECT_EQ(FindHeader(hits[0], "HOST"), "h:1");
    EXPECT_EQ(server.GetConnectionCount(), 2U);

    server.Clear();
    EXPECT_TRUE(server.GetHits().empty());
    EXPECT_FALSE(server.WaitForHits(1, 0s));
}

TEST_F(CollectorServer, SendsOrderedAnswersByteForByte)
{
    const std::string large(20 << 20, 'x');
    const struct
    {
        const char* what;
        Answer answer;
        std::string expected;
        bool closedProperly = false;
    } cases[] = {
        {"status", MakeAnswer(503, "busy"),
         "HTTP/1.1 503 Service Unavailable\r\nContent-Length: 4\r\n\r\nbusy"},
        {"redirect", MakeRedirect(302, "/b?c"),
         "HTTP/1.1 302 Found\r\nLocation: /b?c\r\nContent-Length: 0\r\n\r\n"},
        {"too long a length", MakeAnswer(200, "x", {{"content-length", "99999999999999"}}),
         "HTTP/1.1 200 OK\r\ncontent-length: 99999999999999\r\n\r\nx"},
        {"no length", MakeAnswerWithoutLength(200, "all"),
         "HTTP/1.1 200 OK\r\nConnection: close\r\n\r\nall", true},
        {"cut in the body", MakeCutAnswer("0123456789", 4),
         "HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\n0123"},
        {"no answer", MakeNoAnswer(), "", true},
        {"reset", {.bytes = {}, .after = EAfterAnswer::Reset}, ""},
        {"byte by byte", Dripping(MakeAnswer(204), 1ms), "HTTP/1.1 204 No Content\r\n\r\n"},
        {"many megabytes", {.bytes = large}, large},
    };
    for (const auto& c : cases)
    {
        server.Order(c.answer);
        CTlsClient client = Connect(server);
        client.Send("GET / HTTP/1.1\r\nConnection: close\r\n\r\n");
        EXPECT_TRUE(client.Read() == c.expected) << c.what;
        EXPECT_EQ(client.WasClosedProperly(), c.closedProperly) << c.what;
    }
    EXPECT_THAT(Get("/"), StartsWith("HTTP/1.1 404")) << "all orders are used up";
    EXPECT_THAT(Get("/piwik.php?send_image=0"), StartsWith("HTTP/1.1 204 No Content\r\n\r\n"));
    EXPECT_THAT(Get("/__utm.gif"), testing::EndsWith(";"));
}

TEST_F(CollectorServer, RefusesCertificatesAndConnectionsAsOrdered)
{
    const struct
    {
        EConnectionFault fault;
        long verifyResult;
    } cases[] = {
        {EConnectionFault::UnknownCertificate, X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT_LOCALLY},
        {EConnectionFault::WrongHostCertificate, X509_V_ERR_IP_ADDRESS_MISMATCH},
        {EConnectionFault::CloseBeforeTls, X509_V_OK},
    };
    for (const auto& c : cases)
        server.Order(c.fault);
    for (const auto& c : cases)
    {
        CTlsClient client(server.GetPort());
        EXPECT_FALSE(client.Handshake(authority->GetPemPath()));
        EXPECT_EQ(client.GetVerifyResult(), c.verifyResult);
    }
    EXPECT_THAT(Get("/"), StartsWith("HTTP/1.1 404"));
    EXPECT_TRUE(server.WaitForConnections(4, 0s));
    EXPECT_EQ(server.GetHits().size(), 1U);
}

TEST_F(CollectorServer, RefusesConnectionsAndComesBackOnItsPort)
{
    CTlsClient open = Connect(server);
    const auto begin = Clock::now();
    server.Refuse();
    EXPECT_EQ(open.Read(), "");
    EXPECT_LT(Clock::now() - begin, 2s);
    EXPECT_FALSE(CTlsClient(server.GetPort()).IsConnected());
    server.Accept();
    EXPECT_THAT(Get("/"), StartsWith("HTTP/1.1 404"));
    const CRefusingPort refusing;
    EXPECT_FALSE(CTlsClient(refusing.GetPort()).IsConnected());
}

TEST_F(CollectorServer, StopsAtOnceWhateverItDoes)
{
    const struct
    {
        const char* what;
        EConnectionFault fault;
        Answer answer;
    } cases[] = {
        {"handshake", EConnectionFault::StallHandshake, {}},
        {"no answer", EConnectionFault::None, MakeStall()},
        {"delay", EConnectionFault::None, Delayed(MakePixel(), 24h)},
        {"drip", EConnectionFault::None, Dripping(MakePixel(), 24h)},
        {"keep-alive", EConnectionFault::None, {}},
    };
    for (const auto& c : cases)
    {
        CCollector stopped(*authority);
        stopped.Order(c.fault);
        stopped.Order(c.answer);
        std::optional<CTlsClient> client;
        if (c.fault == EConnectionFault::None)
        {
            client.emplace(Connect(stopped)).Send("GET / HTTP/1.1\r\n\r\n");
            EXPECT_TRUE(stopped.WaitForHits(1, 10s)) << c.what;
        }
        else
            client.emplace(stopped.GetPort());
        const auto begin = Clock::now();
        EXPECT_TRUE(stopped.WaitForConnections(1, 10s)) << c.what;
        stopped.Stop();
        EXPECT_LT(Clock::now() - begin, 2s) << c.what;
        EXPECT_FALSE(CTlsClient(stopped.GetPort()).IsConnected()) << c.what;
    }
}

TEST_F(CollectorServer, RejectsWhatIsMalformedOrTooLarge)
{
    const std::string large(70000, 'x');
    const std::string chunked = "POST / HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n";
    const struct
    {
        const char* what;
        std::string bytes;
        const char* status;
    } cases[] = {
        {"no request line", "hello\r\n\r\n", "400"},
        {"not HTTP", "GET / FTP/1.1\r\n\r\n", "400"},
        {"no target", "GET HTTP/1.1\r\n\r\n", "400"},
        {"no header name", "GET / HTTP/1.1\r\n: x\r\n\r\n", "400"},
        {"folded header", "GET / HTTP/1.1\r\nA: b\r\n c: d\r\n\r\n", "400"},
        {"length is no number", "POST / HTTP/1.1\r\nContent-Length: -1\r\n\r\n", "400"},
        {"chunk length is no number", chunked + "xyz\r\n", "400"},
        {"chunk longer than said", chunked + "1\r\nabc\r\n", "400"},
        {"long target", "GET /" + large, "431"},
        {"long headers", "GET / HTTP/1.1\r\nA: " + large, "431"},
        {"long body", "POST / HTTP/1.1\r\nContent-Length: 67108865\r\n\r\n", "413"},
        {"long chunk", chunked + "FFFFFFFFFFFFFFFF\r\n", "413"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(Exchange(c.bytes).substr(0, 12), std::string("HTTP/1.1 ") + c.status) << c.what;
    Connect(server).Send("POST / HTTP/1.1\r\nContent-Length: 5\r\n\r\nab"); // and leaves
    server.Stop();
    EXPECT_TRUE(server.GetHits().empty());
}

// A request means the same however the network cuts it into pieces.
TEST(RequestReader, TakesBytesInAnyPieces)
{
    const std::string bytes = "POST /a b HTTP/1.1\r\nTransfer-Encoding: Chunked\r\nH:\r\n\r\n"
                              "2\r\n\r\n\r\n1\r\nx\r\n0\r\nT: 1\r\nU: 2\r\n\r\nGET / HTTP/1.1\n\n";
    for (const std::size_t piece : {1U, 2U, 7U, 1000U})
    {
        std::string_view rest = bytes;
        CRequestReader reader(
            [&](char* data, std::size_t size) {
                const std::size_t count = rest.copy(data, std::min(size, piece));
                rest.remove_prefix(count);
                return count;
            },
            {}, [] { FAIL() << "nobody waits for leave to send"; });
        Hit hit;
        ASSERT_EQ(reader.Read(hit), ERead::Request) << piece;
        EXPECT_EQ(hit.target + '|' + hit.body, "/a b|\r\nx") << piece;
        Hit next;
        ASSERT_EQ(reader.Read(next), ERead::Request) << piece;
        EXPECT_EQ(next.method + next.target + next.version, "GET/HTTP/1.1") << piece;
        EXPECT_EQ(reader.Read(next), ERead::End) << piece;
    }
}

TEST(Authority, KeepsItsCertificatesAndTheirKeysToItself)
{
    const CTemporaryFolder folder;
    const std::string made = folder.PathOf("new/folder");
    std::string before[2];
    for (std::string& bytes : before)
    {
        const CAuthority authority(made);
        for (const char* name : {"authority.pem", "server.pem", "unknown.pem", "wrong-host.pem"})
        {
            struct stat status = {};
            ASSERT_EQ(::stat((made + '/' + name).c_str(), &status), 0) << name;
            EXPECT_EQ(status.st_mode & 0777, 0600U) << name;
            bytes += folder.Read(std::string("new/folder/") + name);
        }
    }
    EXPECT_TRUE(before[0] == before[1]);
    EXPECT_EQ(folder.Read("new/folder/ca.pem").find("PRIVATE"), std::string::npos);
}

TEST(Authority, MakesAgainWhatIsDamagedExpiredOrNotItsOwn)
{
    const CTemporaryFolder folder;
    const CAuthority first(folder.path);
    const std::string authorityPem = folder.Read("authority.pem");
    const std::string certificate = folder.Read("ca.pem");
    const std::string der = folder.Read("ca.der");
    const Identity signer = ReadPem(authorityPem);
    const Identity expired = MakeIdentity({"127.0.0.1", "IP:127.0.0.1", 0}, &signer);
    const Identity stranger = MakeIdentity({"Stranger", {}, 30}, nullptr);
    const Identity foreign = MakeIdentity({"127.0.0.1", "IP:127.0.0.1", 30}, &stranger);

    const std::string good = folder.Read("server.pem");
    const std::string damages[] = {"",
                                   "text",
                                   good.substr(0, good.size() / 2),
                                   WritePem(expired),
                                   WritePem(foreign),
                                   authorityPem.substr(0, 200) + good};
    for (const std::string& damage : damages)
    {
        folder.Write("server.pem", damage);
        std::filesystem::remove(first.GetDerPath());
        const CAuthority mended(folder.path);
        EXPECT_TRUE(folder.Read("server.pem") != damage) << damage;
        EXPECT_TRUE(IsUsable(ReadPem(folder.Read("server.pem")), &signer)) << damage;
        EXPECT_TRUE(folder.Read("ca.pem") == certificate) << "the trusted one stays";
        EXPECT_TRUE(folder.Read("ca.der") == der);
    }

    std::filesystem::remove(folder.PathOf("authority.pem"));
    const CAuthority renewed(folder.path);
    const Identity next = ReadPem(folder.Read("authority.pem"));
    EXPECT_FALSE(folder.Read("ca.pem") == certificate);
    EXPECT_TRUE(IsUsable(ReadPem(folder.Read("server.pem")), &next));
}

} // namespace
