#include "tools/host/Session.h"

#include "tools/host/HostileCalls.h"
#include "tools/host/ImportWatch.h"
#include "tools/host/Process.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>

namespace host {

namespace {

std::wstring GetWord(const Command& command, std::size_t index)
{
    return index < command.size() ? command[index] : std::wstring();
}

template <class... Values>
void Print(const char* format, Values... values)
{
    std::printf(format, values...);
    std::putchar('\n');
    std::fflush(stdout);
}

int ToNumber(const std::wstring& word) { return ::_wtoi(word.c_str()); }

long CountMicroseconds(std::chrono::steady_clock::time_point since)
{
    const auto passed = std::chrono::steady_clock::now() - since;
    return static_cast<long>(passed / std::chrono::microseconds(1));
}

// Runs `work` and prints how long it took.
void Time(const char* what, const std::function<void()>& work)
{
    const ULONGLONG start = ::GetTickCount64();
    work();
    Print("%s %llu ms", what, ::GetTickCount64() - start);
}

// Since the last call; the first one only begins.
ULONGLONG TakeLongestWait()
{
    static CBystander bystander;
    static const bool started = (bystander.Start(), ::Sleep(20), true);
    return started ? bystander.TakeLongestWait() : 0;
}

const char* TellState(ITracker* tracker)
{
    if (tracker == nullptr)
        return "none";
    if (tracker->GetInterfaceVersion() != trackerInterfaceVersion)
        return "another interface version";
    return tracker->IsTrackingEnabled() ? "enabled" : "disabled";
}

} // namespace

std::wstring GetOwnPath()
{
    std::wstring path(32768, L'\0');
    path.resize(::GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return path;
}

CSession::CSession(const std::wstring& path) : modulePath(path) { Load(); }

void CSession::Load()
{
    Time("load", [&] { loader.emplace(modulePath.c_str()); });
    if (IsLoaded())
        Get();
}

void CSession::Get()
{
    main = loader->GetTracker();
    kpi = loader->GetKpiTracker();
    ++references;
}

void CSession::Release()
{
    Time("release main", [&] { loader->DestroyTracker(); });
    Time("release kpi", [&] { loader->DestroyKpiTracker(); });
    if (--references <= 0)
        main = kpi = nullptr;
}

void CSession::Unload()
{
    main = kpi = nullptr;
    references = 0;
    Time("unload", [&] { loader->Unload(); });
}

bool CSession::WaitUntilGone(const std::wstring& milliseconds)
{
    const ULONGLONG start = ::GetTickCount64();
    const auto limit = static_cast<ULONGLONG>(_wtoi(milliseconds.c_str()));
    while (::GetModuleHandleW(L"ZoTracker.dll") != nullptr && ::GetTickCount64() - start < limit)
        ::Sleep(10);
    const bool gone = ::GetModuleHandleW(L"ZoTracker.dll") == nullptr;
    Print("%s %llu ms", gone ? "gone" : "still there", ::GetTickCount64() - start);
    return true;
}

void CSession::End()
{
    while (IsLoaded() && references > 0)
        Release();
    if (IsLoaded())
        Unload();
}

void CSession::ForEach(const std::function<void(ITracker&)>& operation, bool isHit) const
{
    const auto perform = [&](ITracker* tracker) {
        if (tracker == nullptr)
            return;
        const auto start = std::chrono::steady_clock::now();
        operation(*tracker);
        const long passed = isHit ? CountMicroseconds(start) : 0L;
        callCount += isHit;
        for (long longest = longestCall; passed > longest;)
            if (longestCall.compare_exchange_weak(longest, passed))
                break;
    };
    if (used != L"kpi")
        perform(main);
    if (used != L"main")
        perform(kpi);
}

bool CSession::Obey(const Command& command)
{
    const std::wstring verb = GetWord(command, 0);
    const std::wstring argument = GetWord(command, 1);
    if (verb.empty())
        return true;
    if (verb == L"use")
        used = argument;
    else if (verb == L"status")
        Print("main %s, kpi %s", TellState(main), TellState(kpi));
    else if (verb == L"left")
        Print("left %zu bytes, %lu handles, %lu threads, %ld wake-ups", MeasureHeaps(),
              CountHandles(), CountThreads(), GetWakeUpCount());
    else if (verb == L"blocked")
        Print("blocked %llu ms", TakeLongestWait());
    else if (verb == L"starve")
        StarveAllocations(ToNumber(argument), std::max(1, ToNumber(GetWord(command, 2))));
    else if (verb == L"starved")
        Print("starved %ld", GetStarvedCount());
    else if (verb == L"calls")
        Print("calls %ld, longest %ld us", callCount.load(), longestCall.load());
    else if (verb == L"plugin")
        ::LoadLibraryW((modulePath.substr(0, modulePath.rfind(L'\\') + 1) + L"plugin.dll").c_str());
    else if (verb == L"sleep")
        ::Sleep(static_cast<DWORD>(_wtoi(argument.c_str())));
    else if (verb == L"get")
        Get();
    else if (verb == L"release")
        Release();
    else if (verb == L"unload")
        Unload();
    else if (verb == L"load")
        Load();
    else if (verb == L"gone")
        return WaitUntilGone(argument);
    else if (verb == L"exit")
        ::ExitProcess(0);
    else if (verb == L"kill")
        EndProcessAfter(static_cast<DWORD>(ToNumber(argument)));
    else if (verb == L"demo")
    {
        for (const Command& step : GetDemoScenario())
            Obey(step);
    }
    else if (verb == L"repeat" || verb == L"threads" || verb == L"hold")
        return ObeyOtherwise(
            verb, ToNumber(argument),
            Command(command.begin() + std::min<std::ptrdiff_t>(2, std::ssize(command)),
                    command.end()));
    else
        return Track(command);
    return true;
}

bool CSession::ObeyOtherwise(const std::wstring& verb, int number, const Command& command)
{
    std::atomic<bool> understood{true};
    const auto obey = [&] { understood = Obey(command) && understood; };
    if (verb == L"hold")
        RunUnderLoaderLock(obey, static_cast<DWORD>(number));
    else if (verb == L"threads")
        RunOnThreads(number, obey);
    else
        for (int i = 0; i < number && understood; ++i)
            obey();
    return understood;
}

bool CSession::Track(const Command& command)
{
    const auto word = [&](std::size_t index) { return GetWord(command, index); };
    const std::wstring verb = word(0);
    const auto need = [&](std::size_t words) { return command.size() > words; };
    std::function<void(ITracker&)> operation;
    if (verb == L"initialize")
        operation = [path = need(1) ? word(1) : GetOwnPath()](ITracker& tracker) {
            tracker.Initialize(path.c_str());
        };
    else if (verb == L"pageview")
        operation = [](ITracker& tracker) { tracker.TrackPageview(); };
    else if (verb == L"event" && need(2))
        operation = [&](ITracker& tracker) {
            tracker.TrackEvent(word(1).c_str(), word(2).c_str(), word(3).c_str(), word(4), word(5));
        };
    else if (verb == L"eventex" && need(2))
        operation = [&](ITracker& tracker) {
            tracker.TrackEventEx(word(1), word(2), word(3), word(4), word(5), word(6) == L"once");
        };
    else if (verb == L"message" && need(1))
        operation = [&](ITracker& tracker) { tracker.TrackMessage(word(1)); };
    else if (verb == L"purchase" && need(5))
        operation = [&](ITracker& tracker) {
            tracker.TrackPurchase(word(1), word(2), std::wcstod(word(3).c_str(), nullptr), word(4),
                                  _wtoi(word(5).c_str()));
        };
    else if (verb == L"product")
        operation = [&](ITracker& tracker) { tracker.SetProductName(word(1)); };
    else if (verb == L"enable" || verb == L"disable")
        operation = [&](ITracker& tracker) { tracker.SetTrackingEnabled(verb == L"enable"); };
    else if (verb == L"idle-pageviews" && need(1))
        operation = [&](ITracker& tracker) { tracker.DisableIdlePageviews(word(1) == L"off"); };
    else if (verb == L"continue" && need(1))
        operation = [&](ITracker& tracker) { tracker.SetContinueSession(word(1) == L"on"); };
    else if (verb == L"hostile")
        operation = [&](ITracker& tracker) { CallWithEverythingOdd(tracker); };
    else
    {
        std::fprintf(stderr, "host: not understood: %ls (host --help lists the commands)\n",
                     verb.c_str());
        return false;
    }
    static const std::wstring_view hits[] = {L"pageview", L"event", L"eventex", L"message",
                                             L"purchase"};
    ForEach(operation, std::ranges::find(hits, verb) != std::end(hits));
    return true;
}

} // namespace host
