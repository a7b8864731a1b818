// http_probe PORT: asks with the module's HTTPS client for what standard input says, one request a
// line, and prints one line for each: error code, error detail, the address afterwards, the length
// of the body, and how it begins.
//
//   send ADDRESS [BODY]
//   cancel ADDRESS           is cancelled after the first piece of 200,000 bytes

#include "env/Text.h"
#include "net/CZoHTTPComunicator.h"

#include <cstdlib>
#include <iostream>
#include <string>

namespace {

void Cancel(double, void* client) { static_cast<net::CZoHTTPComunicator*>(client)->Cancel(); }

} // namespace

int main(int, char** values)
{
    const auto port = static_cast<std::uint32_t>(std::atoi(values[1]));
    platform::CStopSignal stop;
    net::CZoHTTPComunicator client(stop);
    client.SetRequestHeaders(L"", L"", L"Probe/1");
    std::string verb, address, body;
    while (std::cin >> verb >> address && std::getline(std::cin, body))
    {
        const bool isCancelled = verb == "cancel";
        body = isCancelled ? std::string(200'000, 'x') : body.erase(0, 1);
        client.SetProgress(isCancelled ? Cancel : nullptr, &client, nullptr);
        std::wstring url = env::Utf8ToUtf16(address);
        std::string content;
        std::uint32_t length = 0;
        client.PerformRequest(&content, &length, url, body, -1, port, false, nullptr);
        std::cout << client.errorCode << ' ' << client.errorDetail << ' ' << env::Utf16ToUtf8(url)
                  << ' ' << content.size() << ' ' << content.substr(0, 5) << std::endl;
    }
}
