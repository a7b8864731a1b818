#include "vnosal/FileSystem.h"

#include "vnosal/win32/NativePath.h"

#include <softpub.h>
#include <wintrust.h>

namespace VnOSAL {

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
    data.dwStateAction = WTD_STATEACTION_CLOSE;
    ::WinVerifyTrust(noWindow, &policy, &data);

    switch (verdict)
    {
    case ERROR_SUCCESS:
        return ESignature::Valid;
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
