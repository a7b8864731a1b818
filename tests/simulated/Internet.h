#pragma once

#include "platform/Internet.h"
#include "tests/simulated/Simulated.h"

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

// The scripted internet of the simulated Windows: every request that is sent takes the next answer
// of the script, or that of the server when the script is empty, and is noted.
namespace simulated {

// Where in a request's life an answer makes a call fail.
enum class ENetworkStage
{
    None,
    Session,
    Connect,
    OpenRequest,
    AddHeaders,
    Send,
    Write,
    EndRequest,
    Read,
    CloseRequest,
    CloseConnection
};

struct Answer
{
    ENetworkStage failsAt = ENetworkStage::None;
    std::uint32_t error = 0;            // WinINet number of that failure
    std::chrono::milliseconds delay{0}; // virtual time until the head of the answer is there
    std::uint32_t status = 200;
    std::uint32_t contentLength = 0; // as declared; 0 is absent
    std::wstring location = {};
    std::wstring contentLocation = {};
    std::string body = {};
    std::vector<std::size_t> firstReads = {}; // how many bytes the first reads return at the most
};

struct SentRequest
{
    std::int64_t atMilliseconds; // virtual time
    std::wstring agent;          // of the session
    std::wstring host;
    std::uint16_t port;
    std::uint32_t connectionFlags;
    std::uint32_t requestFlags;
    std::wstring verb;
    std::wstring object; // escaped as it goes out
    std::wstring referrer;
    std::wstring headers;
    std::string body;
    std::map<platform::EInternetOption, std::uint32_t> timeouts;
};

struct Internet
{
    std::deque<Answer> script;
    std::function<Answer()> server = [] { return Answer(); }; // answers what the script does not
    std::vector<SentRequest> sent;                            // failed sends included
    std::pair<bool, std::uint32_t> connected{true, 0};
    std::pair<platform::EConnectivity, std::uint32_t> connectivity{}; // and its error
    int openHandles = 0; // sessions, connections and requests
};
extern CState<Internet> internet;

inline void ResetInternet() { internet.Reset(); }
inline void AddAnswer(Answer answer) { internet->script.push_back(std::move(answer)); }
inline std::vector<SentRequest> GetSentRequests() { return internet->sent; }
inline int GetOpenInternetHandles() { return internet->openHandles; }

} // namespace simulated
