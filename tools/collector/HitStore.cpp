#include "tools/collector/HitStore.h"

#include "tools/collector/Decode.h"

#include <sqlite3.h>
#include <stdexcept>

namespace collector {

namespace {

constexpr const char* schema = R"(
CREATE TABLE hits (
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    time INTEGER NOT NULL,
    tracker TEXT NOT NULL,
    endpoint TEXT NOT NULL,
    kind TEXT NOT NULL,
    product TEXT NOT NULL,
    visitor TEXT NOT NULL,
    session TEXT NOT NULL,
    sentence TEXT NOT NULL,
    verdict TEXT NOT NULL,
    connection INTEGER NOT NULL
);
CREATE TABLE requests (
    hit INTEGER PRIMARY KEY REFERENCES hits (id),
    method TEXT NOT NULL,
    target TEXT NOT NULL,
    version TEXT NOT NULL,
    headers TEXT NOT NULL,
    body TEXT NOT NULL,
    fields TEXT NOT NULL
);
CREATE TABLE verdicts (
    hit INTEGER NOT NULL REFERENCES hits (id),
    severity TEXT NOT NULL,
    code TEXT NOT NULL,
    parameter TEXT NOT NULL,
    explanation TEXT NOT NULL
);
CREATE INDEX verdicts_of_hit ON verdicts (hit);
CREATE VIEW fields AS
    SELECT requests.hit AS hit, json_each.key AS meaning, json_each.value AS value
    FROM requests, json_each(requests.fields);
PRAGMA user_version = 1;
)";

constexpr const char* summaryColumns =
    "id, time, tracker, endpoint, kind, product, visitor, session, sentence, connection";
constexpr const char* requestColumns = ", method, target, version, headers, body";

[[noreturn]] void Fail(sqlite3* database)
{
    throw std::runtime_error(std::string("the database fails: ") +
                             (database ? sqlite3_errmsg(database) : "out of memory"));
}

ESeverity ReadSeverity(std::string_view name)
{
    for (const ESeverity severity : {ESeverity::Note, ESeverity::Warning, ESeverity::Error})
        if (name == GetName(severity))
            return severity;
    return ESeverity::Valid;
}

// The text as a pattern of LIKE that finds it anywhere, with "\" as the escape.
std::string MakePattern(std::string_view text)
{
    std::string pattern = "%";
    for (const char unit : text)
    {
        if (unit == '%' || unit == '_' || unit == '\\')
            pattern += '\\';
        pattern += unit;
    }
    return pattern + '%';
}

struct Condition
{
    std::string sql;
    std::vector<std::string> values;

    void Add(const char* test, const std::string& value, std::size_t times = 1)
    {
        if (value.empty())
            return;
        sql.append(" AND ").append(test);
        values.insert(values.end(), times, value);
    }
};

Condition MakeCondition(const HitFilter& filter)
{
    Condition condition;
    condition.Add("tracker = ?", filter.tracker);
    condition.Add("kind = ?", filter.kind);
    condition.Add("product = ?", filter.product);
    condition.Add("visitor = ?", filter.visitor);
    if (filter.verdict == "invalid")
        condition.sql += " AND verdict IN ('warning', 'error')";
    else if (filter.verdict == "valid" || ReadSeverity(filter.verdict) != ESeverity::Valid)
        condition.Add("verdict = ?", filter.verdict);
    else
        condition.Add("id IN (SELECT hit FROM verdicts WHERE code = ?)", filter.verdict);
    if (!filter.text.empty())
        condition.Add("(sentence LIKE ? ESCAPE '\\' OR target LIKE ? ESCAPE '\\' OR "
                      "body LIKE ? ESCAPE '\\')",
                      MakePattern(filter.text), 3);
    return condition;
}

} // namespace

// A prepared statement. Values are bound from 1 on and stay the caller's until the next Reset().
class CHitStore::CStatement
{
public:
    CStatement(sqlite3* of, const std::string& sql) : database(of)
    {
        sqlite3_stmt* made = nullptr;
        if (sqlite3_prepare_v2(database, sql.c_str(), -1, &made, nullptr) != SQLITE_OK)
            Fail(database);
        statement.reset(made);
    }

    CStatement& Bind(std::string_view text)
    {
        sqlite3_bind_text64(statement.get(), ++bound, text.data() ? text.data() : "", text.size(),
                            SQLITE_STATIC, SQLITE_UTF8);
        return *this;
    }
    CStatement& Bind(std::int64_t number)
    {
        sqlite3_bind_int64(statement.get(), ++bound, number);
        return *this;
    }

    // True when there is a row.
    bool Step()
    {
        const int result = sqlite3_step(statement.get());
        if (result != SQLITE_ROW && result != SQLITE_DONE)
            Fail(database);
        return result == SQLITE_ROW;
    }
    void Run()
    {
        Step();
        sqlite3_reset(statement.get());
        bound = 0;
    }

    std::int64_t GetNumber(int column) const
    {
        return sqlite3_column_int64(statement.get(), column);
    }
    std::string GetText(int column) const
    {
        const auto* text =
            reinterpret_cast<const char*>(sqlite3_column_text(statement.get(), column));
        return {text ? text : "",
                static_cast<std::size_t>(sqlite3_column_bytes(statement.get(), column))};
    }

private:
    struct Finalizer
    {
        void operator()(sqlite3_stmt* statement) const noexcept { sqlite3_finalize(statement); }
    };
    sqlite3* database;
    std::unique_ptr<sqlite3_stmt, Finalizer> statement;
    int bound = 0;
};

void CHitStore::DatabaseCloser::operator()(sqlite3* database) const noexcept
{
    sqlite3_close(database);
}

CHitStore::CHitStore(const std::string& path)
{
    sqlite3* opened = nullptr;
    const int result = sqlite3_open(path.empty() ? ":memory:" : path.c_str(), &opened);
    database.reset(opened);
    if (result != SQLITE_OK)
        throw std::runtime_error("cannot open the database " + path + ": " +
                                 sqlite3_errmsg(database.get()));
    Open();
}

CHitStore::~CHitStore() = default;

void CHitStore::Open()
{
    sqlite3_busy_timeout(database.get(), 5000);
    // A commit is in the system's hands when it returns, so that a killed process loses nothing;
    // a power failure may take the latest hits.
    Execute("PRAGMA page_size = 16384; PRAGMA journal_mode = WAL; PRAGMA synchronous = NORMAL");
    CStatement version(database.get(), "PRAGMA user_version");
    version.Step();
    if (version.GetNumber(0) == 0)
        Execute((std::string("BEGIN;") + schema + "COMMIT").c_str());
    else if (version.GetNumber(0) != 1)
        throw std::runtime_error("the database was made by another version of the collector");
    version.Run();
    insertHit = std::make_unique<CStatement>(
        database.get(),
        "INSERT INTO hits (time, tracker, endpoint, kind, product, visitor, session, sentence, "
        "verdict, connection) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");
    insertRequest = std::make_unique<CStatement>(
        database.get(), "INSERT INTO requests VALUES (?, ?, ?, ?, ?, ?, ?)");
    insertVerdict =
        std::make_unique<CStatement>(database.get(), "INSERT INTO verdicts VALUES (?, ?, ?, ?, ?)");
    CStatement last(database.get(), "SELECT coalesce(max(seq), 0), (SELECT count(*) FROM hits "
                                    "WHERE tracker <> 'other') FROM sqlite_sequence");
    last.Step();
    state.lastId = static_cast<std::uint64_t>(last.GetNumber(0));
    state.collected = static_cast<std::size_t>(last.GetNumber(1));
}

void CHitStore::Execute(const char* sql) const
{
    if (sqlite3_exec(database.get(), sql, nullptr, nullptr, nullptr) != SQLITE_OK)
        Fail(database.get());
}

void CHitStore::Add(std::span<HitReport> reports)
{
    const std::lock_guard guard(lock);
    Execute("BEGIN IMMEDIATE");
    try
    {
        for (HitReport& report : reports)
            Insert(report);
        Execute("COMMIT");
    }
    catch (...)
    {
        sqlite3_exec(database.get(), "ROLLBACK", nullptr, nullptr, nullptr);
        throw;
    }
    for (const HitReport& report : reports)
    {
        state.lastId = report.id;
        state.collected += report.tracker == "other" ? 0 : 1;
    }
    changed.notify_all();
}

void CHitStore::Insert(HitReport& report)
{
    insertHit->Bind(report.time).Bind(report.tracker).Bind(report.endpoint).Bind(report.kind);
    insertHit->Bind(report.product).Bind(report.visitor).Bind(report.session);
    insertHit->Bind(report.sentence).Bind(GetName(GetSeverity(report)));
    insertHit->Bind(static_cast<std::int64_t>(report.request.connection)).Run();
    const sqlite3_int64 id = sqlite3_last_insert_rowid(database.get());
    report.id = static_cast<std::uint64_t>(id);
    const std::string headers = WriteHeaders(report);
    const std::string fields = WriteFields(report);
    const Hit& request = report.request;
    insertRequest->Bind(std::int64_t{id}).Bind(request.method).Bind(request.target);
    insertRequest->Bind(request.version).Bind(headers).Bind(request.body).Bind(fields).Run();
    for (const Verdict& verdict : report.verdicts)
        insertVerdict->Bind(std::int64_t{id})
            .Bind(GetName(verdict.severity))
            .Bind(verdict.code)
            .Bind(verdict.parameter)
            .Bind(verdict.explanation)
            .Run();
}

std::vector<HitReport> CHitStore::Find(const HitFilter& filter, EDetail detail) const
{
    const Condition condition = MakeCondition(filter);
    const bool whole = detail == EDetail::Whole;
    const bool joins = whole || !filter.text.empty();
    const std::string sql = std::string("SELECT ") + summaryColumns +
                            (whole ? requestColumns : "") + " FROM hits" +
                            (joins ? " JOIN requests ON hit = id" : "") + " WHERE id > ?" +
                            condition.sql + " ORDER BY id LIMIT ?";
    const std::lock_guard guard(lock);
    CStatement found(database.get(), sql);
    found.Bind(static_cast<std::int64_t>(filter.after));
    for (const std::string& value : condition.values)
        found.Bind(value);
    found.Bind(static_cast<std::int64_t>(filter.limit));
    std::vector<HitReport> reports;
    while (found.Step())
    {
        HitReport& report = reports.emplace_back();
        report.id = static_cast<std::uint64_t>(found.GetNumber(0));
        report.time = found.GetNumber(1);
        std::string* const texts[] = {&report.tracker, &report.endpoint, &report.kind,
                                      &report.product, &report.visitor,  &report.session,
                                      &report.sentence};
        int column = 2;
        for (std::string* text : texts)
            *text = found.GetText(column++);
        report.request.connection = static_cast<std::uint64_t>(found.GetNumber(9));
        ReadVerdicts(report);
        if (!whole)
            continue;
        Hit& request = report.request;
        request.sequence = report.id;
        request.time =
            std::chrono::system_clock::time_point(std::chrono::milliseconds(report.time));
        request.method = found.GetText(10);
        request.target = found.GetText(11);
        request.version = found.GetText(12);
        request.headers = ReadHeaders(found.GetText(13));
        request.body = found.GetText(14);
        report.parameters = DecodeHit(request).parameters;
    }
    return reports;
}

void CHitStore::ReadVerdicts(HitReport& report) const
{
    CStatement found(database.get(), "SELECT severity, code, parameter, explanation FROM verdicts "
                                     "WHERE hit = ? ORDER BY rowid");
    found.Bind(static_cast<std::int64_t>(report.id));
    while (found.Step())
        report.verdicts.push_back(
            {ReadSeverity(found.GetText(0)), found.GetText(1), found.GetText(2), found.GetText(3)});
}

std::optional<HitReport> CHitStore::Get(std::uint64_t id) const
{
    if (id == 0)
        return std::nullopt;
    HitFilter filter;
    filter.after = id - 1;
    filter.limit = 1;
    std::vector<HitReport> found = Find(filter, EDetail::Whole);
    if (found.empty() || found.front().id != id)
        return std::nullopt;
    return std::move(found.front());
}

std::optional<PreviousHit> CHitStore::GetPrevious(std::uint64_t id) const
{
    const std::lock_guard guard(lock);
    CStatement found(database.get(),
                     "SELECT id, time FROM hits WHERE id < ? ORDER BY id DESC LIMIT 1");
    if (!found.Bind(static_cast<std::int64_t>(id)).Step())
        return std::nullopt;
    return PreviousHit{static_cast<std::uint64_t>(found.GetNumber(0)), found.GetNumber(1)};
}

HitCounts CHitStore::Count() const
{
    HitCounts counts;
    for (const char* verdict : {"valid", "note", "warning", "error"})
        counts.verdicts[verdict] = 0;
    const std::lock_guard guard(lock);
    CStatement hits(database.get(), "SELECT tracker, kind, product, verdict, count(*) FROM hits "
                                    "GROUP BY tracker, kind, product, verdict");
    while (hits.Step())
    {
        const auto count = static_cast<std::size_t>(hits.GetNumber(4));
        counts.hits += count;
        counts.trackers[hits.GetText(0)] += count;
        counts.kinds[hits.GetText(1)] += count;
        counts.products[hits.GetText(2)] += count;
        counts.verdicts[hits.GetText(3)] += count;
    }
    CStatement codes(database.get(),
                     "SELECT code, count(DISTINCT hit) FROM verdicts GROUP BY code");
    while (codes.Step())
        counts.codes[codes.GetText(0)] = static_cast<std::size_t>(codes.GetNumber(1));
    return counts;
}

std::vector<VisitorSession> CHitStore::GetSessions() const
{
    const std::lock_guard guard(lock);
    CStatement found(database.get(),
                     "SELECT tracker, visitor, session, product, min(time), max(time), count(*), "
                     "sum(verdict IN ('warning', 'error')) FROM hits WHERE visitor <> '' "
                     "GROUP BY tracker, visitor, session ORDER BY min(id)");
    std::vector<VisitorSession> sessions;
    while (found.Step())
        sessions.push_back({found.GetText(0), found.GetText(1), found.GetText(2), found.GetText(3),
                            found.GetNumber(4), found.GetNumber(5),
                            static_cast<std::size_t>(found.GetNumber(6)),
                            static_cast<std::size_t>(found.GetNumber(7))});
    return sessions;
}

CHitStore::State CHitStore::GetState() const
{
    const std::lock_guard guard(lock);
    return state;
}

bool CHitStore::WaitFor(const std::function<bool(const State&)>& reached,
                        std::chrono::milliseconds timeout) const
{
    std::unique_lock guard(lock);
    changed.wait_for(guard, timeout, [&] { return closed || reached(state); });
    return !closed && reached(state);
}

std::size_t CHitStore::Clear()
{
    const std::lock_guard guard(lock);
    CStatement counted(database.get(), "SELECT count(*) FROM hits");
    counted.Step();
    const auto count = static_cast<std::size_t>(counted.GetNumber(0));
    counted.Run();
    Execute("BEGIN; DELETE FROM verdicts; DELETE FROM requests; DELETE FROM hits; COMMIT");
    state.collected = 0;
    ++state.resets;
    changed.notify_all();
    return count;
}

void CHitStore::Close()
{
    const std::lock_guard guard(lock);
    closed = true;
    changed.notify_all();
}

} // namespace collector
