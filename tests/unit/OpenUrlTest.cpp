#include "platform/Url.h"
#include "tests/simulated/Internet.h"
#include "tests/simulated/Simulated.h"

#include <gtest/gtest.h>

using namespace platform;

namespace {

TEST(Url, IsTakenApartAsSeenFromItsBase)
{
    const wchar_t* const cases[][2] = {
        {L"HTTP://Host", L"open Host 80 /"},
        {L"https://host:8080?q", L"secure host 8080 /?q"},
        {L"https://host\\a", L"secure host 443 /\\a"},
        {L"https://user:p@ss@h/", L"secure h 443 /"},
        {L"https://[::1]:7/x", L"secure [::1] 7 /x"},
        {L"https://host/a@b:c", L"secure host 443 /a@b:c"},
        {L"https://host:65535", L"secure host 65535 /"},
        {L"//other/y", L"secure other 443 /y"},
        {L"/y?z=http://u", L"secure host 8443 /y?z=http://u"},
        {L"y", L"secure host 8443 /dir/y"},
        {L"?r", L"secure host 8443 /dir/page?r"},
        {L"https://host:65536/", L"-"},
        {L"https://host:/", L"-"},
        {L"https://host:8x/", L"-"},
        {L"https://", L"-"},
        {L"https://user@/", L"-"},
        {L"https://[::1/", L"-"},
        {L"ftp://host/", L"-"},
        {L"", L"-"},
    };
    Url base;
    ASSERT_TRUE(CrackUrl(L"https://host:8443/dir/page?q=/x", base));
    for (const auto& [location, parts] : cases)
    {
        Url url;
        const std::wstring found = ResolveLocation(base, location, url)
                                       ? (url.secure ? L"secure " : L"open ") + url.host + L" " +
                                             std::to_wstring(url.port) + L" " + url.object
                                       : L"-";
        EXPECT_EQ(found, parts) << location;
    }
}

TEST(Url, OnlyWhatBreaksARequestLineIsEscaped)
{
    const std::pair<std::wstring, const wchar_t*> cases[] = {
        {L"/a?b={\"1\":[\"x\", \"y\"]}|%20^`<>", L"/a?b={\"1\":[\"x\",%20\"y\"]}|%20^`<>"},
        {L"/./a\\b?c=/../d/.e&f=1.0", L"/./a%5Cb?c=/%2E./d/%2Ee&f=1.0"},
        {std::wstring(L"a\r\nb\t#\0\x7f", 8), L"a%0D%0Ab%09%23%00%7F"},
        {L"\xE9\x20AC!", L"%C3%A9%E2%82%AC!"},
        {{L'x', wchar_t(0xD83D), wchar_t(0xDE00), L'y'}, L"x%F0%9F%98%80y"},
        {{wchar_t(0xD83D), L'y'}, L"%EF%BF%BDy"},
    };
    for (const auto& [object, escaped] : cases)
        EXPECT_EQ(EscapeObject(object), escaped);
}

// Where a session asked for the address, one after the other.
std::wstring Open(const std::wstring& url)
{
    CStopSignal stop;
    CInternetSession session(L"agent", 1, stop);
    session.SetOption(EInternetOption::ConnectTimeout, 5000);
    session.OpenURL(url, 1, internetSecure | internetTransferAscii, L"X: y\r\n");
    std::wstring asked;
    for (const auto& request : simulated::GetSentRequests())
    {
        EXPECT_EQ(request.verb + L" " + request.headers, L"GET X: y\r\n");
        EXPECT_NE(request.requestFlags & internetSecure, 0u);
        asked += request.host + L":" + std::to_wstring(request.port) + request.object + L" ";
    }
    return asked;
}

TEST(OpenUrl, RedirectsAreFollowedWithinBounds)
{
    const std::tuple<std::vector<simulated::Answer>, const wchar_t*, const wchar_t*> cases[] = {
        {{{.status = 301, .location = L"/2"},
          {.status = 302, .location = L"/3"},
          {.status = 303, .location = L"/4"},
          {.status = 307, .location = L"/5"},
          {.status = 308, .location = L"https://other/6"}},
         L"https://host/1",
         L"host:443/1 host:443/2 host:443/3 host:443/4 host:443/5 other:443/6 "},
        {{{.status = 301, .location = L"http://host/open"}}, L"https://host/", L"host:443/ "},
        {{{.status = 304, .location = L"/elsewhere"}}, L"https://host/x", L"host:443/x "},
        {{}, L"http://host/plain", L"host:443/plain "},
        {std::vector<simulated::Answer>(100, {.status = 302, .location = L"x"}), L"https://h/x",
         L"h:443/x h:443/x h:443/x h:443/x h:443/x h:443/x h:443/x h:443/x h:443/x h:443/x "
         L"h:443/x "},
    };
    for (const auto& [answers, url, asked] : cases)
    {
        simulated::Reset();
        for (const simulated::Answer& answer : answers)
            simulated::AddAnswer(answer);
        EXPECT_EQ(Open(url), asked);
        EXPECT_EQ(simulated::GetOpenInternetHandles(), 0);
    }
    EXPECT_THROW(Open(L"host"), CInternetException) << "no address";
}

} // namespace
