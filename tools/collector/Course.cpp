#include "tools/collector/Course.h"

#include "tools/collector/Decode.h"

#include <charconv>

namespace collector {

namespace {

constexpr std::size_t mostVisitors = 1'000'000;
constexpr std::size_t mostEvents = 1000;              // of one visitor
constexpr std::int64_t visitSilence = 30 * 60 * 1000; // milliseconds, as servers have it

std::int64_t ReadNumber(std::string_view text)
{
    std::int64_t number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

void Find(HitReport& report, ESeverity severity, std::string_view code, const char* parameter,
          std::string explanation)
{
    report.verdicts.push_back({severity, std::string(code), parameter, std::move(explanation)});
}

std::string WriteOrdinal(unsigned number)
{
    constexpr const char* words[] = {"second", "third", "fourth", "fifth"};
    if (number >= 2 && number <= 5)
        return words[number - 2];
    const unsigned teens = number % 100;
    const unsigned last = teens >= 11 && teens <= 13 ? 0 : number % 10;
    return std::to_string(number) + (last == 1 ? "st" : last == 2 ? "nd" : last == 3 ? "rd" : "th");
}

} // namespace

void CCourse::Follow(HitReport& report)
{
    if (report.visitor.empty())
        return;
    if (visitors.size() >= mostVisitors)
        Clear();
    const auto [found, isNew] = visitors.try_emplace(report.tracker + ' ' + report.visitor);
    Visitor& visitor = found->second;
    const std::size_t request = std::hash<std::string>()(report.request.target) ^
                                std::hash<std::string>()(report.request.body) * 31;
    const bool twice = !isNew && request == visitor.request;
    visitor.request = request;
    if (twice)
        Find(report, ESeverity::Warning, "twice", "",
             "The same request has come before: a second attempt of a hit that had arrived.");
    if (report.tracker == "classic")
        CheckSession(report, visitor, isNew || twice);
    else
        CountSession(report, visitor, isNew);
    visitor.time = report.time;
    report.session = std::to_string(visitor.session);
    CheckIdentity(report);
    CheckItem(report, visitor);
    CountEvent(report, visitor);
    DropKnownNotes(report, visitor);
}

void CCourse::Clear()
{
    visitors.clear();
    current.clear();
}

void CCourse::CheckSession(HitReport& report, Visitor& visitor, bool isNew)
{
    const std::int64_t session = ReadNumber(GetValue(report.parameters, "session count"));
    const std::int64_t hit = ReadNumber(GetValue(report.parameters, "session hit"));
    const std::string_view visit = GetValue(report.parameters, "current visit");
    // A session start that was taken back comes again under the same number.
    const bool sameSession = session == visitor.session && visit == visitor.currentVisit;
    if (!isNew && session < visitor.session)
        Find(report, ESeverity::Error, "session-backwards", "utmcc",
             "session " + std::to_string(session) + " follows session " +
                 std::to_string(visitor.session));
    else if (!isNew && session > visitor.session + 1)
        Find(report, ESeverity::Warning, "session-jump", "utmcc",
             "session " + std::to_string(session) + " follows session " +
                 std::to_string(visitor.session) + ": what lies between has not arrived");
    const std::int64_t due = sameSession ? visitor.sessionHit + 1 : 1;
    if (!isNew && hit < due)
        Find(report, ESeverity::Error, "counter-backwards", "utms",
             "utms is " + std::to_string(hit) + " where " + std::to_string(due) + " is due");
    else if (!isNew && hit > due)
        Find(report, ESeverity::Warning, "counter-jump", "utms",
             "utms is " + std::to_string(hit) + " where " + std::to_string(due) +
                 " is due: what lies between has not arrived");
    visitor.session = session;
    visitor.sessionHit = hit;
    visitor.currentVisit = visit;
}

void CCourse::CountSession(HitReport& report, Visitor& visitor, bool isNew)
{
    if (isNew || report.time - visitor.time > visitSilence ||
        GetValue(report.parameters, "session") == "start")
        ++visitor.session;
}

void CCourse::CheckIdentity(HitReport& report)
{
    if (report.request.connection == 0) // a log of many clients
        return;
    if (current.size() >= mostVisitors) // products come off the wire, too
        current.clear();
    std::string& latest = current[report.tracker + ' ' + report.product];
    if (!latest.empty() && latest != report.visitor)
        Find(report, ESeverity::Warning, "visitor-changed", "",
             "The hit before this one of the same product came from visitor " + latest + '.');
    latest = report.visitor;
}

void CCourse::CheckItem(HitReport& report, Visitor& visitor)
{
    const std::string_view order = GetValue(report.parameters, "order id");
    // The classic item of an order that had no number of its own has none.
    if (report.kind == "item" && (!visitor.selling || (order != visitor.order && !order.empty())))
        Find(report, ESeverity::Error, "lone-item", "", "The item has no transaction before it.");
    visitor.selling = report.kind == "transaction" || (report.kind == "item" && visitor.selling);
    if (report.kind == "transaction")
        visitor.order = order;
}

void CCourse::CountEvent(HitReport& report, Visitor& visitor)
{
    if (report.kind != "event")
        return;
    std::string event;
    for (const char* part : {"event category", "event action", "event label", "page"})
        event.append(GetValue(report.parameters, part)).append("\n");
    if (visitor.events.size() >= mostEvents)
        visitor.events.clear();
    const unsigned times = ++visitor.events[std::hash<std::string>()(event)];
    if (times > 1)
        report.sentence += ", " + WriteOrdinal(times) + " time";
}

void CCourse::DropKnownNotes(HitReport& report, Visitor& visitor)
{
    std::erase_if(report.verdicts, [&](const Verdict& verdict) {
        if (verdict.severity != ESeverity::Note)
            return false;
        const std::string code = verdict.code + ' ';
        if (visitor.notes.find(code) != std::string::npos)
            return true;
        visitor.notes += code;
        return false;
    });
}

} // namespace collector
