#include "trackers/classic/SessionStore.h"

#include "env/ProfileText.h"
#include "env/RegistryValues.h"
#include "platform/ProfileFile.h"
#include "trackers/classic/ContentFolder.h"

#include <utility>

namespace trackers {

using platform::CRegistryKey;
using platform::ERegistryRoot;

namespace {

const wchar_t* const keyPrefix = L"CLSID\\{5E93C0A7-2D41-4F86-B7C9-03E8D12A6F95}\\2_";
const wchar_t* const fileName = L"tallyhivesession.dat";
const wchar_t* const fileSection = L"DATA";

// In the view that values are written to, so that a run finds what an earlier one left.
std::wstring ReadValue(ERegistryRoot root, const std::wstring& keyPath, const std::wstring& name)
{
    const auto key = CRegistryKey::Open(root, keyPath, platform::ERegistryAccess::Read,
                                        platform::ERegistryView::View32);
    return key ? env::RegReadString(key, name) : std::wstring();
}

bool WriteValue(ERegistryRoot root, const std::wstring& keyPath, const std::wstring& name,
                const std::wstring& value)
{
    return env::RegWriteString(root, keyPath, name, value, false) >= 0;
}

} // namespace

CSessionStore::CSessionStore(std::wstring companyFolderWord, std::wstring hostProductName)
    : companyWord(std::move(companyFolderWord)),
      productName(std::move(hostProductName)),
      keyPath(keyPrefix + productName)
{}

std::wstring CSessionStore::GetSessionValue(const std::wstring& name) const
{
    std::wstring value = ReadValue(ERegistryRoot::ClassesRoot, keyPath, name);
    if (!value.empty())
        return value;
    value = ReadValue(ERegistryRoot::CurrentUser, keyPath, name);
    if (value.empty())
        value = env::ReadProfileText(fileSection, name, L"", GetFilePath());
    if (!value.empty())
        WriteValue(ERegistryRoot::ClassesRoot, keyPath, name, value);
    return value;
}

void CSessionStore::SetSessionValue(const std::wstring& name, const std::wstring& value) const
{
    if (!WriteValue(ERegistryRoot::ClassesRoot, keyPath, name, value) &&
        !WriteValue(ERegistryRoot::CurrentUser, keyPath, name, value))
        platform::WriteProfileText(fileSection, name, value, GetFilePath());
}

std::wstring CSessionStore::GetFilePath() const
{
    return GetUserContentFolder(companyWord, productName) + fileName;
}

} // namespace trackers
