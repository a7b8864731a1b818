#include "net/CZoHTTPComunicator.h"
#include "platform/LastError.h"
#include "tests/simulated/DebugOutput.h"
#include "tests/simulated/Internet.h"
#include "tests/simulated/Simulated.h"
#include "tests/simulated/VirtualTime.h"

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>

using namespace std::chrono_literals;
using net::CZoHTTPComunicator;
using platform::EConnectivity;
using platform::EInternetOption;
using simulated::Answer;
using simulated::ENetworkStage;

namespace {

using Traces = std::vector<std::wstring>;
using Texts = std::vector<std::wstring>;
using Steps = std::vector<double>;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr const wchar_t* target = L"https://h/p?q=1";

class CommunicatorTest : public testing::Test
{
protected:
    CommunicatorTest() { simulated::Reset(); }

    // The traces since the last take, without their "ZoTracker ".
    static Traces TakeTraces()
    {
        Traces traces;
        for (const std::wstring& line : simulated::TakeDebugOutput())
            traces.push_back(line.substr(10, line.size() - 11));
        return traces;
    }

    static Answer MakeAnswer(std::uint32_t status, const std::string& body = {})
    {
        Answer answer;
        answer.status = status;
        answer.body = body;
        return answer;
    }

    static Answer MakeRedirect(std::uint32_t status, const std::wstring& location)
    {
        Answer answer = MakeAnswer(status);
        answer.location = location;
        return answer;
    }

    static Answer MakeFailure(ENetworkStage stage, std::uint32_t error,
                              const std::string& body = {})
    {
        Answer answer = MakeAnswer(200, body);
        answer.failsAt = stage;
        answer.error = error;
        return answer;
    }

    std::string Post(const std::string& body, const std::wstring& url = target)
    {
        return http.PostContent(url, body, -1, 0, false);
    }

    // Calls the core; the content that it hands out.
    std::string Perform(std::wstring& url, const std::atomic<bool>* abortFlag = nullptr)
    {
        std::string content;
        std::uint32_t length = 77;
        http.PerformRequest(&content, &length, url, "x", -1, 0, false, abortFlag);
        EXPECT_EQ(length, content.size());
        return content;
    }

    // "host|object" of each request sent.
    static Texts GetTargets()
    {
        Texts targets;
        for (const auto& request : simulated::GetSentRequests())
            targets.push_back(request.host + L"|" + request.object);
        return targets;
    }

    void RecordProgress()
    {
        http.SetProgress(
            [](double step, void* own) {
                static_cast<CommunicatorTest*>(own)->steps.push_back(step);
            },
            this, &value);
    }

    platform::CStopSignal stop;
    CZoHTTPComunicator http{stop};
    Steps steps;
    double value = -1;
};

TEST_F(CommunicatorTest, WholeRequest)
{
    simulated::AddAnswer(MakeAnswer(200, "thanks"));
    EXPECT_EQ(Post("v=1&t=a", L"http://collect.example/collect?z=7"), "thanks");
    const auto request = simulated::GetSentRequests().at(0);
    EXPECT_EQ(request.agent, L"ZOHTTPCOM_SESSION");
    EXPECT_EQ(request.host, L"collect.example");
    EXPECT_EQ(request.port, 443);
    EXPECT_EQ(request.connectionFlags, 0x20800000u);
    EXPECT_EQ(request.requestFlags, 0x00A00000u);
    EXPECT_EQ(request.verb, L"POST");
    EXPECT_EQ(request.object, L"/collect?z=7");
    EXPECT_EQ(request.referrer, L"https://collect.example/collect?z=7");
    EXPECT_EQ(request.headers, L"Accept: */*\r\nContent-Type: text/plain; charset=utf-8\r\n"
                               L"User-Agent: ZoHTTPComunicator\r\n");
    EXPECT_EQ(request.body, "v=1&t=a");
    EXPECT_EQ(request.timeouts, (std::map<EInternetOption, std::uint32_t>{
                                    {EInternetOption::ConnectTimeout, 5000},
                                    {EInternetOption::SendTimeout, 120'000},
                                    {EInternetOption::ReceiveTimeout, 120'000}}));
    EXPECT_EQ(simulated::GetOpenInternetHandles(), 1) << "the session alone stays open";
    http.CloseSession();
    EXPECT_EQ(simulated::GetOpenInternetHandles(), 0);
    EXPECT_EQ(TakeTraces(), Traces{});
    EXPECT_FALSE(http.IsBusy());
}

TEST_F(CommunicatorTest, HeadersChangeOneByOneAndCannotBeSplit)
{
    http.SetRequestHeaders(L"", L"", L"Agent/1\r\nX-Evil: 1");
    http.SetRequestHeaders(L"text/x\n", L"a/b", L"");
    Post("");
    EXPECT_EQ(simulated::GetSentRequests().at(0).headers,
              L"Accept: a/b\r\nContent-Type: text/x \r\nUser-Agent: Agent/1  X-Evil: 1\r\n");
}

TEST_F(CommunicatorTest, VerbBodyAndPort)
{
    const struct
    {
        const char* what;
        std::string body;
        std::int64_t length;
        std::uint32_t port;
        const wchar_t* verb;
        std::string sent;
        std::uint16_t sentPort;
    } cases[] = {
        {"all of it", "abc", -1, 0, L"POST", "abc", 443},
        {"a part", "abc", 2, 8443, L"POST", "ab", 8443},
        {"more than there is", "abc", 9, 0x20000, L"POST", "abc", 443},
        {"nothing of it", "abc", 0, 0x100FF, L"GET", "", 255},
        {"empty", "", -1, 0, L"GET", "", 443},
        {"verb", "DELETE", -1, 0, L"DELETE", "", 443},
        {"verb by its text", {"DELETE\0x", 8}, 3, 0, L"DELETE", "", 443},
        {"verb, but nothing to send", "DELETE", 0, 0, L"GET", "", 443},
        {"other case", "delete", -1, 0, L"POST", "delete", 443},
        {"longer", "DELETE ", -1, 0, L"POST", "DELETE ", 443},
    };
    for (const auto& c : cases)
    {
        simulated::ResetInternet();
        http.PostContent(target, c.body, c.length, c.port, false);
        const auto request = simulated::GetSentRequests().at(0);
        EXPECT_EQ(request.verb, c.verb) << c.what;
        EXPECT_EQ(request.body, c.sent) << c.what;
        EXPECT_EQ(request.port, c.sentPort) << c.what;
    }
    http.GetContent(target, 444);
    EXPECT_EQ(simulated::GetSentRequests().back().verb, L"GET");
    EXPECT_EQ(simulated::GetSentRequests().back().port, 444);
}

TEST_F(CommunicatorTest, Addresses)
{
    const struct
    {
        const wchar_t *url, *sentTo;
    } cases[] = {
        {L"https://h", L"h|"},
        {L"https://h?a=1/2", L"h|?a=1/2"},
        {L"https://h:8443/p", L"h:8443|/p"},
        {L"http://a/b?u=http://c/", L"a|/b?u=https://c/"},
        {L"http://a/b?u=https://c/", L"a|/b?u=https://c/"},
        {L"ftp://h/p", L"h|ftp://h/p"},
        {L"HTTPS://h/p", L"h|HTTPS://h/p"},
    };
    for (const auto& c : cases)
    {
        simulated::ResetInternet();
        Post("", c.url);
        EXPECT_EQ(GetTargets(), Texts{c.sentTo}) << c.url;
        EXPECT_EQ(http.errorCode, 0) << c.url;
    }
    EXPECT_EQ(CZoHTTPComunicator::GetObjectPath(L"https://h:8443/p", L"h"), L":8443/p");
    EXPECT_EQ(CZoHTTPComunicator::GetObjectPath(L"http://:::////h/p", L"h"), L"/p");
}

// One request that meets one fault, for each row of the table of results.
TEST_F(CommunicatorTest, EveryFailureOfARequest)
{
    using enum ENetworkStage;
    const std::wstring plainSelf = L"http://H/p?q=1";
    const std::wstring selfTrace = L"3 HTTPCOM: Security Error Redir problem https://h/p?q=1";
    const struct
    {
        const char* what;
        Answer answer;
        std::int32_t code;
        std::uint32_t detail;
        std::wstring trace;
        std::size_t sent;
    } cases[] = {
        {"session", MakeFailure(Session, 12001), 5, 0, L"3 HTTPCOM: Exception SendRequest", 0},
        {"connect", MakeFailure(Connect, 12007), 3, 12007, L"3 HTTPCOM: Error GetHttpConnection",
         0},
        {"open", MakeFailure(OpenRequest, 12009), 3, 12009, L"3 HTTPCOM: Error OpenRequest", 0},
        {"headers", MakeFailure(AddHeaders, 12150), 5, 0, L"3 HTTPCOM: Exception SendRequest", 0},
        {"send", MakeFailure(Send, 12029), 3, 12029, L"3 HTTPCOM: Error SendRequest", 1},
        {"write", MakeFailure(Write, 12030), 3, 12030, L"3 HTTPCOM: Error SendRequest", 1},
        {"end", MakeFailure(EndRequest, 12152), 3, 12152, L"3 HTTPCOM: Error SendRequest", 1},
        {"close request", MakeFailure(CloseRequest, 119), 4, 119, L"3 HTTPCOM: Exception 119", 1},
        {"close", MakeFailure(CloseConnection, 106), 4, 106, L"3 HTTPCOM: Exception 106", 1},
        {"no content", MakeAnswer(204), 204, 204, L"3 HTTPCOM: Error HTTP Status 204", 1},
        {"see other", MakeRedirect(303, L"/x"), 303, 303, L"3 HTTPCOM: Error HTTP Status 303", 1},
        {"temporary", MakeRedirect(307, L"/x"), 307, 307, L"3 HTTPCOM: Error HTTP Status 307", 1},
        {"nowhere", MakeRedirect(302, L""), 2, 0, L"3 HTTPCOM: empty URL", 1},
        {"itself", MakeRedirect(301, L"HTTPS://H/P?q=1"), 2, 0, L"3 HTTPCOM: empty URL", 1},
        {"its plain self", MakeRedirect(302, plainSelf), 6, 0, selfTrace, 1},
    };
    for (const auto& c : cases)
    {
        http.CloseSession();
        simulated::ResetInternet();
        simulated::AddAnswer(c.answer);
        EXPECT_EQ(Post("x"), "") << c.what;
        EXPECT_EQ(http.errorCode, c.code) << c.what;
        EXPECT_EQ(http.errorDetail, c.detail) << c.what;
        EXPECT_EQ(TakeTraces(), Traces{c.trace}) << c.what;
        EXPECT_EQ(simulated::GetSentRequests().size(), c.sent) << c.what;
        EXPECT_LE(simulated::GetOpenInternetHandles(), 1) << c.what;
        EXPECT_FALSE(http.IsBusy()) << c.what;
    }
    simulated::ResetInternet();
    Post("x");
    EXPECT_EQ(http.errorCode, 0) << "the next request starts afresh";
    EXPECT_EQ(http.errorDetail, 0u);
}

TEST_F(CommunicatorTest, AddressesThatNameNoHost)
{
    const struct
    {
        const wchar_t* url;
        Traces traces;
    } cases[] = {
        {L"", {L"3 HTTPCOM: empty URL"}},
        {L"h/p", {L"3 HTTPCOM: inncorrect URL h/p"}},
        {L"://h/p", {L"3 HTTPCOM: inncorrect URL ://h/p"}},
        {L"https:///p", {}},
        {L"http://?p", {}},
    };
    for (const auto& c : cases)
    {
        Post("x", c.url);
        EXPECT_EQ(http.errorCode, 2) << c.url;
        EXPECT_EQ(http.errorDetail, 0u) << c.url;
        EXPECT_EQ(TakeTraces(), c.traces) << c.url;
        EXPECT_EQ(GetTargets(), Texts{}) << c.url;
    }
}

TEST_F(CommunicatorTest, WithoutAConnection)
{
    const std::wstring noManager = L"9 CZoHTTPComunicator::CheckConnection() # ERROR # "
                                   L"CoCreateInstance of IID_INetworkListManager failed.";
    const std::wstring no = L"9 CZoHTTPComunicator::CheckConnection() # ERROR # "
                            L"Call to get_IsConnectedToInternet failed.";
    const std::wstring exception = L"3 HTTPCOM: ERROR CheckConnection EXCEPTION";
    const std::wstring given = L"3 HTTPCOM: ERROR CheckConnection";
    const struct
    {
        EConnectivity connectivity;
        std::int32_t code;
        Traces traces;
    } cases[] = {
        {EConnectivity::NotConnected, 3, {no, given}},
        {EConnectivity::CallFailed, 3, {no, given}},
        {EConnectivity::ManagerMissing, 3, {noManager, no, given}},
        {EConnectivity::NoManager, 0, {noManager}}, // a success, as the system reports it
        {EConnectivity::Exception, 3, {exception, given}},
    };
    for (const auto& c : cases)
    {
        simulated::SetConnectivity(c.connectivity, 31);
        Post("x");
        EXPECT_EQ(http.errorCode, c.code);
        EXPECT_EQ(http.errorDetail, c.code == 0 ? 0u : 31u);
        EXPECT_EQ(TakeTraces(), c.traces);
    }
    http.CloseSession();
    simulated::ResetInternet();
    simulated::SetConnectedState(false, 87);
    Post("x");
    EXPECT_EQ(http.errorCode, 1);
    EXPECT_EQ(http.errorDetail, 87u);
    EXPECT_EQ(TakeTraces(), Traces{L"3 HTTPCOM: Error GetConnectedState 87"});
    EXPECT_EQ(simulated::GetOpenInternetHandles(), 0);
    EXPECT_FALSE(http.OpenSession());
    simulated::SetConnectedState(true, 0);
    EXPECT_TRUE(http.OpenSession());
}

TEST_F(CommunicatorTest, WhatTheThreadsLastErrorSays)
{
    // A callback is where the thread meets errors of others.
    http.SetProgress([](double, void*) { platform::SetLastSystemError(1234); }, nullptr, nullptr);
    simulated::AddAnswer(MakeRedirect(302, L"http://h/p?q=1"));
    Post("x");
    EXPECT_EQ(http.errorCode, 6);
    EXPECT_EQ(http.errorDetail, 1234u);

    http.SetProgress(
        [](double, void*) {
            platform::SetLastSystemError(77);
            throw std::runtime_error("callback");
        },
        nullptr, nullptr);
    std::wstring url = target;
    EXPECT_EQ(Perform(url), "");
    EXPECT_EQ(http.errorCode, 5);
    EXPECT_EQ(http.errorDetail, 77u);
    EXPECT_FALSE(http.IsBusy());
}

TEST_F(CommunicatorTest, WithoutPlaceForTheAnswerNothingHappens)
{
    http.errorCode = 3;
    std::wstring url = target;
    std::string content = "kept";
    std::uint32_t length = 4;
    http.PerformRequest(nullptr, &length, url, "x", -1, 0, false, nullptr);
    http.PerformRequest(&content, nullptr, url, "x", -1, 0, false, nullptr);
    EXPECT_EQ(content, "kept");
    EXPECT_EQ(length, 4u);
    EXPECT_EQ(http.errorCode, 0);
    EXPECT_EQ(GetTargets(), Texts{});
    EXPECT_EQ(TakeTraces(), Traces{});
}

TEST_F(CommunicatorTest, UploadGoesInPieces)
{
    RecordProgress();
    const std::string body(130'000, 'b');
    Post(body);
    const auto request = simulated::GetSentRequests().at(0);
    EXPECT_EQ(request.body, body);
    EXPECT_EQ(request.writes, (std::vector<std::size_t>{64'000, 64'000, 2'000}));
    EXPECT_EQ(steps, (Steps{64'000 / 130'000.0, 128'000 / 130'000.0, 1.0, 1.0, 0.0, 100.0}));
    EXPECT_EQ(value, 0.0);
}

TEST_F(CommunicatorTest, CancelEndsTheUpload)
{
    http.SetProgress([](double, void* own) { static_cast<CZoHTTPComunicator*>(own)->Cancel(); },
                     &http, &value);
    EXPECT_EQ(Post(std::string(70'000, 'b')), "");
    EXPECT_EQ(simulated::GetSentRequests().at(0).writes, std::vector<std::size_t>{64'000});
    EXPECT_EQ(http.errorCode, 0);
    EXPECT_EQ(simulated::GetOpenInternetHandles(), 1);
    http.SetProgress(nullptr, nullptr, nullptr);
    simulated::AddAnswer(MakeAnswer(200, "again"));
    EXPECT_EQ(Post("x"), "again") << "a cancellation holds for one request";
}

TEST_F(CommunicatorTest, ReadingTheBody)
{
    const std::string body = std::string(8'192, 'a') + std::string(3'000, 'b');
    const double whole = 11'192;
    const Steps ofFourGigabytes{8'192 / 4294967295.0 * 100, whole / 4294967295.0 * 100};
    std::vector<std::size_t> nineEmptyTwice(19, 0);
    nineEmptyTwice[9] = 5;
    const std::vector<std::size_t> tenEmpty(10, 0);
    const struct
    {
        const char* what;
        std::uint32_t declared;
        std::vector<std::size_t> firstReads;
        std::size_t length;
        Steps steps;
    } cases[] = {
        {"declared", 11'192, {}, 11'192, {8'192 / whole * 100, 100.0}},
        {"not declared", 0, {}, 11'192, {infinity, infinity}},
        {"declared shorter", 8'000, {}, 8'192, {8'192 / 8'000.0 * 100}},
        {"declared as one piece", 8'192, {}, 8'192, {100.0}},
        {"declared huge", 0xFFFFFFFF, {}, 11'192, ofFourGigabytes},
        {"pauses", 11'192, nineEmptyTwice, 11'192, {5 / whole * 100, 8'197 / whole * 100, 100.0}},
        {"end", 11'192, tenEmpty, 0, {}},
    };
    for (const auto& c : cases)
    {
        simulated::ResetInternet();
        Answer answer = MakeAnswer(200, body);
        answer.contentLength = c.declared;
        answer.firstReads = c.firstReads;
        simulated::AddAnswer(answer);
        http.SetProgress(nullptr, nullptr, nullptr);
        steps.clear();
        RecordProgress();
        EXPECT_EQ(http.GetContent(target, 0), body.substr(0, c.length)) << c.what;
        Steps expected = c.steps;
        expected.insert(expected.begin(), 0.0);
        expected.push_back(100.0);
        ASSERT_EQ(steps.size(), expected.size()) << c.what;
        for (std::size_t i = 0; i < steps.size(); ++i)
            EXPECT_DOUBLE_EQ(steps[i], expected[i]) << c.what << ' ' << i;
        EXPECT_EQ(http.errorCode, 0) << c.what;
    }
}

TEST_F(CommunicatorTest, ABodyOfAnyOtherStatusIsReturnedToo)
{
    simulated::AddAnswer(MakeAnswer(404, "nothing here"));
    EXPECT_EQ(Post("x"), "nothing here");
    EXPECT_EQ(http.errorCode, 404);
}

TEST_F(CommunicatorTest, ABrokenBodyKeepsWhatCame)
{
    simulated::AddAnswer(MakeFailure(ENetworkStage::Read, 12031, "half"));
    EXPECT_EQ(Post("x"), "half");
    EXPECT_EQ(http.errorCode, 12031);
    EXPECT_EQ(http.errorDetail, 0u);
    EXPECT_EQ(TakeTraces(), Traces(10, L"3 HTTPCOM: Error read content 12031"));
}

TEST_F(CommunicatorTest, LongBodiesArriveWholeAndHaveAnEnd)
{
    const std::size_t limit = 64 << 20;
    for (const std::size_t length : {std::size_t{200'001}, limit + 10'000})
    {
        std::string body(length, '\0');
        for (std::size_t i = 0; i < length; i += 1001)
            body[i] = static_cast<char>('a' + i % 23);
        simulated::AddAnswer(MakeAnswer(200, body));
        body.resize(std::min(length, limit));
        EXPECT_TRUE(http.GetContent(target, 0) == body) << length;
    }
}

TEST_F(CommunicatorTest, AbortAndCancelReturnWhatWasRead)
{
    std::atomic<bool> abortFlag{false};
    const Answer answer = MakeAnswer(200, std::string(20'000, 'a'));
    simulated::AddAnswer(answer);
    http.SetProgress(
        [](double step, void* flag) { *static_cast<std::atomic<bool>*>(flag) = step == infinity; },
        &abortFlag, nullptr);
    std::wstring url = target;
    EXPECT_EQ(Perform(url, &abortFlag).size(), 8'192u);
    EXPECT_EQ(http.errorCode, 0);

    simulated::AddAnswer(answer);
    http.SetProgress(
        [](double step, void* own) {
            if (step == infinity)
                static_cast<CZoHTTPComunicator*>(own)->Cancel();
        },
        &http, nullptr);
    EXPECT_EQ(Perform(url).size(), 8'192u);
}

TEST_F(CommunicatorTest, Redirects)
{
    const struct
    {
        const char* what;
        std::wstring contentLocation, location, sentTo, url;
    } cases[] = {
        {"absolute", L"", L"https://other/x?y", L"other|/x?y", L"https://other/x?y"},
        {"plain", L"", L"http://other/x", L"other|/x", L"https://other/x"},
        {"relative", L"", L"/x?y", L"h|/x?y", L"https://h/x?y"},
        {"Content-Location first", L"/first", L"/second", L"h|/first", L"https://h/first"},
        {"relative to nothing", L"", L"x/y", L"hx|/y", L"https://hx/y"},
        {"without a path", L"", L"https://other", L"other|", L"https://other"},
    };
    for (const auto& c : cases)
        for (const std::uint32_t status : {301u, 302u})
        {
            simulated::ResetInternet();
            Answer redirect = MakeRedirect(status, c.location);
            redirect.contentLocation = c.contentLocation;
            redirect.body = "moved";
            simulated::AddAnswer(redirect);
            simulated::AddAnswer(MakeAnswer(200, "arrived"));
            std::wstring url = target;
            EXPECT_EQ(Perform(url), "arrived") << c.what;
            EXPECT_EQ(url, c.url) << c.what;
            EXPECT_EQ(GetTargets(), (Texts{L"h|/p?q=1", c.sentTo})) << c.what;
            const auto last = simulated::GetSentRequests().back();
            EXPECT_EQ(last.verb, L"POST") << c.what;
            EXPECT_EQ(last.body, "x") << c.what;
            EXPECT_EQ(last.referrer, c.url) << c.what;
            EXPECT_EQ(http.errorCode, 0) << c.what;
        }
}

TEST_F(CommunicatorTest, TheAddressStaysUnlessARedirectIsFollowed)
{
    std::wstring url = L"http://h/p";
    Perform(url);
    EXPECT_EQ(url, L"http://h/p");
}

TEST_F(CommunicatorTest, ProgressOverARedirect)
{
    RecordProgress();
    simulated::AddAnswer(MakeRedirect(302, L"/x"));
    http.GetContent(target, 0);
    EXPECT_EQ(steps, (Steps{0.0, 0.0, 100.0}));
    steps.clear();
    simulated::AddAnswer(MakeRedirect(302, L"http://h/p?q=1"));
    http.GetContent(target, 0);
    EXPECT_EQ(steps, (Steps{0.0, 100.0}));
    EXPECT_EQ(value, 0.0);
}

TEST_F(CommunicatorTest, AStopEndsAnEndlessChain)
{
    for (int i = 0; i < 3'000; ++i)
    {
        Answer redirect = MakeRedirect(302, i % 2 == 0 ? L"https://h/b" : L"https://h/a");
        redirect.delay = i < 1'000 ? 0ms : 100ms;
        simulated::AddAnswer(redirect);
    }
    struct Owner
    {
        platform::CStopSignal& stop;
        int hops = 0;
    } owner{stop};
    const auto stopLate = [](double, void* own) {
        if (++static_cast<Owner*>(own)->hops == 1'000)
            static_cast<Owner*>(own)->stop.Request();
    };
    http.SetProgress(stopLate, &owner, nullptr);
    EXPECT_EQ(http.GetContent(L"https://h/a", 0), "");
    EXPECT_EQ(GetTargets().size(), 1'005u) << "half a second of hops";
    EXPECT_EQ(http.errorCode, 3);
    EXPECT_EQ(TakeTraces(), Traces{L"3 HTTPCOM: ERROR CheckConnection"});
}

TEST_F(CommunicatorTest, AStopEndsTheUploadAndTheBody)
{
    http.SetProgress(
        [](double, void* own) {
            static_cast<platform::CStopSignal*>(own)->Request();
            simulated::AdvanceTime(300ms);
        },
        &stop, nullptr);
    EXPECT_EQ(Post(std::string(1'000'000, 'b')), "");
    EXPECT_EQ(simulated::GetSentRequests().at(0).writes.size(), 3u);
    EXPECT_EQ(http.errorCode, 3);
    EXPECT_EQ(http.errorDetail, platform::internetOperationCancelled);
    EXPECT_EQ(TakeTraces(), Traces{L"3 HTTPCOM: Error SendRequest"});

    simulated::AddAnswer(MakeAnswer(200, std::string(100'000, 'a')));
    EXPECT_EQ(http.GetContent(target, 0).size(), 6 * 8'192u) << "what comes within 1.9 seconds";
    EXPECT_EQ(http.errorCode, 0) << "what was sent has arrived";
}

TEST_F(CommunicatorTest, AStalledServerIsLeftAtTheEndOfItsTimeOuts)
{
    Answer stalled = MakeAnswer(200, "late");
    stalled.delay = 1h;
    simulated::AddAnswer(stalled);
    EXPECT_EQ(Post("x"), "");
    EXPECT_EQ(http.errorCode, 3);
    EXPECT_EQ(http.errorDetail, platform::internetTimeout);
    EXPECT_EQ(simulated::GetElapsedMilliseconds(), 245'000);
}

} // namespace
