#pragma once

#include "tools/collector/HitReport.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>

namespace collector {

// Follows each visitor from hit to hit. Not thread-safe. Holds a bounded number of visitors: when
// there are more, all are forgotten and followed anew.
class CCourse
{
public:
    // Fills the session (a classic hit's own; else counted here: a new one begins after half an
    // hour of silence, and with "sc=start"), how often an event has come to the sentence, and the
    // verdicts session-backwards, session-jump, counter-backwards, counter-jump, visitor-changed,
    // lone-item and twice. A note that the visitor's hits have had already is taken off.
    void Follow(HitReport& report);

    void Clear();

private:
    struct Visitor
    {
        std::int64_t session = 0;
        std::int64_t sessionHit = 0;
        std::string currentVisit;
        std::int64_t time = 0;
        std::size_t request = 0; // a hash of the latest one
        bool selling = false;    // the latest hit was a transaction or an item
        std::string order;
        std::unordered_map<std::size_t, unsigned> events; // how often each has come, by hash
        std::string notes;                                // codes, each with a blank behind it
    };
    void CheckSession(HitReport& report, Visitor& visitor, bool isNew);
    void CountSession(HitReport& report, Visitor& visitor, bool isNew);
    void CheckIdentity(HitReport& report);
    static void CheckItem(HitReport& report, Visitor& visitor);
    static void CountEvent(HitReport& report, Visitor& visitor);
    static void DropKnownNotes(HitReport& report, Visitor& visitor);

    std::unordered_map<std::string, Visitor> visitors;    // by tracker and visitor
    std::unordered_map<std::string, std::string> current; // visitor by tracker and product
};

} // namespace collector
