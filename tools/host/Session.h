#pragma once

#include "tools/host/Commands.h"
#include "tools/host/Module.h"

#include <atomic>
#include <functional>
#include <optional>
#include <string>

namespace host {

// The full path of this program.
std::wstring GetOwnPath();

// One stay of the module in this process: loads it, obeys commands, reports what took how long.
class CSession
{
public:
    explicit CSession(const std::wstring& path);

    // Whether the module could be loaded.
    bool IsLoaded() const noexcept { return loader.has_value() && *loader; }

    // Does one command. False, after a message on standard error, when it is not understood.
    bool Obey(const Command& command);

    // Gives everything back that is still held and unloads the module.
    void End();

private:
    void Load();
    void Get();
    void Release();
    void Unload();
    bool WaitUntilGone(const std::wstring& milliseconds);
    bool ObeyOtherwise(const std::wstring& verb, int number, const Command& command);
    bool Track(const Command& command);
    void ForEach(const std::function<void(ITracker&)>& operation, bool isHit) const;

    const std::wstring modulePath;
    std::optional<CModule> loader;
    ITracker* main = nullptr;
    ITracker* kpi = nullptr;
    int references = 0;
    std::wstring used = L"all";
    mutable std::atomic<long> callCount{0};
    mutable std::atomic<long> longestCall{0}; // microseconds
};

} // namespace host
