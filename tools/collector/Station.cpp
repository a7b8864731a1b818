#include "tools/collector/Station.h"

#include "tools/collector/Faults.h"
#include "tools/collector/HitJson.h"
#include "tools/collector/HitLog.h"

#include <cstdio>
#include <stdexcept>
#include <unistd.h>

namespace collector {

namespace {

void WritePort(const std::filesystem::path& path, int port)
{
    if (path.empty())
        return;
    std::filesystem::path beside = path;
    beside += ".new";
    if (!(std::ofstream(beside) << port << std::endl))
        throw std::runtime_error("cannot write " + beside.string());
    std::filesystem::rename(beside, path);
}

} // namespace

void Print(const std::string& text)
{
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
}

CStation::CStation(const Options& given, std::function<void(const HitReport&)> called)
    : options(given),
      colour(::isatty(STDOUT_FILENO) == 1),
      onHit(std::move(called)),
      authority(given.folder),
      store(given.database),
      before(store.GetState().lastId),
      linesPath(given.folder / "hits.jsonl"),
      lines(linesPath, std::ios::app | std::ios::binary),
      recorder(store, [this](const HitReport& report) { Show(report); })
{
    if (!lines)
        throw std::runtime_error("cannot write " + linesPath.string());
    recorder.Resume();
    CollectorSettings settings;
    settings.port = options.port;
    settings.keepHits = false;
    settings.connections = 32; // bounds the memory that bodies in transit may take
    settings.onHit = [this](const Hit& hit) { recorder.Add(hit); };
    collector = std::make_unique<CCollector>(authority, settings);
    for (const std::string& fault : options.faults)
        OrderFault(*collector, fault);
    std::string places = "Listening on " + collector->GetUrl("/") + ", signed by " +
                         authority.GetPemPath().string() + '\n';
    if (options.pagePort >= 0)
    {
        pageServer = std::make_unique<CPageServer>(
            store, [this] { return recorder.Clear(); }, options.pagePort);
        places +=
            "Showing hits on http://127.0.0.1:" + std::to_string(pageServer->GetPort()) + "/\n";
        WritePort(options.pagePortFile, pageServer->GetPort());
    }
    WritePort(options.portFile, collector->GetPort());
    Print(places + '\n');
}

void CStation::Show(const HitReport& report)
{
    lines << WriteLine(report) << std::endl;
    if (!options.quiet)
        Print(WriteReadable(report, colour) + '\n');
    onHit(report);
}

void CStation::Finish()
{
    // A host that got no answer to the last hit would send it again.
    collector->WaitUntilAnswered(std::chrono::seconds(2));
    collector->Stop();
    pageServer.reset();
    if (!lines)
        throw std::runtime_error("cannot write " + linesPath.string() + ": the disk may be full");
}

} // namespace collector
