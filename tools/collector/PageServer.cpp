#include "tools/collector/PageServer.h"

#include "tools/collector/Export.h"
#include "tools/collector/HitJson.h"
#include "tools/collector/JsonText.h"
#include "tools/collector/PageFiles.h"

#include <algorithm>
#include <charconv>
#include <httplib.h>
#include <stdexcept>
#include <thread>

namespace collector {

namespace {

constexpr const char* json = "application/json";
constexpr std::size_t threads = 64; // waiting requests and open pages hold one each
constexpr std::size_t page = 1000;  // hits read from the store at once

using httplib::DataSink;
using httplib::Request;
using httplib::Response;

std::uint64_t ReadNumber(const Request& request, const char* name, std::uint64_t otherwise,
                         std::uint64_t most)
{
    if (!request.has_param(name))
        return otherwise;
    const std::string text = request.get_param_value(name);
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size())
        throw std::invalid_argument(std::string(name) + ": \"" + text + "\" is no number");
    return std::min(number, most);
}

HitFilter ReadFilter(const Request& request)
{
    HitFilter filter;
    filter.after = ReadNumber(request, "after", 0, INT64_MAX);
    filter.limit = ReadNumber(request, "limit", page, 100'000);
    const std::pair<const char*, std::string*> texts[] = {
        {"tracker", &filter.tracker}, {"kind", &filter.kind},       {"product", &filter.product},
        {"visitor", &filter.visitor}, {"verdict", &filter.verdict}, {"text", &filter.text}};
    for (const auto& [name, text] : texts)
        *text = request.get_param_value(name);
    return filter;
}

void Refuse(Response& response, int status, const std::string& reason)
{
    std::string body = "{\"error\":";
    AppendJsonText(body, reason);
    response.status = status;
    response.set_content(body + '}', json);
}

std::string WriteNumbers(const std::map<std::string, std::size_t>& numbers)
{
    std::string text = "{";
    for (const auto& [name, count] : numbers)
    {
        if (text.size() > 1)
            text += ',';
        AppendJsonText(text, name); // a product's may hold anything
        text += ':' + std::to_string(count);
    }
    return text + '}';
}

std::string WriteSummaryOf(const HitCounts& counts)
{
    std::string text;
    {
        CJsonObject object(text);
        object.Add("hits", static_cast<long long>(counts.hits));
        object.Begin("verdicts") += WriteNumbers(counts.verdicts);
        object.Begin("codes") += WriteNumbers(counts.codes);
        object.Begin("trackers") += WriteNumbers(counts.trackers);
        object.Begin("kinds") += WriteNumbers(counts.kinds);
        object.Begin("products") += WriteNumbers(counts.products);
    }
    return text;
}

using Visitor = std::vector<VisitorSession>; // all of one visitor

std::string WriteVisitors(const std::vector<VisitorSession>& sessions)
{
    std::vector<Visitor> visitors;
    std::map<std::pair<std::string, std::string>, std::size_t> places;
    for (const VisitorSession& session : sessions)
    {
        const auto [found, isNew] =
            places.try_emplace({session.tracker, session.visitor}, visitors.size());
        if (isNew)
            visitors.emplace_back();
        visitors[found->second].push_back(session);
    }
    std::string text = "{\"visitors\":";
    AppendJsonArray(text, visitors, [&](const Visitor& visitor) {
        std::size_t hits = 0;
        for (const VisitorSession& session : visitor)
            hits += session.hits;
        CJsonObject object(text);
        object.Add("tracker", visitor.front().tracker);
        object.Add("visitor", visitor.front().visitor);
        object.Add("product", visitor.back().product);
        object.Add("hits", static_cast<long long>(hits));
        AppendJsonArray(object.Begin("sessions"), visitor, [&](const VisitorSession& session) {
            CJsonObject entry(text);
            entry.Add("session", session.session);
            entry.Add("first", session.first);
            entry.Add("last", session.last);
            entry.Add("hits", static_cast<long long>(session.hits));
            entry.Add("invalid", static_cast<long long>(session.invalid));
        });
    });
    return text + '}';
}

std::string GetMediaType(std::string_view name)
{
    constexpr std::pair<std::string_view, const char*> types[] = {
        {".html", "text/html; charset=utf-8"},
        {".css", "text/css; charset=utf-8"},
        {".js", "text/javascript; charset=utf-8"},
        {".svg", "image/svg+xml"},
        {".png", "image/png"}};
    for (const auto& [ending, type] : types)
        if (name.ends_with(ending))
            return type;
    return "application/octet-stream";
}

} // namespace

class CPageServer::CImplementation
{
public:
    CImplementation(CHitStore& from, std::function<std::size_t()> forget, int wanted)
        : store(from), reset(std::move(forget))
    {
        server.new_task_queue = [] { return new httplib::ThreadPool(threads); };
        server.set_keep_alive_timeout(1); // seconds; the program's end waits for them
        server.set_default_headers({{"Content-Security-Policy", "default-src 'self'"},
                                    {"X-Content-Type-Options", "nosniff"},
                                    {"Cache-Control", "no-store"}});
        server.set_pre_routing_handler([this](const Request& request, Response& response) {
            // The library would compress, at seconds a megabyte, what never leaves the machine.
            const_cast<Request&>(request).headers.erase("Accept-Encoding");
            return Admit(request, response);
        });
        server.set_exception_handler(
            [](const Request&, Response& response, const std::exception_ptr& problem) {
                Explain(response, problem);
            });
        server.set_socket_options([](socket_t socket) {
            const int yes = 1; // the library's default lets two programs share one port
            ::setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
        });
        AddRoutes();
        port = wanted == 0 ? server.bind_to_any_port("127.0.0.1")
                           : (server.bind_to_port("127.0.0.1", wanted) ? wanted : -1);
        if (port <= 0)
            throw std::runtime_error("the page's port " + std::to_string(wanted) +
                                     " cannot be had; choose another");
        listener = std::thread([this] { server.listen_after_bind(); });
        while (!server.is_running())
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }

    ~CImplementation()
    {
        stopping = true;
        store.Close();
        server.stop();
        listener.join();
    }

    int GetPort() const { return port; }

private:
    using Handler = void (CImplementation::*)(const Request&, Response&);

    // A page of another site may have its name resolved to this machine: only our own names count.
    httplib::Server::HandlerResponse Admit(const Request& request, Response& response) const
    {
        const std::string end = ':' + std::to_string(port);
        const std::string host = request.get_header_value("Host");
        const std::string origin = request.get_header_value("Origin");
        if ((host == "127.0.0.1" + end || host == "localhost" + end) &&
            (origin.empty() || origin == "http://" + host))
            return Reset(request, response);
        Refuse(response, 403, "only requests to this machine's own address are answered");
        return httplib::Server::HandlerResponse::Handled;
    }

    // Here and not among the routes, because those wait for a body, which some clients do not
    // announce.
    httplib::Server::HandlerResponse Reset(const Request& request, Response& response) const
    {
        if (request.method != "POST" || request.path != "/api/reset")
            return httplib::Server::HandlerResponse::Unhandled;
        response.set_content("{\"forgotten\":" + std::to_string(reset()) + '}', json);
        return httplib::Server::HandlerResponse::Handled;
    }

    static void Explain(Response& response, const std::exception_ptr& problem)
    {
        try
        {
            std::rethrow_exception(problem);
        }
        catch (const std::invalid_argument& mistake)
        {
            Refuse(response, 400, mistake.what());
        }
        catch (const std::exception& failure)
        {
            Refuse(response, 500, failure.what());
        }
    }

    void AddRoutes()
    {
        const std::pair<const char*, Handler> routes[] = {
            {"/api/hits", &CImplementation::ListHits},
            {R"(/api/hits/(\d{1,18}))", &CImplementation::ShowHit},
            {"/api/events", &CImplementation::StreamEvents},
            {"/api/summary", &CImplementation::Sum},
            {"/api/visitors", &CImplementation::ListVisitors},
            {"/api/wait", &CImplementation::Wait},
            {"/api/export", &CImplementation::Export}};
        for (const auto& [path, handler] : routes)
            server.Get(path, [this, handler = handler](const Request& request, Response& response) {
                (this->*handler)(request, response);
            });
        for (const PageFile& file : GetPageFiles())
            server.Get("/page/" + std::string(file.name),
                       [file](const Request&, Response& response) { ShowFile(file, response); });
        server.Get("/", [](const Request&, Response& response) {
            for (const PageFile& file : GetPageFiles())
                if (file.name == "index.html")
                    ShowFile(file, response);
        });
    }

    static void ShowFile(const PageFile& file, Response& response)
    {
        response.set_content(file.content.data(), file.content.size(), GetMediaType(file.name));
    }

    void ListHits(const Request& request, Response& response)
    {
        HitFilter filter = ReadFilter(request);
        const std::size_t limit = filter.limit++;
        std::vector<HitReport> found = store.Find(filter, EDetail::Summary);
        const bool more = found.size() > limit;
        found.resize(std::min(found.size(), limit));
        std::string text = "{\"hits\":";
        AppendJsonArray(text, found, [&](const HitReport& hit) { text += WriteSummary(hit); });
        response.set_content(text + ",\"more\":" + (more ? "true}" : "false}"), json);
    }

    void ShowHit(const Request& request, Response& response)
    {
        const std::uint64_t id = std::stoull(request.matches[1].str());
        if (const std::optional<HitReport> hit = store.Get(id))
            response.set_content(WriteWhole(*hit, store.GetPrevious(id)), json);
        else
            Refuse(response, 404, "there is no hit " + std::to_string(id));
    }

    void Sum(const Request&, Response& response)
    {
        response.set_content(WriteSummaryOf(store.Count()), json);
    }

    void ListVisitors(const Request&, Response& response)
    {
        response.set_content(WriteVisitors(store.GetSessions()), json);
    }

    void Wait(const Request& request, Response& response)
    {
        const std::uint64_t count = ReadNumber(request, "count", 1, UINT64_MAX);
        const std::chrono::milliseconds timeout(ReadNumber(request, "timeout", 10'000, 600'000));
        const bool arrived = store.WaitFor(
            [count](const CHitStore::State& state) { return state.collected >= count; }, timeout);
        response.set_content(std::string("{\"arrived\":") + (arrived ? "true" : "false") +
                                 ",\"hits\":" + std::to_string(store.GetState().collected) + '}',
                             json);
    }

    // Calls `write` until it returns false, is done or fails, or the server ends.
    template <class Write>
    void Stream(Response& response, const char* type, Write write)
    {
        response.set_chunked_content_provider(
            type, [this, write = std::move(write)](std::size_t, DataSink& sink) mutable {
                try
                {
                    return write(sink) && !stopping;
                }
                catch (const std::exception&)
                {
                    return false; // the head is gone already: the client sees the answer break off
                }
            });
    }

    void StreamEvents(const Request& request, Response& response)
    {
        const CHitStore::State now = store.GetState();
        std::uint64_t after = ReadNumber(request, "after", now.lastId, INT64_MAX);
        // A client that comes back sends the address of its first request once more.
        const std::string resumed = request.get_header_value("Last-Event-ID");
        if (!resumed.empty())
            std::from_chars(resumed.data(), resumed.data() + resumed.size(), after);
        Stream(response, "text/event-stream",
               [this, after, resets = now.resets](DataSink& sink) mutable {
                   const bool news = store.WaitFor(
                       [&](const CHitStore::State& state) {
                           return state.lastId > after || state.resets > resets;
                       },
                       std::chrono::seconds(15));
                   const std::string text = news ? WriteNews(after, resets) : ": still here\n\n";
                   return sink.write(text.data(), text.size());
               });
    }

    std::string WriteNews(std::uint64_t& after, std::size_t& resets)
    {
        const CHitStore::State state = store.GetState();
        if (state.resets > resets)
        {
            resets = state.resets;
            return "event: reset\ndata: {}\n\n";
        }
        HitFilter filter;
        filter.after = after;
        filter.limit = page;
        std::string text;
        const std::vector<HitReport> found = store.Find(filter, EDetail::Summary);
        for (const HitReport& hit : found)
            text += "event: hit\nid: " + std::to_string(hit.id) + "\ndata: " + WriteSummary(hit) +
                    "\n\n";
        after = found.empty() ? state.lastId : found.back().id;
        return text;
    }

    void Export(const Request& request, Response& response)
    {
        const std::string name = request.get_param_value("format");
        const ExportFormat* format = FindExportFormat(name.empty() ? "jsonl" : name);
        if (!format)
            throw std::invalid_argument("format: there are jsonl, csv and har");
        HitFilter filter = ReadFilter(request);
        filter.limit = page;
        response.set_header("Content-Disposition",
                            "attachment; filename=\"hits." + std::string(format->name) + '"');
        Stream(response, format->mediaType,
               [this, format, filter, started = false](DataSink& sink) mutable {
                   std::string text{started ? std::string_view() : format->head};
                   const std::vector<HitReport> found = store.Find(filter, EDetail::Whole);
                   for (const HitReport& hit : found)
                   {
                       text += started ? format->separator : std::string_view();
                       text += format->write(hit);
                       started = true;
                   }
                   if (found.empty())
                       text += format->tail;
                   else
                       filter.after = found.back().id;
                   started = true;
                   const bool written = text.empty() || sink.write(text.data(), text.size());
                   if (found.empty())
                       sink.done();
                   return written;
               });
    }

    CHitStore& store;
    std::function<std::size_t()> reset;
    std::atomic<bool> stopping = false;
    httplib::Server server;
    int port = 0;
    std::thread listener;
};

CPageServer::CPageServer(CHitStore& from, std::function<std::size_t()> reset, int port)
    : implementation(std::make_unique<CImplementation>(from, std::move(reset), port))
{}

CPageServer::~CPageServer() = default;

int CPageServer::GetPort() const { return implementation->GetPort(); }

} // namespace collector
