#pragma once

#include "tools/collector/Authority.h"
#include "tools/collector/Collector.h"
#include "tools/collector/Options.h"
#include "tools/collector/PageServer.h"
#include "tools/collector/Recorder.h"

#include <fstream>
#include <functional>
#include <memory>

namespace collector {

// A collector that listens, with store, JSON lines, terminal and page, as the options say.
class CStation
{
public:
    // Listens when it returns. `onHit` is called after each hit, one at a time, on a thread of the
    // collector.
    CStation(const Options& given, std::function<void(const HitReport&)> onHit);

    const CHitStore& GetStore() const { return store; }
    std::uint64_t GetFirstId() const { return before + 1; } // of the hits of this run

    // "https://127.0.0.1:PORT".
    std::string GetUrl() const { return collector->GetUrl(""); }
    std::string GetAuthorityPath() const { return authority.GetPemPath().string(); }

    // Lets the last answers out and ends. Throws when not all could be kept.
    void Finish();

private:
    void Show(const HitReport& report);

    const Options& options;
    const bool colour;
    std::function<void(const HitReport&)> onHit;
    CAuthority authority;
    CHitStore store;
    const std::uint64_t before;
    std::filesystem::path linesPath;
    std::ofstream lines;
    CRecorder recorder;
    std::unique_ptr<CPageServer> pageServer;
    std::unique_ptr<CCollector> collector;
};

// Writes the text to standard output at once.
void Print(const std::string& text);

} // namespace collector
