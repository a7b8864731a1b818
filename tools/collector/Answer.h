#pragma once

#include "tools/collector/Hit.h"

#include <chrono>
#include <string>
#include <vector>

namespace collector {

// What becomes of the connection once an answer's bytes are out.
enum class EAfterAnswer
{
    KeepOpen,
    Close, // with TLS' own farewell: the regular end of a body without a length
    Cut,   // TCP ends without TLS' farewell
    Reset, // TCP reset
    Stall  // stays open and silent until the client or the collector gives up
};

// An answer byte for byte, so that a test can order what no well-behaved server would send.
struct Answer
{
    std::string bytes; // status line, headers and body, exactly as sent; may be empty
    EAfterAnswer after = EAfterAnswer::KeepOpen;
    std::chrono::milliseconds delay{0};     // before the first byte
    std::chrono::milliseconds bytePause{0}; // other than 0: one byte at a time, with this pause
};

// A regular answer. Adds Content-Length unless `headers` holds one: a false one is sent as given.
Answer MakeAnswer(int status, const std::string& body = {}, std::vector<Header> headers = {});

// The answer of an analytics server that counted the hit: a transparent picture of one pixel.
Answer MakePixel();

Answer MakeRedirect(int status, const std::string& location);

// The body's end is the connection's end.
Answer MakeAnswerWithoutLength(int status, const std::string& body);

// Announces the whole body, sends its first `sent` bytes and cuts the connection.
Answer MakeCutAnswer(const std::string& body, std::size_t sent);

// Closes after the request was read, without a byte.
Answer MakeNoAnswer();

// Reads the request and stays silent.
Answer MakeStall();

Answer Delayed(Answer answer, std::chrono::milliseconds delay);
Answer Dripping(Answer answer, std::chrono::milliseconds bytePause);

} // namespace collector
