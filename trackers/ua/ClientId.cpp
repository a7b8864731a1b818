#include "trackers/ua/ClientId.h"

#include "env/ModuleVersion.h"
#include "env/RegistryValues.h"
#include "env/Text.h"
#include "platform/Clock.h"
#include "text/Format.h"

namespace trackers {

using platform::CRegistryKey;
using platform::ERegistryAccess;
using platform::ERegistryRoot;
using platform::ERegistryView;

namespace {

constexpr const wchar_t* valueName = L"CID";

// What is written goes to the view of 32-bit programs, so that the classes root shows it to them;
// the current user's key is one for both.
std::wstring ReadClientId(const std::wstring& keyPath)
{
    auto key = CRegistryKey::Open(ERegistryRoot::ClassesRoot, keyPath, ERegistryAccess::Read,
                                  ERegistryView::Default);
    if (!key)
        key = CRegistryKey::Open(ERegistryRoot::CurrentUser, keyPath, ERegistryAccess::Read,
                                 ERegistryView::Default);
    return key ? env::RegReadString(key, valueName) : std::wstring();
}

} // namespace

std::wstring FindOrMakeClientId(const std::wstring& productUserId)
{
    const std::wstring keyPath = L"CLSID\\{5E93C0A7-2D41-4F86-B7C9-03E8D12A6F95}\\" +
                                 env::Md5OfText(env::GetApplicationProductName());
    std::wstring clientId = ReadClientId(keyPath);
    if (!clientId.empty())
        return clientId;
    clientId =
        env::Md5OfText(text::FormatText(L"%s%d", productUserId, platform::GetTickMilliseconds()));
    for (const auto root : {ERegistryRoot::ClassesRoot, ERegistryRoot::CurrentUser})
        env::RegWriteString(root, keyPath, valueName, clientId, false);
    return clientId;
}

} // namespace trackers
