#include "tests/unit/TemporaryFolder.h"
#include "tests/unit/TlsClient.h"
#include "tools/collector/Collector.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace collector;
using namespace std::chrono_literals;
using testing::StartsWith;

namespace {

class CollectorServer : public testing::Test
{
protected:
    // A connected client after its handshake; the test fails without one.
    CTlsClient Connect(const CCollector& collector) const
    {
        CTlsClient client(collector.GetPort());
        EXPECT_TRUE(client.IsConnected() && client.Handshake(authority.GetPemPath()));
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

    const CTemporaryFolder folder;
    const CAuthority authority{folder.path};
    CCollector server{authority};
};

TEST_F(CollectorServer, RecordsEveryByteInWhateverPiecesItComes)
{
    const std::string bytes =
        "GET /piwik.php?ua=A/1 (W; X)&_cvar={\"1\":[\"p\", \"\xC3\xA9\xFF\"]} HTTP/1.1\r\n"
        "X-b:  two \r\nHost: h:1\r\nx-B:\tone\r\nEmpty:\r\n\r\n"
        "POST /collect?z=7 HTTP/1.1\r\nContent-Length: 6\r\n\r\na=1\r\n&"
        "DELETE /x%zz HTTP/1.0\nConnection: keep-alive\n\n"
        "\r\nPOST /c HTTP/1.1\r\nTransfer-Encoding: Chunked\r\nConnection: close\r\n\r\n"
        "3;x=y\r\na\r\n\r\nA\r\n0123456789\r\n0\r\nTrailer: t\r\nAnother: u\r\n\r\n";
    for (const std::size_t piece : {1U, 1000U})
    {
        CCollector fresh(authority);
        CTlsClient client = Connect(fresh);
        for (std::size_t at = 0; at < bytes.size(); at += piece)
            client.Send(bytes.substr(at, piece));
        client.Read();
        Connect(fresh).Send("PUT / HTTP/1.1\r\n\r\n");
        EXPECT_TRUE(fresh.WaitForHits(5, 10s)) << piece;
        std::string lines;
        for (const Hit& hit : fresh.GetHits())
        {
            lines += std::to_string(hit.connection) + '.' + std::to_string(hit.sequence) + ' ' +
                     hit.method + ' ' + hit.target + ' ' + hit.version + ' ' + hit.body;
            for (const Header& header : hit.headers)
                lines += '|' + header.name + '=' + header.value;
            lines += '\n';
        }
        EXPECT_EQ(lines, "1.1 GET /piwik.php?ua=A/1 (W; X)&_cvar={\"1\":[\"p\", \"\xC3\xA9\xFF\"]} "
                         "HTTP/1.1 |X-b=two|Host=h:1|x-B=one|Empty=\n"
                         "1.2 POST /collect?z=7 HTTP/1.1 a=1\r\n&|Content-Length=6\n"
                         "1.3 DELETE /x%zz HTTP/1.0 |Connection=keep-alive\n"
                         "1.4 POST /c HTTP/1.1 a\r\n0123456789|Transfer-Encoding=Chunked|"
                         "Connection=close\n2.5 PUT / HTTP/1.1 \n");
        fresh.Clear();
        EXPECT_TRUE(fresh.GetHits().empty());
        EXPECT_FALSE(fresh.WaitForHits(1, 0s));
    }
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
    const std::pair<EConnectionFault, long> cases[] = {
        {EConnectionFault::UnknownCertificate, X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT_LOCALLY},
        {EConnectionFault::WrongHostCertificate, X509_V_ERR_IP_ADDRESS_MISMATCH},
        {EConnectionFault::ExpiredCertificate, X509_V_ERR_CERT_HAS_EXPIRED},
        {EConnectionFault::CloseBeforeTls, X509_V_OK},
    };
    for (const auto& [fault, verifyResult] : cases)
        server.Order(fault);
    for (const auto& [fault, verifyResult] : cases)
    {
        CTlsClient client(server.GetPort());
        EXPECT_FALSE(client.Handshake(authority.GetPemPath()));
        EXPECT_EQ(client.GetVerifyResult(), verifyResult);
    }
    CTlsClient open = Connect(server);
    EXPECT_TRUE(server.WaitForConnections(5, 0s));
    EXPECT_FALSE(server.WaitForConnections(6, 0s));
    server.Refuse();
    EXPECT_EQ(open.Read(), "");
    EXPECT_FALSE(CTlsClient(server.GetPort()).IsConnected());
    server.Accept();
    EXPECT_THAT(Get("/"), StartsWith("HTTP/1.1 404")) << "on the same port";
    EXPECT_EQ(server.GetHits().size(), 1U);
    EXPECT_FALSE(CTlsClient(CRefusingPort().GetPort()).IsConnected());
}

TEST_F(CollectorServer, StopsAtOnceWhateverItDoes)
{
    for (const Answer& answer : {MakeStall(), Delayed(MakePixel(), 24h), Dripping(MakePixel(), 24h),
                                 MakePixel()}) // and stays connected
    {
        CCollector stopped(authority);
        stopped.Order(answer);
        CTlsClient client = Connect(stopped);
        client.Send("GET / HTTP/1.1\r\n\r\n");
        EXPECT_TRUE(stopped.WaitForHits(1, 10s));
        stopped.Stop();
        EXPECT_FALSE(CTlsClient(stopped.GetPort()).IsConnected());
    }
    server.Order(EConnectionFault::StallHandshake);
    const CTlsClient silent(server.GetPort());
    EXPECT_TRUE(server.WaitForConnections(1, 10s));
    server.Stop();
}

TEST_F(CollectorServer, RejectsWhatIsMalformedOrTooLarge)
{
    const std::string large(70000, 'x');
    const std::string chunked = "POST / HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n";
    const std::pair<std::string, const char*> cases[] = {
        {"hello\r\n\r\n", "400"},
        {"GET / FTP/1.1\r\n\r\n", "400"},
        {"GET HTTP/1.1\r\n\r\n", "400"},
        {"GET / HTTP/1.1\r\n: no name\r\n\r\n", "400"},
        {"GET / HTTP/1.1\r\nA: b\r\n folded: c\r\n\r\n", "400"},
        {"POST / HTTP/1.1\r\nContent-Length: -1\r\n\r\n", "400"},
        {chunked + "no number\r\n", "400"},
        {chunked + "1\r\nlonger\r\n", "400"},
        {"GET /" + large, "431"},
        {"POST / HTTP/1.1\r\nContent-Length: 67108865\r\n\r\n", "413"},
        {chunked + "FFFFFFFFFFFFFFFF\r\n", "413"},
    };
    for (const auto& [bytes, status] : cases)
        EXPECT_EQ(Exchange(bytes).substr(9, 3), status) << bytes.substr(0, 100);
    Connect(server).Send("POST / HTTP/1.1\r\nContent-Length: 5\r\n\r\nab"); // and leaves
    server.Stop();
    EXPECT_TRUE(server.GetHits().empty());
}

TEST(Authority, KeepsItsCertificatesAndMakesAgainWhatIsDamagedExpiredOrNotItsOwn)
{
    const CTemporaryFolder folder;
    std::filesystem::remove(folder.path);
    CAuthority{folder.path};
    for (const char* name : {"authority.pem", "server.pem"})
    {
        const auto access = std::filesystem::status(folder.PathOf(name)).permissions();
        EXPECT_EQ(static_cast<int>(access), 0600) << name;
    }
    const std::string authorityPem = folder.Read("authority.pem");
    const std::string certificate = folder.Read("ca.pem");
    const std::string good = folder.Read("server.pem");
    EXPECT_EQ(certificate.find("PRIVATE"), std::string::npos);
    const Identity signer = ReadPem(authorityPem);
    const Identity expired = MakeIdentity({"127.0.0.1", "IP:127.0.0.1", 0}, &signer);
    const Identity stranger = MakeIdentity({"Stranger", {}, 30}, nullptr);
    const Identity foreign = MakeIdentity({"127.0.0.1", "IP:127.0.0.1", 30}, &stranger);
    for (const std::string& found : {good, good.substr(0, good.size() / 2), WritePem(expired),
                                     WritePem(foreign), authorityPem.substr(0, 200) + good})
    {
        folder.Write("server.pem", found);
        CAuthority{folder.path};
        EXPECT_EQ(folder.Read("server.pem") == found, found == good) << found;
        EXPECT_TRUE(IsUsable(ReadPem(folder.Read("server.pem")), &signer)) << found;
        EXPECT_TRUE(folder.Read("ca.pem") == certificate) << "the trusted one stays";
    }
}

} // namespace
