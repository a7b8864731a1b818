#include "env/Text.h"
#include "net/CZoHTTPComunicator.h"
#include "net/HttpAddress.h"
#include "platform/Url.h"
#include "tests/fuzz/FuzzInput.h"
#include "tests/simulated/Internet.h"
#include "tests/simulated/Simulated.h"
#include "trackers/classic/ClassicRequest.h"
#include "trackers/kpi/KpiRequest.h"
#include "trackers/ua/UaPayload.h"

#include <algorithm>

using fuzz::Require;

namespace {

void CheckObject(std::wstring_view object)
{
    Require(object.starts_with(L'/'), "an object begins with a slash");
    Require(std::all_of(object.begin(), object.end(),
                        [](wchar_t unit) { return unit > L' ' && unit < 0x7F && unit != L'#'; }),
            "an object has only what a request line may hold");
}

std::ptrdiff_t CountKeys(std::wstring_view text)
{
    return std::count(text.begin(), text.end(), L'&');
}

// Whatever an encoded text holds, it is one value of one key.
void CheckBuilders(const frame::TrackingHit& hit)
{
    trackers::ClassicClient client;
    client.productName = hit.field5;
    const trackers::KpiMoment moment{L"1", 1, L"P"};
    frame::TrackingHit plain = hit;
    for (std::wstring* field : {&plain.field2, &plain.field3, &plain.field4, &plain.field5})
        std::fill(field->begin(), field->end(), L'x');
    const auto check = [&](auto build) {
        Require(CountKeys(build(hit)) == CountKeys(build(plain)), "keys");
    };
    check([&](const auto& one) { return trackers::BuildClassicRequest(client, {}, one); });
    check([&](const auto& one) { return trackers::BuildKpiRequest({}, moment, one); });
    check([&](const auto& one) { return trackers::BuildHitPayload(L"", one.field5, one); });
    const std::wstring request = trackers::BuildClassicRequest(client, {}, hit);
    CheckObject(platform::EscapeObject(L"/" + request));
    const std::string bytes = env::Utf16ToUtf8(trackers::BuildHitPayload(L"", hit.field5, hit));
    Require(env::Utf16ToUtf8(env::Utf8ToUtf16(bytes)) == bytes, "payload");
}

void CheckSent(std::size_t most)
{
    for (const auto& request : simulated::GetSentRequests())
    {
        Require((request.requestFlags & platform::internetSecure) != 0, "encrypted");
        Require(!request.host.empty() && request.port != 0, "a host");
        if (request.verb == L"GET")
            CheckObject(request.object);
        const std::wstring& headers = request.headers;
        Require(std::count(headers.begin(), headers.end(), L'\n') <= 3, "headers");
    }
    Require(simulated::internet->sent.size() <= most, "an end");
    Require(simulated::GetOpenInternetHandles() == 0, "closed");
}

// The address, and where the answers' headers lead.
void CheckRoute(const std::wstring& address, fuzz::CFuzzInput& input, bool posts)
{
    simulated::Reset();
    std::size_t answers = 0;
    for (; !input.IsEmpty() && answers < 20; ++answers)
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
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0 || size > 2000)
        return 0;
    fuzz::CFuzzInput input(data + 1, size - 1);
    if (data[0] != 'h')
    {
        const std::wstring address = input.TakeUnits();
        CheckRoute(address, input, data[0] == 'p');
        return 0;
    }
    frame::TrackingHit hit;
    hit.type = static_cast<frame::EHitType>(input.Take().size() % 7);
    for (std::wstring* field : {&hit.field1, &hit.field2, &hit.field3, &hit.field4, &hit.field5})
        *field = input.TakeUnits();
    CheckBuilders(hit);
    return 0;
}
