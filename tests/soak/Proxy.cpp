#include "tests/soak/Proxy.h"

#include <arpa/inet.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <thread>

namespace soak {

namespace {

std::string WriteConfiguration(int port, bool asksForPassword)
{
    std::string path = std::filesystem::temp_directory_path() / "zotracker-proxy-XXXXXX";
    const int file = ::mkstemp(path.data());
    if (file < 0)
        throw std::runtime_error("cannot make a temporary file");
    ::close(file);
    std::ofstream(path) << "Port " << port << "\nListen 127.0.0.1\nAllow 127.0.0.1\nTimeout 60\n"
                        << (asksForPassword ? "BasicAuth user secret\n" : "");
    return path;
}

bool IsListening(int port)
{
    const collector::CSocket probe(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return ::connect(probe.Get(), reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0;
}

std::string FormatAddress(int port) { return "127.0.0.1:" + std::to_string(port); }

} // namespace

CProxy::CProxy(bool asksForPassword) : port(collector::CRefusingPort().GetPort())
{
    const std::string path = WriteConfiguration(port, asksForPassword);
    process = ::fork();
    if (process == 0)
    {
        ::execlp("tinyproxy", "tinyproxy", "-d", "-c", path.c_str(), nullptr);
        ::_exit(127);
    }
    for (int i = 0; i < 100 && !IsListening(port); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    ::unlink(path.c_str());
    if (!IsListening(port))
        throw std::runtime_error("tinyproxy does not start; is the package tinyproxy-bin there?");
}

CProxy::~CProxy()
{
    ::kill(process, SIGTERM);
    ::waitpid(process, nullptr, 0);
}

std::string CProxy::GetAddress() const { return FormatAddress(port); }

CSilentServer::CSilentServer() : listening(collector::BindLoopback(0))
{
    ::listen(listening.Get(), SOMAXCONN);
}

std::string CSilentServer::GetAddress() const
{
    return FormatAddress(collector::GetBoundPort(listening));
}

} // namespace soak
