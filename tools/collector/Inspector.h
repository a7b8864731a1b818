#pragma once

#include "tools/collector/Course.h"
#include "tools/collector/HitReport.h"

namespace collector {

// Everything that the hit itself says: decoded, and held against its table and what servers are
// known to do. `request` becomes part of the report; id and session are left open. Any thread.
HitReport DecodeReport(Hit request);

// Decodes and checks hits in the order of their arrival. Not thread-safe.
class CInspector
{
public:
    HitReport Inspect(Hit request);

    // Takes up a hit that was decoded already.
    void Follow(HitReport& report) { course.Follow(report); }

    // What was seen of visitors so far is forgotten.
    void Clear() { course.Clear(); }

private:
    CCourse course;
};

} // namespace collector
