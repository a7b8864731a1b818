#pragma once

#include "frame/TrackingHit.h"
#include "xml/SimpleXMLElement.h"
#include "zotracker/vnosal/VnCriticalSection.h"

#include <cstdint>
#include <memory>
#include <string>

namespace trackers {

// How often each event has occurred on this computer, kept from run to run in "tallyhive.xml": an
// element for each, named by the fingerprint of the event and with the count as its value.
//
// A history of more than 8 MB, ten times that of 10,000 events, counts as missing, so that reading
// it cannot hold up the tracker's release.
//
// Threads: any.
class CVisitHistory
{
public:
    // An empty history of the product whose folder, with its separator, is given.
    explicit CVisitHistory(const std::wstring& contentFolder);

    // Takes over what an earlier version of the product left in "tallyhive.dat", which is then
    // deleted; without such a file, reads what an earlier run has saved. Takes about 2 ms for 1,000
    // events.
    void LoadHistory();

    // Writes the file in one step. Does nothing before LoadHistory() has succeeded, nor where
    // another thread has ended while it counted, as at the end of the process.
    void SaveHistory();

    // Counts one more occurrence of an event: category, action, label and page together make it
    // the same. Returns how often it has occurred by now; 0 for a hit that is no event.
    std::int32_t CountEventOccurrence(const frame::TrackingHit& hit);

private:
    void ImportOldFile() ZO_LOCKING(requires_capability(stateLock));
    void LoadFile() ZO_LOCKING(requires_capability(stateLock));

    const std::wstring oldPath;
    const std::wstring path;
    VnOSAL::VnCriticalSection stateLock;
    std::unique_ptr<xml::SimpleXMLElement> events ZO_LOCKING(guarded_by(stateLock));
    bool loaded ZO_LOCKING(guarded_by(stateLock)) = false;
};

} // namespace trackers
