#include "tools/collector/Answer.h"

#include <algorithm>
#include <utility>

namespace collector {

namespace {

const char* GetReason(int status)
{
    static const struct
    {
        int status;
        const char* reason;
    } reasons[] = {
        {200, "OK"},
        {204, "No Content"},
        {301, "Moved Permanently"},
        {302, "Found"},
        {303, "See Other"},
        {307, "Temporary Redirect"},
        {308, "Permanent Redirect"},
        {400, "Bad Request"},
        {403, "Forbidden"},
        {404, "Not Found"},
        {413, "Content Too Large"},
        {431, "Request Header Fields Too Large"},
        {500, "Internal Server Error"},
        {503, "Service Unavailable"},
    };
    for (const auto& known : reasons)
        if (known.status == status)
            return known.reason;
    return "Status";
}

// Statuses that never have a body, nor a length (RFC 9110, 8.6).
bool IsWithoutBody(int status) { return status < 200 || status == 204 || status == 304; }

bool HasLength(const std::vector<Header>& headers)
{
    return std::any_of(headers.begin(), headers.end(), [](const Header& header) {
        return EqualsIgnoringCase(header.name, "Content-Length");
    });
}

std::string WriteAnswer(int status, const std::vector<Header>& headers, const std::string& body)
{
    std::string bytes = "HTTP/1.1 " + std::to_string(status) + ' ' + GetReason(status) + "\r\n";
    for (const Header& header : headers)
        bytes += header.name + ": " + header.value + "\r\n";
    return bytes + "\r\n" + body;
}

} // namespace

Answer MakeAnswer(int status, const std::string& body, std::vector<Header> headers)
{
    if (!HasLength(headers) && !IsWithoutBody(status))
        headers.push_back({"Content-Length", std::to_string(body.size())});
    return {.bytes = WriteAnswer(status, headers, body)};
}

Answer MakePixel()
{
    static const unsigned char pixel[] = {
        'G',  'I',  'F',  '8',  '9',  'a',  0x01, 0x00, 0x01, 0x00, 0x80, 0x00, 0x00, 0x00, 0x00,
        0x00, 0xff, 0xff, 0xff, 0x21, 0xf9, 0x04, 0x01, 0x00, 0x00, 0x00, 0x00, 0x2c, 0x00, 0x00,
        0x00, 0x00, 0x01, 0x00, 0x01, 0x00, 0x00, 0x02, 0x02, 0x44, 0x01, 0x00, 0x3b};
    return MakeAnswer(200, std::string(std::begin(pixel), std::end(pixel)),
                      {{"Content-Type", "image/gif"}, {"Cache-Control", "no-store"}});
}

Answer MakeRedirect(int status, const std::string& location)
{
    return MakeAnswer(status, {}, {{"Location", location}});
}

Answer MakeAnswerWithoutLength(int status, const std::string& body)
{
    return {.bytes = WriteAnswer(status, {{"Connection", "close"}}, body),
            .after = EAfterAnswer::Close};
}

Answer MakeCutAnswer(const std::string& body, std::size_t sent)
{
    Answer answer = MakeAnswer(200, body);
    answer.bytes.resize(answer.bytes.size() - body.size() + std::min(sent, body.size()));
    answer.after = EAfterAnswer::Cut;
    return answer;
}

Answer MakeNoAnswer() { return {.bytes = {}, .after = EAfterAnswer::Close}; }

Answer MakeStall() { return {.bytes = {}, .after = EAfterAnswer::Stall}; }

Answer Delayed(Answer answer, std::chrono::milliseconds delay)
{
    answer.delay = delay;
    return answer;
}

Answer Dripping(Answer answer, std::chrono::milliseconds bytePause)
{
    answer.bytePause = bytePause;
    return answer;
}

} // namespace collector
