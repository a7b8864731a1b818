#include "vnosal/FileSystem.h"

#include "vnosal/win32/NativePath.h"

#include <softpub.h>
#include <wintrust.h>

namespace VnOSAL {
namespace {

// The system's library for signatures, loaded for one question: it brings the whole of the system's
// cryptography along, which most processes that load the module never need.
class CTrustLibrary
{
public:
    CTrustLibrary() noexcept : library(::LoadLibraryW(GetPath(L"\\wintrust.dll").GetText()))
    {
        Bind(verifyTrust, "WinVerifyTrust");
        Bind(getProviderData, "WTHelperProvDataFromStateData");
    }
    ~CTrustLibrary()
    {
        if (library)
            ::FreeLibrary(library);
    }
    CTrustLibrary(const CTrustLibrary&) = delete;
    CTrustLibrary& operator=(const CTrustLibrary&) = delete;

    explicit operator bool() const noexcept { return verifyTrust && getProviderData; }

private:
    // In the system's own folder, so that no other library of that name is found.
    static VnString GetPath(const wchar_t* name) noexcept
    {
        wchar_t folder[MAX_PATH] = {};
        ::GetSystemDirectoryW(folder, MAX_PATH);
        return VnString(folder) + name;
    }

    template <class Function>
    void Bind(Function*& function, const char* name) const noexcept
    {
        const auto found = library ? ::GetProcAddress(library, name) : nullptr;
        function = reinterpret_cast<Function*>(reinterpret_cast<void*>(found));
    }

    const HMODULE library;

public:
    decltype(::WinVerifyTrust)* verifyTrust;
    decltype(::WTHelperProvDataFromStateData)* getProviderData;
};

// Wine's policy finds any signer good whose signature fits; the chain of certificates knows better.
bool IsSignerTrusted(const CTrustLibrary& trust, HANDLE verification) noexcept
{
    constexpr DWORD faults = CERT_TRUST_IS_UNTRUSTED_ROOT | CERT_TRUST_IS_PARTIAL_CHAIN |
                             CERT_TRUST_IS_REVOKED | CERT_TRUST_IS_NOT_SIGNATURE_VALID |
                             CERT_TRUST_IS_EXPLICIT_DISTRUST;
    const CRYPT_PROVIDER_DATA* const data = trust.getProviderData(verification);
    if (!data || data->csSigners == 0 || !data->pasSigners[0].pChainContext)
        return false;
    return (data->pasSigners[0].pChainContext->TrustStatus.dwErrorStatus & faults) == 0;
}

} // namespace

// The policy of Authenticode. Lists of revoked certificates are not fetched: the question must not
// wait for the network.
ESignature VerifySignature(const VnString& path) noexcept
{
    const VnString native = ToNativePath(path);
    if (::GetFileAttributesW(native.GetText()) == INVALID_FILE_ATTRIBUTES)
        return ESignature::CannotVerify;
    const CTrustLibrary trust;
    if (!trust)
        return ESignature::CannotVerify;

    WINTRUST_FILE_INFO file = {};
    file.cbStruct = sizeof(file);
    file.pcwszFilePath = native.GetText();
    WINTRUST_DATA data = {};
    data.cbStruct = sizeof(data);
    data.dwUIChoice = WTD_UI_NONE;
    data.fdwRevocationChecks = WTD_REVOKE_NONE;
    data.dwUnionChoice = WTD_CHOICE_FILE;
    data.pFile = &file;
    data.dwStateAction = WTD_STATEACTION_VERIFY;
    data.dwProvFlags = WTD_CACHE_ONLY_URL_RETRIEVAL | WTD_REVOCATION_CHECK_NONE;
    GUID policy = WINTRUST_ACTION_GENERIC_VERIFY_V2;
    const auto noWindow = static_cast<HWND>(INVALID_HANDLE_VALUE);
    const LONG verdict = trust.verifyTrust(noWindow, &policy, &data);
    const bool isTrusted = verdict == ERROR_SUCCESS && IsSignerTrusted(trust, data.hWVTStateData);
    data.dwStateAction = WTD_STATEACTION_CLOSE;
    trust.verifyTrust(noWindow, &policy, &data);

    switch (verdict)
    {
    case ERROR_SUCCESS:
        return isTrusted ? ESignature::Valid : ESignature::Invalid;
    case TRUST_E_NOSIGNATURE:
    case TRUST_E_SUBJECT_FORM_UNKNOWN:
        return ESignature::None;
    case TRUST_E_PROVIDER_UNKNOWN:
    case TRUST_E_ACTION_UNKNOWN:
        return ESignature::CannotVerify;
    default:
        return ESignature::Invalid;
    }
}

} // namespace VnOSAL
