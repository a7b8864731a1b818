#include "net/CZoHTTPComunicator.h"
#include "platform/Url.h"
#include "tests/fuzz/FuzzInput.h"
#include "tests/simulated/Internet.h"
#include "tests/simulated/Simulated.h"
#include "trackers/classic/ClassicRequest.h"
#include "trackers/kpi/KpiRequest.h"
#include "trackers/ua/UaPayload.h"

#include <algorithm>
#include <array>

namespace fuzz {

namespace {

void CheckObject(std::wstring_view object)
{
    Require(object.starts_with(L'/'), "an object begins with a slash");
    const auto mayStand = [](wchar_t unit) { return unit > L' ' && unit < 0x7F && unit != L'#'; };
    Require(std::ranges::all_of(object, mayStand), "only what a request line may hold");
}

// Whatever an encoded text holds, it is one value of one key.
void CheckBuilders(const frame::TrackingHit& hit)
{
    const auto build = [](const frame::TrackingHit& one) {
        trackers::ClassicClient client;
        client.productName = one.field5;
        return std::array{trackers::BuildClassicRequest(client, {}, one),
                          trackers::BuildKpiRequest({}, {L"1", 1, L"P"}, one),
                          trackers::BuildHitPayload(L"", one.field5, one)};
    };
    frame::TrackingHit plain = hit;
    for (std::wstring* field : {&plain.field2, &plain.field3, &plain.field4, &plain.field5})
        std::ranges::fill(*field, L'x');
    const auto requests = build(hit);
    const auto due = build(plain);
    for (std::size_t i = 0; i < requests.size(); ++i)
        Require(std::ranges::count(requests[i], L'&') == std::ranges::count(due[i], L'&'), "keys");
    CheckObject(platform::EscapeObject(L"/" + requests[0]));
}

void CheckSent(std::size_t most)
{
    for (const auto& request : simulated::GetSentRequests())
    {
        Require((request.requestFlags & platform::internetSecure) != 0, "encrypted");
        Require(!request.host.empty() && request.port != 0, "a host");
        if (request.verb == L"GET")
            CheckObject(request.object);
        Require(std::ranges::count(request.headers, L'\n') <= 3, "headers");
    }
    Require(simulated::internet->sent.size() <= most, "an end");
    Require(simulated::GetOpenInternetHandles() == 0, "closed");
}

// The address, and where the answers' headers lead.
void CheckRoute(const std::wstring& address, FuzzInput& input, bool posts)
{
    simulated::Reset();
    std::size_t answers = 0;
    for (; !input.rest.empty() && answers < 20; ++answers)
    {
        simulated::Answer answer;
        answer.status = answers % 3 == 2 ? 307 : 302;
        answer.location = input.TakeUnits();
        if (answer.location.starts_with(L"="))
            answer.contentLocation = answer.location.substr(1);
        simulated::AddAnswer(answer);
    }
    const platform::CStopSignal stop;
    if (posts)
    {
        net::CZoHTTPComunicator client(stop);
        client.SetRequestHeaders(address, L"", address);
        client.PostContent(address, "body", -1, 0, false);
        client.CloseSession();
        return CheckSent(answers + 1);
    }
    try
    {
        platform::CInternetSession session(L"agent", 1, stop);
        session.OpenURL(address, 1, platform::internetSecure, L"User-Agent: a\r\n");
    }
    catch (const platform::CInternetException&)
    {}
    CheckSent(11);
}

} // namespace

// "h" and a type, value, category, label, action and page; "g" or "p" (GET, POST) and an address,
// then an answer's Location in each line.
void Check(FuzzInput input)
{
    const char what = static_cast<char>(input.TakeByte());
    if (what != 'h')
        return CheckRoute(input.TakeUnits(), input, what == 'p');
    frame::TrackingHit hit;
    hit.type = static_cast<frame::EHitType>(input.Take().size() % 7);
    for (std::wstring* field : {&hit.field1, &hit.field2, &hit.field3, &hit.field4, &hit.field5})
        *field = input.TakeUnits();
    CheckBuilders(hit);
}

} // namespace fuzz
