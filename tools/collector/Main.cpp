// The tester's collector: shows each hit as it arrives, keeps it as a JSON line, and sums up.

#include "tools/collector/Authority.h"
#include "tools/collector/Collector.h"
#include "tools/collector/Faults.h"
#include "tools/collector/HitLog.h"
#include "tools/collector/Options.h"
#include "tools/collector/Summary.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <pthread.h>
#include <stdexcept>
#include <system_error>
#include <unistd.h>

namespace collector {

namespace {

constexpr int exitDone = 0;
constexpr int exitFailed = 1;
constexpr int exitMissing = 2;

// What ends the program: the user's signals, and the arrival of the last hit it waits for.
constexpr int arrivedSignal = SIGUSR1;

sigset_t BlockEndSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGINT, SIGTERM, arrivedSignal})
        sigaddset(&signals, signal);
    ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return signals;
}

void WaitForEnd(const sigset_t& signals, std::chrono::seconds timeout)
{
    int signal = 0;
    const timespec time{.tv_sec = timeout.count(), .tv_nsec = 0};
    if (timeout.count() == 0)
        ::sigwait(&signals, &signal);
    else
        while (::sigtimedwait(&signals, nullptr, &time) < 0 && errno == EINTR)
            ;
}

void Print(const std::string& text)
{
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
}

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

// Takes the hits as they arrive, one at a time, on threads of the collector; the sum is read once
// these have ended.
class CReport
{
public:
    CReport(const Options& given, pthread_t toWake)
        : options(given),
          main(toWake),
          path(given.folder / "hits.jsonl"),
          file(path, std::ios::app | std::ios::binary)
    {
        if (!file)
            throw std::runtime_error("cannot write " + path.string());
    }

    void Add(const Hit& hit)
    {
        const DecodedHit decoded = DecodeHit(hit);
        summary.Add(decoded);
        file << WriteJsonLine(hit, decoded) << std::endl;
        if (!options.quiet)
            Print(WriteReadable(hit, decoded, colour) + '\n');
        if (options.until > 0 && summary.GetCollected() == options.until)
            ::pthread_kill(main, arrivedSignal);
    }

    int Finish()
    {
        Print(summary.Write());
        if (!file)
            throw std::runtime_error("cannot write " + path.string() + ": the disk may be full");
        if (summary.GetCollected() >= options.until)
            return exitDone;
        std::fprintf(stderr, "collector: only %zu of %zu hits have come\n", summary.GetCollected(),
                     options.until);
        return exitMissing;
    }

private:
    const Options& options;
    const pthread_t main;
    const std::filesystem::path path;
    const bool colour = ::isatty(STDOUT_FILENO) == 1;
    std::ofstream file;
    CSummary summary;
};

int Run(const Options& options)
{
    const sigset_t signals = BlockEndSignals();
    const CAuthority authority(options.folder);
    CReport report(options, ::pthread_self());
    CollectorSettings settings;
    settings.port = options.port;
    settings.keepHits = false;
    settings.connections = 32; // bounds the memory that bodies in transit may take
    settings.onHit = [&report](const Hit& hit) { report.Add(hit); };
    CCollector collector(authority, settings);
    for (const std::string& fault : options.faults)
        OrderFault(collector, fault);
    WritePort(options.portFile, collector.GetPort());
    Print("Listening on " + collector.GetUrl("/") + ", signed by " +
          authority.GetPemPath().string() + "\n\n");
    WaitForEnd(signals, options.timeout);
    // A host that got no answer to the last hit would send it again.
    collector.WaitUntilAnswered(std::chrono::seconds(2));
    collector.Stop();
    return report.Finish();
}

std::string Explain(const std::system_error& problem, int port)
{
    if (problem.code() == std::errc::address_in_use)
        return "port " + std::to_string(port) + " is in use; choose another or end what uses it";
    if (problem.code() == std::errc::permission_denied)
        return "port " + std::to_string(port) +
               " needs more rights; choose one above 1023 or run as root";
    return problem.what();
}

int Main(const std::vector<std::string>& arguments)
{
    Options options;
    try
    {
        options = ParseOptions(arguments);
        if (!options.help)
            return Run(options);
        Print(WriteHelp());
        return exitDone;
    }
    catch (const std::filesystem::filesystem_error& problem)
    {
        std::fprintf(stderr, "collector: %s\n", problem.what());
    }
    catch (const std::system_error& problem)
    {
        std::fprintf(stderr, "collector: %s\n", Explain(problem, options.port).c_str());
    }
    catch (const std::exception& problem)
    {
        std::fprintf(stderr, "collector: %s\n", problem.what());
    }
    return exitFailed;
}

} // namespace

} // namespace collector

int main(int count, char** arguments)
{
    return collector::Main(std::vector<std::string>(arguments + 1, arguments + count));
}
