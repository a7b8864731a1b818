#include "tools/collector/Authority.h"

#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace collector {

namespace {

using Path = std::filesystem::path;

constexpr mode_t ownerOnly = 0600;
constexpr mode_t readableByAll = 0644;
// Wine 8 compares the host of an address with DNS names only, an IP address too; everybody else
// looks an IP address up among the IP names.
constexpr char localNames[] = "IP:127.0.0.1,DNS:localhost,DNS:127.0.0.1";

class CFile
{
public:
    CFile(const Path& path, int flags, mode_t mode)
        : handle(::open(path.c_str(), flags | O_CLOEXEC, mode))
    {
        if (handle < 0)
            throw std::runtime_error("cannot write " + path.string() +
                                     "; choose a folder that you may write to");
    }
    CFile(const CFile&) = delete;
    CFile& operator=(const CFile&) = delete;
    ~CFile() { ::close(handle); }
    int Get() const { return handle; }

private:
    int handle;
};

std::string ReadFile(const Path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void WriteAll(const CFile& file, std::string_view bytes)
{
    while (!bytes.empty())
    {
        const ssize_t written = ::write(file.Get(), bytes.data(), bytes.size());
        if (written <= 0)
            throw std::runtime_error("cannot write the certificates: the disk may be full");
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
}

// Writes beside and replaces, so that no reader ever sees half a file.
void WriteFile(const Path& path, const std::string& bytes, mode_t mode)
{
    Path beside = path;
    beside += ".new";
    ::unlink(beside.c_str());
    WriteAll(CFile(beside, O_WRONLY | O_CREAT | O_EXCL, mode), bytes);
    std::filesystem::rename(beside, path);
}

void WriteIfDifferent(const Path& path, const std::string& bytes)
{
    if (ReadFile(path) != bytes)
        WriteFile(path, bytes, readableByAll);
}

CertificateRequest MakeAuthorityRequest(const char* name)
{
    return {.commonName = name, .alternativeNames = {}, .validDays = 3650};
}

// Some clients refuse a server certificate that is valid for more than 825 days.
CertificateRequest MakeServerRequest(const char* name, const char* alternativeNames)
{
    return {.commonName = name, .alternativeNames = alternativeNames, .validDays = 825};
}

Identity TakeOrMake(const Path& path, const CertificateRequest& request, const Identity* authority)
{
    Identity identity = ReadPem(ReadFile(path));
    if (!IsUsable(identity, authority))
    {
        identity = MakeIdentity(request, authority);
        WriteFile(path, WritePem(identity), ownerOnly);
    }
    ::chmod(path.c_str(), ownerOnly);
    return identity;
}

} // namespace

CAuthority::CAuthority(const Path& folder) : pemPath(folder / "ca.pem"), derPath(folder / "ca.der")
{
    std::error_code failure;
    std::filesystem::create_directories(folder, failure);
    if (failure)
        throw std::runtime_error("cannot create the folder " + folder.string() + ": " +
                                 failure.message());
    const CFile lock(folder / "lock", O_RDWR | O_CREAT, ownerOnly);
    ::flock(lock.Get(), LOCK_EX);

    const Identity authority = TakeOrMake(
        folder / "authority.pem", MakeAuthorityRequest("Local collector authority"), nullptr);
    const Identity stranger = TakeOrMake(folder / "unknown-authority.pem",
                                         MakeAuthorityRequest("Unknown authority"), nullptr);
    server =
        TakeOrMake(folder / "server.pem", MakeServerRequest("127.0.0.1", localNames), &authority);
    unknown =
        TakeOrMake(folder / "unknown.pem", MakeServerRequest("127.0.0.1", localNames), &stranger);
    wrongHost =
        TakeOrMake(folder / "wrong-host.pem",
                   MakeServerRequest("wrong-host.example", "DNS:wrong-host.example"), &authority);
    expired = MakeIdentity(
        {.commonName = "127.0.0.1", .alternativeNames = localNames, .validDays = -1}, &authority);
    WriteIfDifferent(pemPath, WriteCertificatePem(*authority.certificate));
    WriteIfDifferent(derPath, WriteCertificateDer(*authority.certificate));
}

} // namespace collector
