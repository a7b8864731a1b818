// zotrust CA.der             makes this Windows installation trust the authority
// zotrust --remove CA.der    and no longer
//
// Ends with 0 when that is done, 1 when it could not be done, 2 when the arguments are wrong.
// Changing the machine's root store takes an elevated process on Windows; under Wine every process
// is.
// clang-format off
#include <windows.h>
#include <wincrypt.h>
#include <shellapi.h>
// clang-format on

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace {

constexpr int exitDone = 0;
constexpr int exitFailed = 1;
constexpr int exitUsage = 2;

struct StoreCloser
{
    void operator()(void* store) const { ::CertCloseStore(store, 0); }
};
struct ContextCloser
{
    void operator()(const CERT_CONTEXT* context) const { ::CertFreeCertificateContext(context); }
};
using CStorePtr = std::unique_ptr<void, StoreCloser>;
using CContextPtr = std::unique_ptr<const CERT_CONTEXT, ContextCloser>;

int Fail(const wchar_t* what, const std::wstring& path)
{
    const unsigned long error = ::GetLastError();
    std::fwprintf(stderr, L"zotrust: %ls %ls (error %lu)\n", what, path.c_str(), error);
    if (error == ERROR_ACCESS_DENIED)
        std::fwprintf(stderr, L"zotrust: run it as administrator\n");
    return exitFailed;
}

std::vector<BYTE> ReadFile(const std::wstring& path)
{
    std::vector<BYTE> bytes;
    const HANDLE file = ::CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                      OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return bytes;
    bytes.resize(64 * 1024); // a certificate has about 1 KB
    DWORD count = 0;
    if (!::ReadFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr))
        count = 0;
    bytes.resize(count);
    const DWORD error = ::GetLastError();
    ::CloseHandle(file);
    ::SetLastError(error);
    return bytes;
}

int Add(HCERTSTORE store, const CERT_CONTEXT& certificate, const std::wstring& path)
{
    if (!::CertAddEncodedCertificateToStore(store, certificate.dwCertEncodingType,
                                            certificate.pbCertEncoded, certificate.cbCertEncoded,
                                            CERT_STORE_ADD_REPLACE_EXISTING, nullptr))
        return Fail(L"cannot add to the machine's root store:", path);
    std::wprintf(L"zotrust: %ls is trusted\n", path.c_str());
    return exitDone;
}

int Remove(HCERTSTORE store, const CERT_CONTEXT& certificate, const std::wstring& path)
{
    const CERT_CONTEXT* found = ::CertFindCertificateInStore(
        store, certificate.dwCertEncodingType, 0, CERT_FIND_EXISTING, &certificate, nullptr);
    if (found == nullptr)
    {
        std::wprintf(L"zotrust: %ls was not trusted\n", path.c_str());
        return exitDone;
    }
    if (!::CertDeleteCertificateFromStore(found)) // frees `found` whatever it returns
        return Fail(L"cannot remove from the machine's root store:", path);
    std::wprintf(L"zotrust: %ls is no longer trusted\n", path.c_str());
    return exitDone;
}

int Run(const std::wstring& path, bool remove)
{
    const std::vector<BYTE> bytes = ReadFile(path);
    if (bytes.empty())
        return Fail(L"cannot read", path);
    const CContextPtr certificate(::CertCreateCertificateContext(X509_ASN_ENCODING, bytes.data(),
                                                                 static_cast<DWORD>(bytes.size())));
    if (!certificate)
        return Fail(L"no certificate in DER form:", path);
    // The registry's part of the store, because Wine forgets a removal from the whole.
    const CStorePtr store(::CertOpenStore(CERT_STORE_PROV_SYSTEM_REGISTRY_W, 0, 0,
                                          CERT_SYSTEM_STORE_LOCAL_MACHINE, L"Root"));
    if (!store)
        return Fail(L"cannot open the machine's root store for", path);
    return remove ? Remove(store.get(), *certificate, path) : Add(store.get(), *certificate, path);
}

} // namespace

int main()
{
    int count = 0;
    wchar_t** arguments = ::CommandLineToArgvW(::GetCommandLineW(), &count);
    if (arguments == nullptr)
        return exitFailed;
    const std::vector<std::wstring> words(arguments + 1, arguments + count);
    ::LocalFree(arguments);
    const bool remove = words.size() == 2 && words.front() == L"--remove";
    if ((words.size() == 1 && words.front().starts_with(L'-')) || (words.size() != 1 && !remove))
    {
        std::fwprintf(stderr, L"use: zotrust [--remove] CA.der\n");
        return exitUsage;
    }
    return Run(words.back(), remove);
}
