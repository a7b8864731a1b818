#include "tools/collector/Export.h"

#include "tools/collector/HitJson.h"
#include "tools/collector/HitLog.h"
#include "tools/collector/JsonText.h"
#include "tools/collector/QueryText.h"

namespace collector {

namespace {

std::string WriteJsonLine(const HitReport& report) { return WriteLine(report) + '\n'; }

// RFC 4180.
std::string QuoteForCsv(std::string_view text)
{
    std::string quoted = "\"";
    for (const char byte : text)
        quoted += byte == '"' ? std::string("\"\"") : std::string(1, byte);
    return quoted + '"';
}

std::string WriteCsvLine(const HitReport& report)
{
    std::string codes;
    for (const std::string_view code : ListCodes(report))
        codes.append(codes.empty() ? "" : " ").append(code);
    std::string line = std::to_string(report.id) + ',' + FormatUtc(report.time);
    for (const std::string_view text :
         {std::string_view(report.tracker), std::string_view(report.kind),
          std::string_view(report.product), std::string_view(report.visitor),
          std::string_view(report.session), std::string_view(report.sentence),
          GetName(GetSeverity(report)), std::string_view(codes),
          std::string_view(report.request.target), std::string_view(report.request.body)})
        line += ',' + QuoteForCsv(text);
    return line + "\r\n";
}

void AddPairs(CJsonObject& object, std::string_view name, const std::vector<Header>& pairs)
{
    std::string& json = object.Begin(name);
    AppendJsonArray(json, pairs, [&](const Header& pair) {
        CJsonObject entry(json);
        entry.Add("name", pair.name);
        entry.Add("value", pair.value);
    });
}

std::vector<Header> ListQuery(const std::string& target)
{
    std::vector<Header> list;
    const std::size_t mark = target.find('?');
    if (mark != std::string::npos)
        for (const Piece& piece : SplitQuery(std::string_view(target).substr(mark + 1)))
            list.push_back({std::string(piece.name), DecodeText(piece.value)});
    return list;
}

void AddHarRequest(CJsonObject& entry, const Hit& hit)
{
    CJsonObject request(entry.Begin("request"));
    request.Add("method", hit.method);
    request.Add("url", "https://" + FindHeader(hit, "Host") + hit.target);
    request.Add("httpVersion", hit.version);
    AddPairs(request, "cookies", {});
    AddPairs(request, "headers", hit.headers);
    AddPairs(request, "queryString", ListQuery(hit.target));
    if (!hit.body.empty())
    {
        CJsonObject data(request.Begin("postData"));
        data.Add("mimeType", FindHeader(hit, "Content-Type"));
        data.Add("text", hit.body);
    }
    request.Add("headersSize", -1);
    request.Add("bodySize", static_cast<long long>(hit.body.size()));
}

// HAR 1.2. Answers are not kept: they stand there as status 0.
std::string WriteHarEntry(const HitReport& report)
{
    std::string json;
    {
        CJsonObject entry(json);
        entry.Add("startedDateTime", FormatUtc(report.time));
        entry.Add("time", 0);
        AddHarRequest(entry, report.request);
        entry.Begin("response") +=
            R"({"status":0,"statusText":"","httpVersion":"HTTP/1.1","cookies":[],"headers":[],)"
            R"("content":{"size":0,"mimeType":""},"redirectURL":"","headersSize":-1,"bodySize":-1})";
        entry.Begin("cache") += "{}";
        entry.Begin("timings") += R"({"send":0,"wait":0,"receive":0})";
        entry.Add("connection", std::to_string(report.request.connection));
        entry.Add("comment", report.sentence);
    }
    return json;
}

constexpr ExportFormat formats[] = {
    {"jsonl", "application/x-ndjson", "", "", "", WriteJsonLine},
    {"csv", "text/csv; charset=utf-8",
     "id,time,tracker,kind,product,visitor,session,sentence,verdict,codes,target,body\r\n", "", "",
     WriteCsvLine},
    {"har", "application/json",
     R"({"log":{"version":"1.2","creator":{"name":"collector","version":"1"},"entries":[)", ",",
     "]}}\n", WriteHarEntry},
};

} // namespace

const ExportFormat* FindExportFormat(std::string_view name)
{
    for (const ExportFormat& format : formats)
        if (format.name == name)
            return &format;
    return nullptr;
}

} // namespace collector
