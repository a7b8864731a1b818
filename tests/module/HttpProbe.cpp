// Asks with the module's HTTPS client for what standard input says, one request a line:
//
//   VERB PORT ADDRESS [BODY]    VERB is get, post, core or cancel; BODY runs to the end of the line
//
// (cancel: a post of BODY's number of bytes that is cancelled after the first piece)
//
// and prints one line for each: error code, error detail, the address afterwards, the body. A body
// of more than 40 bytes is printed as its length.

#include "env/Text.h"
#include "net/CZoHTTPComunicator.h"

#include <iostream>
#include <sstream>
#include <string>

namespace {

std::string Shorten(const std::string& body)
{
    return body.size() > 40 ? std::to_string(body.size()) + " bytes" : "\"" + body + "\"";
}

std::string Ask(net::CZoHTTPComunicator& client, const std::string& verb, std::uint32_t port,
                std::wstring& url, const std::string& body)
{
    if (verb == "get")
        return client.GetContent(url, port);
    if (verb == "post")
        return client.PostContent(url, body, -1, port, false);
    if (verb == "cancel")
    {
        client.SetProgress(
            [](double, void* own) { static_cast<net::CZoHTTPComunicator*>(own)->Cancel(); },
            &client, nullptr);
        std::string content =
            client.PostContent(url, std::string(std::stoul(body), 'x'), -1, port, false);
        client.SetProgress(nullptr, nullptr, nullptr);
        return content;
    }
    std::string content;
    std::uint32_t length = 0;
    client.PerformRequest(&content, &length, url, body, -1, port, false, nullptr);
    return content.substr(0, length);
}

} // namespace

int main()
{
    platform::CStopSignal stop;
    net::CZoHTTPComunicator client(stop);
    client.SetRequestHeaders(L"", L"", L"Probe/1");
    for (std::string line; std::getline(std::cin, line);)
    {
        std::istringstream words(line);
        std::string verb, address, body;
        std::uint32_t port = 0;
        words >> verb >> port >> address >> std::ws;
        std::getline(words, body);
        std::wstring url = env::Utf8ToUtf16(address);
        const std::string content = Ask(client, verb, port, url, body);
        std::cout << client.errorCode << ' ' << client.errorDetail << ' ' << env::Utf16ToUtf8(url)
                  << ' ' << Shorten(content) << std::endl;
    }
}
