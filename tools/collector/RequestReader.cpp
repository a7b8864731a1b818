#include "tools/collector/RequestReader.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace collector {

namespace {

std::string_view Trim(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

bool ParseNumber(std::string_view text, int base, std::size_t& number)
{
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number, base);
    return error == std::errc() && stop == end;
}

bool ParseRequestLine(const std::string& line, Hit& hit)
{
    const std::size_t first = line.find(' ');
    const std::size_t last = line.rfind(' ');
    if (first == std::string::npos || first == 0 || last <= first + 1)
        return false;
    hit.method = line.substr(0, first);
    hit.target = line.substr(first + 1, last - first - 1);
    hit.version = line.substr(last + 1);
    return hit.version.starts_with("HTTP/1.");
}

bool ParseHeader(const std::string& line, Hit& hit)
{
    const std::size_t colon = line.find(':');
    if (colon == std::string::npos || colon == 0 || line.front() == ' ' || line.front() == '\t')
        return false;
    hit.headers.push_back({line.substr(0, colon), std::string(Trim(line.substr(colon + 1)))});
    return true;
}

} // namespace

CRequestReader::CRequestReader(Source from, RequestLimits bounds, std::function<void()> beforeBody)
    : source(std::move(from)), limits(bounds), onContinue(std::move(beforeBody))
{}

ERead CRequestReader::Read(Hit& hit)
{
    const ERead head = ReadHead(hit);
    return head == ERead::Request ? ReadBody(hit) : head;
}

ERead CRequestReader::ReadHead(Hit& hit)
{
    std::size_t budget = limits.head;
    std::string line;
    do // empty lines before a request are skipped (RFC 9112, 2.2)
        if (const ERead read = ReadLine(line, budget); read != ERead::Request)
            return read;
    while (line.empty());
    if (!ParseRequestLine(line, hit))
        return ERead::Malformed;
    for (;;)
    {
        if (const ERead read = ReadLine(line, budget); read != ERead::Request)
            return read;
        if (line.empty())
            return ERead::Request;
        if (!ParseHeader(line, hit))
            return ERead::Malformed;
    }
}

ERead CRequestReader::ReadBody(Hit& hit)
{
    const bool chunked = EqualsIgnoringCase(FindHeader(hit, "Transfer-Encoding"), "chunked");
    const std::string length = FindHeader(hit, "Content-Length");
    std::size_t count = 0;
    if (!chunked && !length.empty() && !ParseNumber(length, 10, count))
        return ERead::Malformed;
    if (count > limits.body)
        return ERead::BodyTooLarge;
    if (EqualsIgnoringCase(FindHeader(hit, "Expect"), "100-continue"))
        onContinue();
    return chunked ? ReadChunks(hit.body) : ReadCounted(hit.body, count);
}

ERead CRequestReader::ReadCounted(std::string& body, std::size_t count)
{
    while (count > 0)
    {
        if (taken == buffer.size() && !Fill())
            return ERead::End;
        const std::size_t part = std::min(count, buffer.size() - taken);
        body.append(buffer, taken, part);
        taken += part;
        count -= part;
    }
    return ERead::Request;
}

ERead CRequestReader::ReadChunks(std::string& body)
{
    std::size_t budget = limits.head + limits.body; // bounds the chunks' own lines as well
    std::string line;
    for (;;)
    {
        if (const ERead read = ReadLine(line, budget); read != ERead::Request)
            return read;
        std::size_t count = 0;
        if (!ParseNumber(Trim(line.substr(0, line.find(';'))), 16, count))
            return ERead::Malformed;
        if (count > limits.body - body.size())
            return ERead::BodyTooLarge;
        if (count == 0)
            break;
        if (const ERead read = ReadCounted(body, count); read != ERead::Request)
            return read;
        if (const ERead read = ReadLine(line, budget); read != ERead::Request)
            return read;
        if (!line.empty())
            return ERead::Malformed;
    }
    do // trailers are not kept
        if (const ERead read = ReadLine(line, budget); read != ERead::Request)
            return read;
    while (!line.empty());
    return ERead::Request;
}

ERead CRequestReader::ReadLine(std::string& line, std::size_t& budget)
{
    line.clear();
    for (;;)
    {
        const std::size_t end = buffer.find('\n', taken);
        const std::size_t part = std::min(end, buffer.size()) - taken;
        if (part >= budget)
            return ERead::HeadTooLarge;
        line.append(buffer, taken, part);
        budget -= part;
        taken += part;
        if (end != std::string::npos)
            break;
        if (!Fill())
            return ERead::End;
    }
    ++taken;
    --budget;
    if (line.ends_with('\r'))
        line.pop_back();
    return ERead::Request;
}

bool CRequestReader::Fill()
{
    buffer.resize(16 * 1024);
    taken = 0;
    buffer.resize(source(buffer.data(), buffer.size()));
    return !buffer.empty();
}

} // namespace collector
