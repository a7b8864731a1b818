#include "tools/collector/HitJson.h"
#include "tools/collector/HitStore.h"
#include "tools/collector/LogReader.h"
#include "tools/collector/Programs.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
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

constexpr std::size_t blockSize = 512 << 10;  // bytes read at once
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

    // The lines that follow, valid until the next call; none at the end. Waits for no more than
    // is there, so that a line that comes through a pipe is not held up.
    std::vector<std::string_view> Read()
    {
        buffer.erase(0, whole);
        whole = 0;
        for (bool ended = false; whole == 0 && !ended;)
        {
            ended = !Append();
            const std::size_t end = buffer.rfind('\n');
            if (end != std::string::npos)
                whole = end + 1;
            else if (ended || buffer.size() > longestLine)
                whole = buffer.size();
        }
        return SplitLines(std::string_view(buffer).substr(0, whole));
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

    static std::vector<std::string_view> SplitLines(std::string_view text)
    {
        std::vector<std::string_view> lines;
        while (!text.empty())
        {
            const std::size_t end = std::min(text.find('\n'), text.size());
            std::string_view line = text.substr(0, end);
            if (line.ends_with('\r'))
                line.remove_suffix(1);
            if (!line.empty())
                lines.push_back(line);
            text.remove_prefix(std::min(end + 1, text.size()));
        }
        return lines;
    }

    const std::string path;
    const int file;
    std::string buffer;
    std::size_t whole = 0; // bytes of lines that were given out
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

    void Write(std::vector<HitReport>& hits)
    {
        if (store)
            store->Add(hits);
        if (!file)
            return;
        std::vector<std::string> lines(hits.size());
        RunInParts(hits.size(), [&](std::size_t begin, std::size_t end) {
            for (std::size_t index = begin; index < end; ++index)
                lines[index] = WriteLine(hits[index]) + '\n';
        });
        for (const std::string& line : lines)
            std::fwrite(line.data(), 1, line.size(), file);
        if (std::fflush(file) != 0)
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

std::size_t CountBytes(const std::vector<std::string_view>& lines)
{
    return lines.empty() ? 0
                         : static_cast<std::size_t>(lines.back().data() + lines.back().size() -
                                                    lines.front().data()) +
                               1;
}

} // namespace

int Read(const Options& options)
{
    ::mallopt(M_TRIM_THRESHOLD, 256 << 20); // each block takes what the one before gave back
    COutput output(options);
    CLogReader reader;
    const auto start = Clock::now();
    {
        CProgress progress(options.quiet);
        std::future<void> writing; // of the block before
        for (const std::string& path : options.files)
        {
            CLogFile log(path);
            std::size_t done = 0;
            for (auto lines = log.Read(); !lines.empty(); lines = log.Read())
            {
                std::vector<HitReport> hits = reader.Read(lines);
                done += CountBytes(lines);
                progress.Show(done, log.GetSize(), reader.GetCounts().lines);
                if (writing.valid())
                    writing.get();
                writing =
                    std::async(std::launch::async,
                               [&output, hits = std::move(hits)]() mutable { output.Write(hits); });
            }
        }
        if (writing.valid())
            writing.get();
    }
    const CLogReader::Counts& counts = reader.GetCounts();
    const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
    if (!options.quiet)
        std::fprintf(stderr,
                     "%zu lines in %.2f s (%.0f a second): %zu hits, %zu other requests, %zu lines "
                     "without a request\n",
                     counts.lines, seconds, static_cast<double>(counts.lines) / seconds,
                     counts.hits, counts.others, counts.unreadable);
    return 0;
}

} // namespace collector
