#include "platform/Internet.h"
#include "platform/Url.h"

namespace platform {

namespace {

// As many hops as browsers of the time followed; a server cannot send a worker round for ever.
constexpr int maxRedirects = 10;

constexpr bool IsRedirect(std::uint32_t status)
{
    return status == 301 || status == 302 || status == 303 || status == 307 || status == 308;
}

// An open address becomes the secure one of the same server.
void Secure(Url& url)
{
    if (!url.secure && url.port == 80)
        url.port = 443;
    url.secure = true;
}

// Turns `url` to where the answer points. False when the answer is the final one.
bool FollowRedirect(CHttpFile& answer, Url& url)
{
    Url next;
    if (!IsRedirect(answer.QueryStatusCode()) ||
        !ResolveLocation(url, answer.QueryLocation(), next) || (url.secure && !next.secure))
        return false;
    url = std::move(next);
    return true;
}

} // namespace

std::unique_ptr<CHttpFile> CInternetSession::OpenURL(const std::wstring& url,
                                                     std::uintptr_t context, std::uint32_t flags,
                                                     const std::wstring& headers)
{
    Url target;
    if (!CrackUrl(url, target))
        throw CInternetException(internetInvalidUrl);
    if ((flags & internetSecure) != 0)
        Secure(target);
    for (int hop = 0;; ++hop)
    {
        const std::uint32_t secure = target.secure ? internetSecure : 0;
        const auto connection = GetHttpConnection(target.host, target.port, secure);
        auto answer =
            connection->OpenRequest(L"GET", target.object, L"", context,
                                    (flags & ~internetSecure) | secure | internetNoAutoRedirect);
        answer->AddRequestHeaders(headers, headerAdd | headerReplace);
        answer->SendRequest();
        if (hop == maxRedirects || !FollowRedirect(*answer, target))
            return answer;
    }
}

} // namespace platform
