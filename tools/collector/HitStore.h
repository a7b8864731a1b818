#pragma once

#include "tools/collector/HitReport.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
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
    std::string product; // of the latest hit
    std::int64_t first = 0; // milliseconds since 1970
    std::int64_t last = 0;
    std::size_t hits = 0;
    std::size_t invalid = 0; // hits with a warning or an error
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
    ~CHitStore();

    // Stores the reports in one transaction and numbers them.
    void Add(std::vector<HitReport>& reports);
    void Add(HitReport& report);

    std::vector<HitReport> Find(const HitFilter& filter) const; // in the order of arrival
    std::optional<HitReport> Get(std::uint64_t id) const;
    HitCounts Count() const;
    std::vector<VisitorSession> GetSessions() const;

    // True once the store holds so many hits at the three endpoints, false after `timeout`.
    bool WaitForHits(std::size_t count, std::chrono::milliseconds timeout) const;

    // True once a hit with a greater id is there or Clear() was called, false after `timeout`.
    bool WaitForNews(std::uint64_t after, std::chrono::milliseconds timeout) const;

    // Forgets all hits; numbers go on.
    void Clear();
};

} // namespace collector
