#include "tools/collector/Faults.h"

#include "tools/collector/Options.h"

#include <stdexcept>

namespace collector {

namespace {

using std::chrono::milliseconds;

struct FaultKind
{
    const char* name;
    const char* argument; // what the argument means; null: takes none
    const char* effect;
    void (*order)(CCollector&, const std::string& argument);
};

template <EConnectionFault fault>
void OrderForConnections(CCollector& collector, const std::string&)
{
    collector.Order(fault, CCollector::always);
}

void OrderForRequests(CCollector& collector, const Answer& answer)
{
    collector.Order(answer, CCollector::always);
}

std::string MakeBody(const std::string& text, int least, int most, std::size_t unit)
{
    return std::string(static_cast<std::size_t>(ParseNumber(text, least, most)) * unit, 'x');
}

constexpr FaultKind faults[] = {
    {"close-before-tls", nullptr, "close each connection before TLS",
     OrderForConnections<EConnectionFault::CloseBeforeTls>},
    {"stall-tls", nullptr, "never answer the TLS greeting",
     OrderForConnections<EConnectionFault::StallHandshake>},
    {"unknown-certificate", nullptr, "serve a certificate of an authority nobody trusts",
     OrderForConnections<EConnectionFault::UnknownCertificate>},
    {"wrong-host", nullptr, "serve a certificate for another host",
     OrderForConnections<EConnectionFault::WrongHostCertificate>},
    {"expired-certificate", nullptr, "serve a certificate that expired yesterday",
     OrderForConnections<EConnectionFault::ExpiredCertificate>},
    {"no-answer", nullptr, "read each request and close",
     [](CCollector& collector, const std::string&) {
         OrderForRequests(collector, MakeNoAnswer());
     }},
    {"stall", nullptr, "read each request and stay silent",
     [](CCollector& collector, const std::string&) { OrderForRequests(collector, MakeStall()); }},
    {"wait", "MILLISECONDS", "wait before each answer",
     [](CCollector& collector, const std::string& argument) {
         const milliseconds delay(ParseNumber(argument, 0, 3600000));
         OrderForRequests(collector, Delayed(MakePixel(), delay));
     }},
    {"drip", "MILLISECONDS", "send each answer byte by byte with that pause",
     [](CCollector& collector, const std::string& argument) {
         const milliseconds pause(ParseNumber(argument, 1, 3600000));
         OrderForRequests(collector, Dripping(MakePixel(), pause));
     }},
    {"status", "CODE", "answer with that status",
     [](CCollector& collector, const std::string& argument) {
         OrderForRequests(collector, MakeAnswer(ParseNumber(argument, 200, 599)));
     }},
    {"redirect", "URL", "redirect each request there",
     [](CCollector& collector, const std::string& argument) {
         OrderForRequests(collector, MakeRedirect(302, argument));
     }},
    {"no-length", "BYTES", "send a body of that size without declaring its length",
     [](CCollector& collector, const std::string& argument) {
         OrderForRequests(collector,
                          MakeAnswerWithoutLength(200, MakeBody(argument, 0, 100000000, 1)));
     }},
    {"length", "NUMBER", "declare that length for a body of 10 bytes",
     [](CCollector& collector, const std::string& argument) {
         Answer answer = MakeAnswer(200, "0123456789", {{"Content-Length", argument}});
         answer.after = EAfterAnswer::Close;
         OrderForRequests(collector, answer);
     }},
    {"cut", "BYTES", "declare 1000 bytes more than these and cut the connection",
     [](CCollector& collector, const std::string& argument) {
         const std::string body = MakeBody(argument, 0, 100000000, 1);
         OrderForRequests(collector, MakeCutAnswer(body + std::string(1000, 'x'), body.size()));
     }},
    {"big", "MEGABYTES", "send a body of that size",
     [](CCollector& collector, const std::string& argument) {
         OrderForRequests(collector, MakeAnswer(200, MakeBody(argument, 1, 1000, 1024 * 1024)));
     }},
};

} // namespace

void OrderFault(CCollector& collector, const std::string& description)
{
    const std::size_t colon = description.find(':');
    const std::string name = description.substr(0, colon);
    const std::string argument =
        colon == std::string::npos ? std::string() : description.substr(colon + 1);
    for (const FaultKind& fault : faults)
    {
        if (name != fault.name)
            continue;
        if (argument.empty() != (fault.argument == nullptr))
            throw std::invalid_argument(
                "the fault " + name + " takes " +
                (fault.argument ? std::string("an argument: ") + name + ':' + fault.argument
                                : std::string("no argument")));
        return fault.order(collector, argument);
    }
    throw std::invalid_argument("no such fault: " + name + "; the faults are\n" + ListFaults());
}

std::string ListFaults()
{
    std::string text;
    for (const FaultKind& fault : faults)
    {
        std::string name = fault.name;
        if (fault.argument)
            name.append(":").append(fault.argument);
        name.resize(22, ' ');
        text.append("  ").append(name).append(fault.effect).append("\n");
    }
    return text;
}

} // namespace collector
