#include "tests/unit/TlsClient.h"

#include <algorithm>
#include <arpa/inet.h>
#include <csignal>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <openssl/err.h>
#include <openssl/x509v3.h>
#include <sys/socket.h>

CTlsClient::CTlsClient(int port) : socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    std::signal(SIGPIPE, SIG_IGN);
    const timeval patience{.tv_sec = 10, .tv_usec = 0};
    ::setsockopt(socket.Get(), SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    ::setsockopt(socket.Get(), SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
    const int immediately = 1;
    ::setsockopt(socket.Get(), IPPROTO_TCP, TCP_NODELAY, &immediately, sizeof immediately);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<in_port_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    connected =
        ::connect(socket.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

bool CTlsClient::Handshake(const std::string& authorityPem)
{
    ERR_clear_error();
    SSL_CTX* context = SSL_CTX_new(TLS_client_method());
    SSL_CTX_set_verify(context, SSL_VERIFY_PEER, nullptr);
    SSL_CTX_load_verify_locations(context, authorityPem.c_str(), nullptr);
    ssl.reset(SSL_new(context));
    SSL_CTX_free(context); // shared with `ssl`
    X509_VERIFY_PARAM_set1_ip_asc(SSL_get0_param(ssl.get()), "127.0.0.1");
    SSL_set_fd(ssl.get(), socket.Get());
    return SSL_connect(ssl.get()) == 1;
}

void CTlsClient::Send(const std::string& bytes)
{
    SSL_write(ssl.get(), bytes.data(), static_cast<int>(bytes.size()));
}

std::string CTlsClient::Read(std::size_t count)
{
    std::string read;
    char part[16 * 1024];
    while (read.size() < count)
    {
        std::size_t size = 0;
        ERR_clear_error();
        if (SSL_read_ex(ssl.get(), part, std::min(sizeof part, count - read.size()), &size) != 1)
            break;
        read.append(part, size);
    }
    return read;
}

bool CTlsClient::WasClosedProperly() const
{
    return (SSL_get_shutdown(ssl.get()) & SSL_RECEIVED_SHUTDOWN) != 0;
}
