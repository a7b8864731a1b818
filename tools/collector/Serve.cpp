#include "tools/collector/HitLog.h"
#include "tools/collector/Programs.h"
#include "tools/collector/Station.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <ctime>
#include <pthread.h>

namespace collector {

namespace {

constexpr int exitDone = 0;
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

} // namespace

int Serve(const Options& options)
{
    const sigset_t signals = BlockEndSignals();
    std::atomic<std::size_t> collected = 0;
    CStation station(options, [&, main = ::pthread_self()](const HitReport& report) {
        if (report.tracker != "other" && ++collected == options.until)
            ::pthread_kill(main, arrivedSignal);
    });
    WaitForEnd(signals, options.timeout);
    station.Finish();
    Print(WriteCounts(station.GetStore().Count()));
    if (collected >= options.until)
        return exitDone;
    std::fprintf(stderr, "collector: only %zu of %zu hits have come\n", collected.load(),
                 options.until);
    return exitMissing;
}

} // namespace collector
