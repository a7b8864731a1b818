#include "tools/collector/HitJson.h"
#include "tools/collector/HitStore.h"
#include "tools/collector/LogReader.h"
#include "tools/collector/Programs.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <deque>
#include <fcntl.h>
#include <fstream>
#include <future>
#include <malloc.h>
#include <memory>
#include <stdexcept>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace collector {

namespace {

constexpr std::size_t blockSize = 256 << 10;  // bytes read at once
constexpr std::size_t mostBlocks = 4;         // in work at the same time
constexpr std::size_t longestLine = 64 << 20; // longer ones are cut

using Clock = std::chrono::steady_clock;

[[noreturn]] void Fail(const std::string& what)
{
    throw std::runtime_error(what + ": " + std::generic_category().message(errno));
}

// A file or standard input ("-"), as blocks of whole lines.
class CLogFile
{
public:
    explicit CLogFile(const std::string& from)
        : path(from), file(from == "-" ? STDIN_FILENO : ::open(from.c_str(), O_RDONLY | O_CLOEXEC))
    {
        if (file < 0)
            Fail("cannot read " + path);
    }
    CLogFile(const CLogFile&) = delete;
    CLogFile& operator=(const CLogFile&) = delete;
    ~CLogFile()
    {
        if (file != STDIN_FILENO)
            ::close(file);
    }

    // Bytes; 0 when nobody knows.
    std::size_t GetSize() const
    {
        struct stat status = {};
        return ::fstat(file, &status) == 0 && S_ISREG(status.st_mode)
                   ? static_cast<std::size_t>(status.st_size)
                   : 0;
    }

    // The whole lines that follow; empty at the end. Waits for no more than is there, so that a
    // line that comes through a pipe is not held up.
    std::string Read()
    {
        std::string lines;
        for (bool ended = false; lines.empty() && !ended;)
        {
            ended = !Append();
            const std::size_t end = buffer.rfind('\n');
            const bool cut = ended || buffer.size() > longestLine;
            const std::size_t size = end != std::string::npos ? end + 1 : cut ? buffer.size() : 0;
            lines = buffer.substr(0, size);
            buffer.erase(0, size);
        }
        return lines;
    }

private:
    bool Append()
    {
        const std::size_t before = buffer.size();
        buffer.resize(before + blockSize);
        ssize_t got = 0;
        do
            got = ::read(file, buffer.data() + before, blockSize);
        while (got < 0 && errno == EINTR);
        if (got < 0)
            Fail("cannot read " + path);
        buffer.resize(before + static_cast<std::size_t>(got));
        return got > 0;
    }

    const std::string path;
    const int file;
    std::string buffer;
};

// Where decoded hits go: a database, JSON lines, or both.
class COutput
{
public:
    explicit COutput(const Options& options)
    {
        if (!options.database.empty())
            store = std::make_unique<CHitStore>(options.database);
        if (options.output == "-" || (options.output.empty() && !store))
            file = stdout;
        else if (!options.output.empty())
        {
            opened.reset(std::fopen(options.output.c_str(), "ab"));
            file = opened.get();
            if (!file)
                Fail("cannot write " + options.output);
        }
    }

    // Stores the hits, and gives their lines, which Write() takes in the same order. One call at a
    // time.
    std::future<std::string> Take(std::vector<HitReport> hits)
    {
        if (store)
            store->Add(hits);
        return std::async(file ? std::launch::async : std::launch::deferred,
                          [hits = std::move(hits)] {
                              constexpr std::size_t usualLine = 3000; // bytes
                              std::string lines;
                              lines.reserve(hits.size() * usualLine);
                              for (const HitReport& hit : hits)
                                  lines.append(WriteLine(hit)).append("\n");
                              return lines;
                          });
    }

    void Write(std::future<std::string> lines)
    {
        if (!file)
            return;
        const std::string text = lines.get();
        if (std::fwrite(text.data(), 1, text.size(), file) != text.size() || std::fflush(file) != 0)
            Fail("cannot write the hits");
    }

private:
    struct FileCloser
    {
        void operator()(FILE* closed) const noexcept { std::fclose(closed); }
    };
    std::unique_ptr<CHitStore> store;
    std::unique_ptr<FILE, FileCloser> opened;
    FILE* file = nullptr; // null: none
};

// A bar on the terminal, where there is one.
class CProgress
{
public:
    explicit CProgress(bool quiet) : shown(!quiet && ::isatty(STDERR_FILENO) == 1) {}
    ~CProgress()
    {
        if (shown)
            std::fputs("\r\033[K", stderr);
    }

    void Show(std::size_t done, std::size_t size, std::size_t lines)
    {
        const auto now = Clock::now();
        if (!shown || now - latest < std::chrono::milliseconds(100))
            return;
        latest = now;
        constexpr std::size_t width = 40;
        const std::size_t filled = size == 0 ? 0 : width * std::min(done, size) / size;
        const double seconds = std::chrono::duration<double>(now - start).count();
        std::fprintf(stderr, "\r[%s%s] %3zu %%  %zu lines, %.0f a second\033[K",
                     std::string(filled, '#').c_str(), std::string(width - filled, '.').c_str(),
                     filled * 100 / width, lines, static_cast<double>(lines) / seconds);
    }

private:
    const bool shown;
    const Clock::time_point start = Clock::now();
    Clock::time_point latest;
};

// The way of a log through the processors: blocks of lines are decoded side by side, checked one
// after the other, and written out side by side, always in their order.
class CPipeline
{
public:
    explicit CPipeline(COutput& to) : output(to) {}

    void Add(std::string lines)
    {
        decoding.push_back(std::async(std::launch::async,
                                      [lines = std::move(lines)] { return ReadLogLines(lines); }));
        // What is ready goes on at once, what is not holds the reader up only when much is in work.
        while (!decoding.empty() && (decoding.size() >= mostBlocks || IsReady(decoding.front())))
            Check();
    }

    void Finish()
    {
        while (!decoding.empty())
            Check();
        while (!writing.empty())
            WriteOldest();
    }

    const LogBlock& GetCounts() const { return counts; } // without hits
    std::size_t GetHits() const { return hits; }

private:
    template <class Value>
    static bool IsReady(const std::future<Value>& value)
    {
        return value.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
    }

    void Check()
    {
        LogBlock block = decoding.front().get();
        decoding.pop_front();
        counts.lines += block.lines;
        counts.others += block.others;
        counts.unreadable += block.unreadable;
        for (HitReport& hit : block.hits)
        {
            inspector.Follow(hit);
            hit.id = ++hits;
        }
        writing.push_back(output.Take(std::move(block.hits)));
        while (!writing.empty() && (writing.size() >= mostBlocks || IsReady(writing.front())))
            WriteOldest();
    }

    void WriteOldest()
    {
        output.Write(std::move(writing.front()));
        writing.pop_front();
    }

    COutput& output;
    CInspector inspector;
    LogBlock counts;
    std::size_t hits = 0;
    std::deque<std::future<LogBlock>> decoding;
    std::deque<std::future<std::string>> writing;
};

} // namespace

int Read(const Options& options)
{
    // Each block takes the memory that the one before gave back.
    ::mallopt(M_TRIM_THRESHOLD, 256 << 20);
    ::mallopt(M_MMAP_THRESHOLD, 16 << 20);
    ::mallopt(M_ARENA_MAX, 8);
    COutput output(options);
    CPipeline pipeline(output);
    const auto start = Clock::now();
    {
        CProgress progress(options.quiet);
        for (const std::string& path : options.files)
        {
            CLogFile log(path);
            std::size_t done = 0;
            for (std::string lines = log.Read(); !lines.empty(); lines = log.Read())
            {
                done += lines.size();
                const bool mayWait = lines.size() < blockSize / 2; // a pipe that is read empty
                pipeline.Add(std::move(lines));
                if (mayWait)
                    pipeline.Finish();
                progress.Show(done, log.GetSize(), pipeline.GetCounts().lines);
            }
        }
        pipeline.Finish();
    }
    const LogBlock& counts = pipeline.GetCounts();
    const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
    if (!options.quiet)
        std::fprintf(stderr,
                     "%zu lines in %.2f s (%.0f a second): %zu hits, %zu other requests, %zu lines "
                     "without a request\n",
                     counts.lines, seconds, static_cast<double>(counts.lines) / seconds,
                     pipeline.GetHits(), counts.others, counts.unreadable);
    return 0;
}

} // namespace collector
