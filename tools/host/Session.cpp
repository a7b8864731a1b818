#include "tools/host/Session.h"

#include <cstdio>
#include <cstdlib>
#include <malloc.h>

namespace host {

namespace {

std::wstring GetWord(const Command& command, std::size_t index)
{
    return index < command.size() ? command[index] : std::wstring();
}

// Runs `work` and prints how long it took.
void Time(const char* what, const std::function<void()>& work)
{
    const ULONGLONG start = ::GetTickCount64();
    work();
    std::printf("%s %llu ms\n", what, ::GetTickCount64() - start);
    std::fflush(stdout);
}

const char* TellState(ITracker* tracker)
{
    if (tracker == nullptr)
        return "none";
    if (tracker->GetInterfaceVersion() != trackerInterfaceVersion)
        return "another interface version";
    return tracker->IsTrackingEnabled() ? "enabled" : "disabled";
}

// What the C runtime's heap holds, which the module shares with this program.
std::size_t MeasureHeap()
{
    const auto heap = reinterpret_cast<HANDLE>(::_get_heap_handle());
    std::size_t bytes = 0;
    PROCESS_HEAP_ENTRY entry = {};
    ::HeapLock(heap);
    while (::HeapWalk(heap, &entry))
        bytes += entry.wFlags & PROCESS_HEAP_ENTRY_BUSY ? entry.cbData : 0;
    ::HeapUnlock(heap);
    return bytes;
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
    std::printf("%s %llu ms\n", gone ? "gone" : "still there", ::GetTickCount64() - start);
    std::fflush(stdout);
    return true;
}

void CSession::End()
{
    while (IsLoaded() && references > 0)
        Release();
    if (IsLoaded())
        Unload();
}

void CSession::ForEach(const std::function<void(ITracker&)>& operation) const
{
    if (main != nullptr && used != L"kpi")
        operation(*main);
    if (kpi != nullptr && used != L"main")
        operation(*kpi);
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
    {
        std::printf("main %s, kpi %s\n", TellState(main), TellState(kpi));
        std::fflush(stdout);
    }
    else if (verb == L"heap")
    {
        std::printf("heap %zu bytes\n", MeasureHeap());
        std::fflush(stdout);
    }
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
    else if (verb == L"demo")
    {
        for (const Command& step : GetDemoScenario())
            Obey(step);
    }
    else if (verb == L"repeat" && command.size() > 2)
    {
        const Command repeated(command.begin() + 2, command.end());
        for (int i = _wtoi(argument.c_str()); i > 0; --i)
            if (!Obey(repeated))
                return false;
    }
    else
        return Track(command);
    return true;
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
    else
    {
        std::fprintf(stderr, "host: not understood: %ls (host --help lists the commands)\n",
                     verb.c_str());
        return false;
    }
    ForEach(operation);
    return true;
}

} // namespace host
