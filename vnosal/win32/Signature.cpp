#include "vnosal/FileSystem.h"

#include "vnosal/win32/NativePath.h"

#include <softpub.h>
#include <wintrust.h>

namespace VnOSAL {
namespace {

// Wine's policy finds any signer good whose signature fits; the chain of certificates knows better.
bool IsSignerTrusted(HANDLE verification) noexcept
{
    constexpr DWORD faults = CERT_TRUST_IS_UNTRUSTED_ROOT | CERT_TRUST_IS_PARTIAL_CHAIN |
                             CERT_TRUST_IS_REVOKED | CERT_TRUST_IS_NOT_SIGNATURE_VALID |
                             CERT_TRUST_IS_EXPLICIT_DISTRUST;
    const CRYPT_PROVIDER_DATA* const data = ::WTHelperProvDataFromStateData(verification);
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
    const LONG verdict = ::WinVerifyTrust(noWindow, &policy, &data);
    const bool isTrusted = verdict == ERROR_SUCCESS && IsSignerTrusted(data.hWVTStateData);
    data.dwStateAction = WTD_STATEACTION_CLOSE;
    ::WinVerifyTrust(noWindow, &policy, &data);

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
