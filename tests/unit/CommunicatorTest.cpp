#include "net/CZoHTTPComunicator.h"
#include "platform/LastError.h"
#include "tests/simulated/Internet.h"
#include "tests/simulated/Simulated.h"
#include "tests/simulated/SystemFacts.h"
#include "tests/simulated/VirtualTime.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <utility>

using namespace std::chrono_literals;
using net::CZoHTTPComunicator;
using platform::EConnectivity;
using platform::EInternetOption;
using simulated::AddAnswer;
using simulated::Answer;
using simulated::GetSentRequests;

namespace {

using Steps = std::vector<double>;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr const wchar_t* target = L"https://h/p?q=1";

class CommunicatorTest : public testing::Test
{
protected:
    CommunicatorTest() { simulated::Reset(); }

    std::string Post(const std::string& body, const std::wstring& url = target)
    {
        return http.PostContent(url, body, -1, 0, false);
    }

    // Calls the core; the content that it hands out.
    std::string Perform(std::wstring& url, const std::string& body = "x",
                        const std::atomic<bool>* abortFlag = nullptr)
    {
        std::string content;
        std::uint32_t length = 77;
        http.PerformRequest(&content, &length, url, body, -1, 0, false, abortFlag);
        EXPECT_EQ(length, content.size());
        return content;
    }

    // What happened since the last call: the error code and detail, "host|object" of each request
    // sent, and the level and the text of each trace.
    std::wstring TakeOutcome() const
    {
        std::wstring outcome =
            std::to_wstring(http.errorCode) + L" " + std::to_wstring(http.errorDetail);
        for (const auto& request : GetSentRequests())
            outcome += L" " + request.host + L"|" + request.object;
        for (const std::wstring& line : simulated::TakeDebugOutput())
            outcome += L" <" + line.substr(10, line.size() - 11) + L">"; // without "ZoTracker "
        simulated::ResetInternet();
        return outcome;
    }

    void OnProgress(std::function<void()> callback = [] {})
    {
        onProgress = std::move(callback);
        http.SetProgress(
            [](double step, void* own) {
                auto& self = *static_cast<CommunicatorTest*>(own);
                EXPECT_TRUE(self.http.IsBusy());
                self.steps.push_back(step);
                EXPECT_TRUE(self.value == step || step == 100.0) << step;
                self.onProgress();
            },
            this, &value);
    }

    platform::CStopSignal stop;
    CZoHTTPComunicator http{stop};
    std::function<void()> onProgress;
    Steps steps; // since OnProgress
    double value = -1;
};

TEST_F(CommunicatorTest, FlagsHeadersAndTimeoutsOfARequest)
{
    AddAnswer({.body = "thanks"});
    EXPECT_EQ(Post("v=1&t=a", L"http://collect.example/collect?z=7"), "thanks");
    const auto request = GetSentRequests().at(0);
    EXPECT_EQ(request.connectionFlags, 0x20800000u);
    EXPECT_EQ(request.requestFlags, 0x00A00000u);
    EXPECT_EQ(request.headers, L"Accept: */*\r\nContent-Type: text/plain; charset=utf-8\r\n"
                               L"User-Agent: ZoHTTPComunicator\r\n");
    EXPECT_EQ(request.timeouts, (std::map<EInternetOption, std::uint32_t>{
                                    {EInternetOption::ConnectTimeout, 5000},
                                    {EInternetOption::SendTimeout, 120'000},
                                    {EInternetOption::ReceiveTimeout, 120'000}}));
    EXPECT_EQ(simulated::GetOpenInternetHandles(), 1) << "the session alone stays open";
    http.CloseSession();
    EXPECT_EQ(simulated::GetOpenInternetHandles(), 0);
    EXPECT_EQ(TakeOutcome(), L"0 0 collect.example|/collect?z=7");

    // Headers change one by one and cannot be split.
    http.SetRequestHeaders(L"", L"", L"Agent/1\r\nX-Evil: 1");
    http.SetRequestHeaders(L"text/x\n", L"a/b", L"");
    Post("");
    EXPECT_EQ(GetSentRequests().at(0).headers,
              L"Accept: a/b\r\nContent-Type: text/x \r\nUser-Agent: Agent/1  X-Evil: 1\r\n");
}

TEST_F(CommunicatorTest, BodyAndLengthChooseTheVerb)
{
    const std::tuple<std::string, std::int64_t, std::uint32_t, const char*> cases[] = {
        {"abc", -1, 0, "POST 443 abc"},   {"abc", 2, 8443, "POST 8443 ab"},
        {"abc", 0, 0x100FF, "GET 255 "},  {"", -1, 0, "GET 443 "},
        {"DELETE", -1, 0, "DELETE 443 "}, {{"DELETE\0x", 8}, 3, 0, "DELETE 443 "},
        {"DELETE", 0, 0, "GET 443 "},     {"DELETE ", -1, 0, "POST 443 DELETE "},
    };
    for (const auto& [body, length, port, sent] : cases)
    {
        http.PostContent(target, body, length, port, false);
        const auto request = GetSentRequests().back();
        EXPECT_EQ(std::string(request.verb.begin(), request.verb.end()) + ' ' +
                      std::to_string(request.port) + ' ' + request.body,
                  sent);
    }
}

TEST_F(CommunicatorTest, AddressesAreSplitAndMadeSecure)
{
    const wchar_t* const cases[][2] = {
        {L"https://h?a=1/2", L"0 0 h|?a=1/2"},
        {L"https://h:8443/p", L"0 0 h:8443|/p"},
        {L"http://a/b?u=http://c/", L"0 0 a|/b?u=https://c/"},
        {L"http://a/b?u=https://c/&v=http://d/", L"0 0 a|/b?u=https://c/&v=http://d/"},
        {L"http://:::////h/p", L"0 0 :::|h/p"},
        {L"HTTPS://h/p", L"0 0 h|HTTPS://h/p"},
        {L"", L"2 0 <3 HTTPCOM: empty URL>"},
        {L"h/p", L"2 0 <3 HTTPCOM: inncorrect URL h/p>"},
        {L"://h/p", L"2 0 <3 HTTPCOM: inncorrect URL ://h/p>"},
        {L"https:///p", L"2 0"},
    };
    for (const auto& [url, outcome] : cases)
    {
        Post("", url);
        EXPECT_EQ(TakeOutcome(), outcome) << url;
    }
}

// One request that meets one fault, for each row of the table of results.
TEST_F(CommunicatorTest, EveryFailureOfARequest)
{
    using enum simulated::ENetworkStage;
    const std::wstring sent = L" h|/p?q=1";
    const std::wstring exception = L" <3 HTTPCOM: Exception SendRequest>";
    const std::wstring sendError = L" <3 HTTPCOM: Error SendRequest>";
    const std::wstring status = L" <3 HTTPCOM: Error HTTP Status ";
    const std::wstring empty = L" <3 HTTPCOM: empty URL>";
    const std::wstring closing = L" <3 HTTPCOM: Exception ";
    const std::wstring inPlace = L" <3 HTTPCOM: Security Error Redir problem https://h/p?q=1>";
    std::wstring unread;
    for (int emptyReads = 0; emptyReads < 10; ++emptyReads)
        unread += L" <3 HTTPCOM: Error read content 12031>";
    const std::tuple<const char*, Answer, std::wstring> cases[] = {
        {"session", {.failsAt = Session, .error = 12001}, L"5 0" + exception},
        {"connect", {.failsAt = Connect, .error = 7}, L"3 7 <3 HTTPCOM: Error GetHttpConnection>"},
        {"open", {.failsAt = OpenRequest, .error = 8}, L"3 8 <3 HTTPCOM: Error OpenRequest>"},
        {"headers", {.failsAt = AddHeaders, .error = 12150}, L"5 55" + exception},
        {"send", {.failsAt = Send, .error = 12029}, L"3 12029" + sent + sendError},
        {"write", {.failsAt = Write, .error = 12030}, L"3 12030" + sent + sendError},
        {"end", {.failsAt = EndRequest, .error = 12152}, L"3 12152" + sent + sendError},
        {"read", {.failsAt = Read, .error = 12031, .body = "half"}, L"12031 0" + sent + unread},
        {"close file",
         {.failsAt = CloseRequest, .error = 119},
         L"4 119" + sent + closing + L"119>"},
        {"close", {.failsAt = CloseConnection, .error = 106}, L"4 106" + sent + closing + L"106>"},
        {"other", {.status = 303, .location = L"/x"}, L"303 303" + sent + status + L"303>"},
        {"nowhere", {.status = 302}, L"2 0" + sent + empty},
        {"itself", {.status = 301, .location = L"HTTPS://H/P?q=1"}, L"2 0" + sent + empty},
        {"its plain self", {.status = 302, .location = L"http://H/p?q=1"}, L"6 0" + sent + inPlace},
        {"its own content location",
         {.status = 302, .contentLocation = L"https://H/p?q=1"},
         L"6 0" + sent + inPlace},
        {"close over a status",
         {.failsAt = CloseRequest, .error = 119, .status = 404, .body = "x"},
         L"4 119" + sent + status + L"404>" + closing + L"119>"},
    };
    for (const auto& [what, answer, outcome] : cases)
    {
        http.CloseSession();
        simulated::internet->connectivity = {EConnectivity::Connected, 55};
        AddAnswer(answer);
        EXPECT_EQ(Post("x"), answer.body) << what;
        EXPECT_LE(simulated::GetOpenInternetHandles(), 1) << what;
        EXPECT_FALSE(http.IsBusy()) << what;
        EXPECT_EQ(TakeOutcome(), outcome) << what;
    }
    Post("x");
    EXPECT_EQ(TakeOutcome(), L"0 0" + sent) << "the next request starts afresh";
}

TEST_F(CommunicatorTest, WithoutAConnection)
{
    const std::wstring check = L" <9 CZoHTTPComunicator::CheckConnection() # ERROR # ";
    const std::wstring noManager = check + L"CoCreateInstance of IID_INetworkListManager failed.>";
    const std::wstring no = check + L"Call to get_IsConnectedToInternet failed.>";
    const std::wstring given = L" <3 HTTPCOM: ERROR CheckConnection>";
    using enum EConnectivity;
    const std::pair<EConnectivity, std::wstring> cases[] = {
        {NotConnected, L"3 31" + no + given},
        {ManagerMissing, L"3 31" + noManager + no + given},
        {NoManager, L"0 0 h|/p?q=1" + noManager}, // the system calls it a success
        {Exception, L"3 31 <3 HTTPCOM: ERROR CheckConnection EXCEPTION>" + given},
    };
    simulated::internet->connected = {false, 87};
    Post("x");
    EXPECT_EQ(TakeOutcome(), L"1 87 <3 HTTPCOM: Error GetConnectedState 87>");
    EXPECT_TRUE(http.OpenSession());
    for (const auto& [connectivity, outcome] : cases)
    {
        simulated::internet->connected = {false, 87}; // it is open already
        simulated::internet->connectivity = {connectivity, 31};
        Post("x");
        EXPECT_EQ(TakeOutcome(), outcome);
    }
}

TEST_F(CommunicatorTest, ARedirectInPlaceTellsTheThreadsLastError)
{
    OnProgress([] { platform::SetLastSystemError(77); });
    AddAnswer({.status = 302, .location = L"http://h/p?q=1"});
    Post("x");
    EXPECT_EQ(http.errorDetail, 77u);
    EXPECT_EQ(steps, (Steps{1, 1, 0, 100}));
}

TEST_F(CommunicatorTest, WithoutPlaceForTheAnswerNothingHappens)
{
    std::wstring url = target;
    std::string content = "kept";
    std::uint32_t length = 4;
    http.PerformRequest(nullptr, &length, url, "x", -1, 0, false, nullptr);
    http.PerformRequest(&content, nullptr, url, "x", -1, 0, false, nullptr);
    EXPECT_EQ(content + std::to_string(length), "kept4");
    EXPECT_EQ(TakeOutcome(), L"0 0");
}

TEST_F(CommunicatorTest, AnUploadGoesInPiecesUntilItIsCancelledOrStopped)
{
    const std::string body(200'000, 'b');
    const std::tuple<std::function<void()>, std::size_t, Steps> cases[] = {
        {[] {}, 200'000, {0.32, 0.64, 0.96, 1, 1, 0, 100}},
        {[this] { http.Cancel(); }, 64'000, {0.32, 100}}};
    for (const auto& [act, length, expected] : cases)
    {
        OnProgress(act);
        Post(body);
        EXPECT_EQ(GetSentRequests().at(0).body, body.substr(0, length));
        http.CloseSession();
        EXPECT_EQ(simulated::GetOpenInternetHandles(), 0);
        EXPECT_EQ(TakeOutcome(), L"0 0 h|/p?q=1");
        EXPECT_EQ(std::exchange(steps, {}), expected);
        EXPECT_EQ(value, 0.0);
    }
    OnProgress([this] {
        stop.Request();
        simulated::AdvanceTime(300ms);
    });
    Post(body);
    EXPECT_EQ(GetSentRequests().at(0).body.size(), 192'000u) << "what goes within 0.5 seconds";
    EXPECT_EQ(http.errorDetail, 12017u);
    AddAnswer({.body = std::string(100'000, 'a')});
    EXPECT_EQ(http.GetContent(target, 0).size(), 6 * 8'192u) << "what comes within 1.9 seconds";
    EXPECT_EQ(http.errorCode, 0) << "what was sent has arrived";
}

TEST_F(CommunicatorTest, TheBodyIsReadUntilItIsCompleteOrUnwanted)
{
    const std::string body = std::string(8'192, 'a') + std::string(3'000, 'b');
    const double whole = 11'192;
    std::vector<std::size_t> nineEmptyTwice(19, 0);
    nineEmptyTwice[9] = 5;
    const std::vector<std::size_t> tenEmpty(10, 0);
    std::atomic<bool> isUnwanted;
    const auto cancel = [this] { http.Cancel(); };
    const auto abort = [&] { isUnwanted = true; };
    const struct
    {
        const char* what;
        std::uint32_t declared;
        std::size_t length; // of what is read
        Steps steps;
        std::vector<std::size_t> firstReads = {};
        std::function<void()> atFirstPiece = [] {};
    } cases[] = {
        {"cancelled", 0, 8'192, {0, infinity, 100}, {}, cancel},
        {"aborted", 0, 8'192, {0, infinity, 100}, {}, abort},
        {"declared", 11'192, 11'192, {0, 8'192 / whole * 100, 100, 100}},
        {"not declared", 0, 11'192, {0, infinity, infinity, 100}},
        {"declared shorter", 8'000, 8'192, {0, 8'192 / 80.0, 100}},
        {"pauses",
         11'192,
         11'192,
         {0, 5 / whole * 100, 8'197 / whole * 100, 100, 100},
         nineEmptyTwice},
        {"end", 11'192, 0, {0, 100}, tenEmpty},
    };
    for (const auto& c : cases)
    {
        isUnwanted = false;
        OnProgress([&] {
            if (steps.size() == 2)
                c.atFirstPiece();
        });
        AddAnswer({.contentLength = c.declared, .body = body, .firstReads = c.firstReads});
        std::wstring url = target;
        EXPECT_EQ(Perform(url, "", &isUnwanted), body.substr(0, c.length)) << c.what;
        EXPECT_EQ(std::exchange(steps, {}), c.steps) << c.what;
        EXPECT_EQ(http.errorCode, 0) << c.what;
    }
}

TEST_F(CommunicatorTest, LongBodiesArriveWholeAndHaveAnEnd)
{
    const std::size_t limit = 64 << 20;
    for (const std::size_t length : {std::size_t{200'001}, limit + 10'000})
    {
        std::string body(length, '\0');
        for (std::size_t i = 0; i < length; i += 1001)
            body[i] = static_cast<char>('a' + i % 23);
        AddAnswer({.body = body, .firstReads = {length < limit ? 5u : 8'192u}});
        body.resize(std::min(length, limit));
        EXPECT_TRUE(http.GetContent(target, 0) == body) << length;
    }
}

TEST_F(CommunicatorTest, RedirectsAreFollowedWithTheSameRequest)
{
    const wchar_t* const cases[][4] = {{L"", L"http://other/x", L"other|/x", L"https://other/x"},
                                       {L"/first", L"/second", L"h|/first", L"https://h/first"},
                                       {L"", L"x/y", L"hx|/y", L"https://hx/y"}};
    std::wstring url;
    OnProgress();
    for (const auto& [contentLocation, location, sentTo, finalUrl] : cases)
    {
        AddAnswer({.status = 302,
                   .location = location,
                   .contentLocation = contentLocation,
                   .body = "moved"});
        AddAnswer({.body = "arrived"});
        url = target;
        EXPECT_EQ(Perform(url), "arrived");
        EXPECT_EQ(url, finalUrl);
        const auto last = GetSentRequests().back();
        EXPECT_EQ(last.verb, L"POST") << url;
        EXPECT_EQ(last.body, "x") << url;
        EXPECT_EQ(last.referrer, url);
        EXPECT_EQ(TakeOutcome(), std::wstring(L"0 0 h|/p?q=1 ") + sentTo);
        EXPECT_EQ(std::exchange(steps, {}), (Steps{1, 1, 0, 1, 1, 0, infinity, 100}));
    }
    for (const wchar_t* location : {L"https://other/x", L"/y"})
        AddAnswer({.status = 302, .location = location});
    url = target;
    Perform(url);
    EXPECT_EQ(TakeOutcome(), L"0 0 h|/p?q=1 other|/x other|/y");
    url = L"http://h/p";
    Perform(url);
    EXPECT_EQ(url, L"http://h/p") << "it stays unless a redirect is followed";
}

TEST_F(CommunicatorTest, AStopEndsAnEndlessChain)
{
    simulated::internet->server = [hop = 0]() mutable {
        return Answer{.delay = 100ms, .status = 302, .location = ++hop % 2 ? L"/b" : L"/a"};
    };
    OnProgress([this] {
        if (steps.size() == 1'000)
            stop.Request();
    });
    EXPECT_EQ(http.GetContent(L"https://h/a", 0), "");
    EXPECT_EQ(GetSentRequests().size(), 1'005u) << "half a second of hops";
    EXPECT_TRUE(TakeOutcome().ends_with(L"|/a <3 HTTPCOM: ERROR CheckConnection>"));
}

} // namespace
