#pragma once

#include "tools/collector/Certificate.h"

#include <filesystem>

namespace collector {

// The collector's own certificate authority and the certificates it serves, kept in a folder so
// that a client has to be told once to trust them:
//
//   ca.pem, ca.der   the authority's certificate, for clients
//   authority.pem    the authority's key and certificate (mode 0600)
//   server.pem       key and certificate for 127.0.0.1 and localhost (mode 0600)
//   wrong-host.pem   signed by the authority, for another host (mode 0600)
//   unknown.pem      for 127.0.0.1 and localhost, signed by unknown-authority.pem, which nobody is
//                    told to trust (mode 0600)
//
// Made on first use; what is missing, damaged or about to expire is made again. The keys protect
// nothing but test traffic of this machine, and still never leave the folder.
class CAuthority
{
public:
    // Creates the folder if need be. Several processes may share it. Throws std::runtime_error with
    // a message for the user.
    explicit CAuthority(const std::filesystem::path& folder);

    const Identity& GetServer() const { return server; }
    const Identity& GetUnknown() const { return unknown; }
    const Identity& GetWrongHost() const { return wrongHost; }
    const Identity& GetExpired() const { return expired; } // in no file

    const std::filesystem::path& GetPemPath() const { return pemPath; }
    const std::filesystem::path& GetDerPath() const { return derPath; }

private:
    Identity server;
    Identity unknown;
    Identity wrongHost;
    Identity expired;
    std::filesystem::path pemPath;
    std::filesystem::path derPath;
};

} // namespace collector
