#include "platform/Url.h"
#include "tests/simulated/Internet.h"
#include "tests/simulated/Simulated.h"
#include "tests/simulated/VirtualTime.h"

#include <gtest/gtest.h>

using namespace platform;
using namespace std::chrono_literals;

namespace {

std::wstring Show(const Url& url)
{
    return (url.secure ? L"secure " : L"open ") + url.host + L" " + std::to_wstring(url.port) +
           L" " + url.object;
}

std::wstring Crack(std::wstring_view text)
{
    Url url;
    return CrackUrl(text, url) ? Show(url) : L"-";
}

TEST(Url, IsTakenApart)
{
    const struct
    {
        const wchar_t *text, *parts;
    } cases[] = {
        {L"https://host/a?b=c", L"secure host 443 /a?b=c"},
        {L"HTTP://Host", L"open Host 80 /"},
        {L"https://host:8443?q", L"secure host 8443 /?q"},
        {L"https://host\\a", L"secure host 443 /\\a"},
        {L"https://user:p@ss@host:1/", L"secure host 1 /"},
        {L"https://[::1]:7/x", L"secure [::1] 7 /x"},
        {L"https://host/a@b:c", L"secure host 443 /a@b:c"},
        {L"https://host:65535/", L"secure host 65535 /"},
        {L"https://host:65536/", L"-"},
        {L"https://host:/", L"-"},
        {L"https://host:8x/", L"-"},
        {L"https://", L"-"},
        {L"https://[::1/", L"-"},
        {L"ftp://host/", L"-"},
        {L"", L"-"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(Crack(c.text), c.parts) << testing::PrintToString(std::wstring(c.text));
}

TEST(Url, LocationsAreSeenFromTheirBase)
{
    Url base;
    ASSERT_TRUE(CrackUrl(L"https://host:8443/dir/page?q=/x", base));
    const struct
    {
        const wchar_t *location, *resolved;
    } cases[] = {
        {L"https://other/y", L"secure other 443 /y"},
        {L"http://other/y", L"open other 80 /y"},
        {L"//other/y", L"secure other 443 /y"},
        {L"/y?z=http://u", L"secure host 8443 /y?z=http://u"},
        {L"y", L"secure host 8443 /dir/y"},
        {L"?r", L"secure host 8443 /dir/page?r"},
        {L"javascript:x", L"-"},
        {L"", L"-"},
    };
    for (const auto& c : cases)
    {
        Url resolved;
        EXPECT_EQ(ResolveLocation(base, c.location, resolved) ? Show(resolved) : L"-", c.resolved)
            << testing::PrintToString(std::wstring(c.location));
    }
}

TEST(Url, OnlyWhatBreaksARequestLineIsEscaped)
{
    const struct
    {
        std::wstring object;
        const wchar_t* escaped;
    } cases[] = {
        {L"/a?b={\"1\":[\"x\", \"y\"]}|%20^`<>", L"/a?b={\"1\":[\"x\",%20\"y\"]}|%20^`<>"},
        {L"/./a\\b?c=/../d/.e&f=1.0", L"/./a%5Cb?c=/%2E./d/%2Ee&f=1.0"},
        {L"a\r\nb\t#", L"a%0D%0Ab%09%23"},
        {std::wstring(L"\0\x7f", 2), L"%00%7F"},
        {L"\xE9\x20AC!", L"%C3%A9%E2%82%AC!"},
        {{L'x', wchar_t(0xD83D), wchar_t(0xDE00), L'y'}, L"x%F0%9F%98%80y"},
        {{wchar_t(0xD83D), L'y'}, L"%EF%BF%BDy"},
        {L"", L""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(EscapeObject(c.object), c.escaped);
}

class OpenUrlTest : public testing::Test
{
protected:
    OpenUrlTest() { simulated::Reset(); }

    // Where the session asked for the address, one after the other.
    std::wstring Open(const std::wstring& url)
    {
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

    CStopSignal stop;
};

TEST_F(OpenUrlTest, RedirectsAreFollowedWithinBounds)
{
    const struct
    {
        std::vector<simulated::Answer> answers;
        const wchar_t *url, *asked;
    } cases[] = {
        {{{.status = 302, .location = L"/second"}, {.status = 307, .location = L"https://other/3"}},
         L"https://host/first",
         L"host:443/first host:443/second other:443/3 "},
        {{{.status = 301, .location = L"http://host/open"}}, L"https://host/", L"host:443/ "},
        {{{.status = 304, .location = L"/elsewhere"}}, L"https://host/x", L"host:443/x "},
        {{}, L"http://host/plain", L"host:443/plain "},
        {std::vector<simulated::Answer>(100, {.status = 302, .location = L"x"}), L"https://h/x",
         L"h:443/x h:443/x h:443/x h:443/x h:443/x h:443/x h:443/x h:443/x h:443/x h:443/x "
         L"h:443/x "},
    };
    for (const auto& c : cases)
    {
        simulated::ResetInternet();
        for (const simulated::Answer& answer : c.answers)
            simulated::AddAnswer(answer);
        EXPECT_EQ(Open(c.url), c.asked);
        EXPECT_EQ(simulated::GetOpenInternetHandles(), 0);
    }
}

TEST_F(OpenUrlTest, WhatIsNoAddressIsRefused) { EXPECT_THROW(Open(L"host"), CInternetException); }

} // namespace
