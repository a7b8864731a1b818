#pragma once

#include "tools/collector/HitJson.h"
#include "tools/collector/HitReport.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <vector>

struct sqlite3;

namespace collector {

// Which hits are wanted. An empty text asks for all.
struct HitFilter
{
    std::uint64_t after = 0; // only hits with a greater id
    std::size_t limit = 1000;
    std::string tracker;
    std::string kind;
    std::string product;
    std::string visitor;
    std::string verdict; // "valid", "note", "warning", "error", "invalid" (the last two), or a code
    std::string text;    // occurs in the sentence, the target or the body, in any case
};

struct HitCounts
{
    std::size_t hits = 0;
    std::map<std::string, std::size_t> verdicts; // by severity: "valid", ...
    std::map<std::string, std::size_t> codes;    // hits with a verdict of that code
    std::map<std::string, std::size_t> trackers;
    std::map<std::string, std::size_t> kinds;
    std::map<std::string, std::size_t> products;
};

// One session of one visitor, as one tracker reports it.
struct VisitorSession
{
    std::string tracker;
    std::string visitor;
    std::string session;
    std::string product;    // of the latest hit
    std::int64_t first = 0; // milliseconds since 1970
    std::int64_t last = 0;
    std::size_t hits = 0;
    std::size_t invalid = 0; // hits with a warning or an error
};

// How much of a hit Find() reads.
enum class EDetail
{
    Summary, // neither parameters nor headers nor body
    Whole
};

// The hits of one or more runs in a SQLite database; docs/collecting.md has its schema.
//
// What Add() has returned from is committed: a process that is killed afterwards loses nothing of
// it. Throws std::runtime_error when the database fails. Threads: any thread, any operation.
class CHitStore
{
public:
    // Opens or makes the file; an empty path is a database in memory.
    explicit CHitStore(const std::string& path);
    CHitStore(const CHitStore&) = delete;
    CHitStore& operator=(const CHitStore&) = delete;
    ~CHitStore();

    // Stores the reports in one transaction and numbers them.
    void Add(std::span<HitReport> reports);
    void Add(HitReport& report) { Add(std::span(&report, 1)); }

    // In the order of arrival.
    std::vector<HitReport> Find(const HitFilter& filter, EDetail detail) const;
    std::optional<HitReport> Get(std::uint64_t id) const;

    // The hit before that one.
    std::optional<PreviousHit> GetPrevious(std::uint64_t id) const;

    HitCounts Count() const;
    std::vector<VisitorSession> GetSessions() const; // in the order of their first hits

    // The greatest id given so far, and how often Clear() was called.
    struct State
    {
        std::uint64_t lastId = 0;
        std::size_t collected = 0; // hits at the three endpoints
        std::size_t resets = 0;
    };
    State GetState() const;

    // Waits until `reached` holds; false when `timeout` passes first, or Close() was called.
    bool WaitFor(const std::function<bool(const State&)>& reached,
                 std::chrono::milliseconds timeout) const;

    // Forgets all hits and returns their number; ids go on.
    std::size_t Clear();

    // Ends all waiting, for good.
    void Close();

private:
    class CStatement;
    struct DatabaseCloser
    {
        void operator()(sqlite3* database) const noexcept;
    };
    void Execute(const char* sql) const;
    void Open();
    void Insert(HitReport& report);
    void ReadVerdicts(HitReport& report) const;

    std::unique_ptr<sqlite3, DatabaseCloser> database;
    std::unique_ptr<CStatement> insertHit;
    std::unique_ptr<CStatement> insertRequest;
    std::unique_ptr<CStatement> insertVerdict;

    mutable std::mutex lock; // guards everything
    mutable std::condition_variable changed;
    State state;
    bool closed = false;
};

} // namespace collector
