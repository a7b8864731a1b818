#include "env/ProductUserId.h"

#include "env/ComputerId.h"
#include "env/HostPaths.h"
#include "env/ModuleVersion.h"
#include "env/ProcessCache.h"
#include "env/Text.h"
#include "platform/Clock.h"
#include "platform/ModuleState.h"

#include <atomic>
#include <chrono>

namespace env {

namespace {

// Holds a flag for its scope. Waits for another holder, but not for one that ended with its thread
// at the exit of the process.
class CBusyScope
{
public:
    explicit CBusyScope(std::atomic<bool>& held) : flag(held)
    {
        using namespace std::chrono_literals;
        while (flag.exchange(true) &&
               platform::GetModuleState() != platform::EModuleState::ProcessEnding)
            platform::Sleep(10ms);
    }
    ~CBusyScope() { flag = false; }
    CBusyScope(const CBusyScope&) = delete;
    CBusyScope& operator=(const CBusyScope&) = delete;

private:
    std::atomic<bool>& flag;
};

std::wstring GetHostName()
{
    std::wstring name = GetApplicationProductName();
    return name.empty() ? GetFileName(GetApplicationFilePath()) : name;
}

} // namespace

std::wstring GetProductUserId(const std::wstring& productName)
{
    CProcessCache& cache = CProcessCache::Get();
    const std::wstring computerId = GetComputerId();
    if (productName.empty())
        if (std::wstring id = cache.Find(ECachedText::ProductUserId); !id.empty())
            return id;

    const CBusyScope busy(cache.productUserIdBusy);
    if (!productName.empty())
        return Md5OfText(computerId + productName);
    return cache.Keep(ECachedText::ProductUserId, Md5OfText(computerId + GetHostName()));
}

} // namespace env
