#include "tests/soak/Report.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <numeric>
#include <sstream>
#include <stdexcept>

namespace soak {

namespace {

const auto start = std::chrono::steady_clock::now();

constexpr long emptyingLimit = 13'000; // milliseconds of a release, while sends succeed
constexpr long callLimit = 250'000; // microseconds: a machine that is busy, not a call that waits

constexpr int sawViolation = 3; // a host's exit status

constexpr bool isLongest[] = {false, false, false, false, true, true, true, true, false, false};

// 0, and the number behind each `what` in the output.
std::vector<double> FindNumbers(const std::string& output, const std::string& what)
{
    std::vector<double> numbers{0};
    for (std::size_t at = output.find(what); at != output.npos; at = output.find(what, at + 1))
        numbers.push_back(std::atof(output.c_str() + at + what.size()));
    return numbers;
}

constexpr int width = 800;
constexpr int height = 110; // of one curve
constexpr int top = 24;     // for its title

void DrawCurve(std::ostream& svg, int row, const char* title, const std::vector<double>& values)
{
    const double largest = std::max(1.0, std::ranges::max(values));
    const int bottom = (row + 1) * (height + top);
    svg << "<text x='4' y='" << bottom - height - 6 << "'>" << title << ", at most "
        << static_cast<long>(largest) << "</text>\n<polyline fill='none' stroke='#2a6fb0' points='";
    const std::size_t step = std::max<std::size_t>(1, values.size() / width); // a point a pixel
    for (std::size_t i = 0; i < values.size(); i += step)
        svg << static_cast<double>(i) * width / static_cast<double>(values.size()) << ','
            << bottom - values[i] * height / largest << ' ';
    svg << "'/>\n<line x1='0' x2='" << width << "' y1='" << bottom << "' y2='" << bottom
        << "' stroke='#999'/>\n";
}

// What Wine's own libraries say when it is they that end a host or one of its threads: where two
// mappings wanted the same place at its start; where a thread was ended while it received a file,
// which the next one gets then; where the server's protocol has been broken.
bool IsEndedByWine(const module::ProgramResult& run)
{
    constexpr const char* lastWords[] = {"failed to map the shared user data",
                                         "server_get_unix_fd: Assertion", "wine client error:"};
    return run.status != 0 && std::ranges::any_of(lastWords, [&](const char* words) {
               return run.output.find(words) != std::string::npos;
           });
}

} // namespace

long GetSeconds()
{
    return static_cast<long>((std::chrono::steady_clock::now() - start) / std::chrono::seconds(1));
}

void Tell(const std::string& what)
{
    std::fprintf(stderr, "%5ld s: %s\n", GetSeconds(), what.c_str());
}

void CTable::Add(const Scene& scene, const module::ProgramResult& run, std::size_t delivered)
{
    if (IsEndedByWine(run))
    {
        Tell("ended by Wine: " + run.output);
        ++endedByWine;
        return;
    }
    const auto find = [&](const char* what) {
        return static_cast<long>(std::ranges::max(FindNumbers(run.output, what)));
    };
    const bool isHeld = (scene.commands + scene.ends[0]).find("hold") != std::string::npos;
    const bool isCrashed = !run.hung && run.status != 0 && run.status != sawViolation;
    const long call = find("longest ");
    const long releaseMain = find("release main ");
    const long releaseKpi = find("release kpi ");
    const long emptying = delivered > 0 ? emptyingLimit : module::releaseLimit;
    const bool isReleaseLate =
        releaseKpi > emptying || // the classic tracker drops what it has queued
        releaseMain > (scene.measurementProtocol ? emptying : module::releaseLimit);
    const long unload = isHeld ? 0 : find("unload ");
    const long blocked = isHeld ? 0 : find("blocked ");
    const bool isBreach = run.status == sawViolation || blocked > module::blockLimit ||
                          isReleaseLate || unload > module::unloadLimit ||
                          (call > callLimit && scene.where != "calls");
    const Row seen{1,
                   isCrashed,
                   run.hung,
                   isBreach,
                   call,
                   std::max(releaseMain, releaseKpi),
                   unload,
                   blocked,
                   find("calls "),
                   static_cast<long>(delivered)};
    const std::lock_guard guard(lock);
    const char* const suffix = scene.measurementProtocol ? ", measurement protocol" : "";
    Row& row = rows[{scene.where + suffix, scene.fault}];
    for (std::size_t i = 0; i < row.size(); ++i)
        row[i] = isLongest[i] ? std::max(row[i], seen[i]) : row[i] + seen[i];
    if (!isCrashed && !run.hung && !isBreach)
        return;
    isClean = false;
    Tell(scene.where + suffix + ", " + scene.fault + ": status " + std::to_string(run.status) +
         (run.hung ? ", hung\n" : "\n") + scene.commands.substr(0, 400) + scene.ends[0] + '\n' +
         run.output);
}

std::string CTable::Format() const
{
    std::string text = "| fault | where | tries | crashes | hangs | breaches | call, us | "
                       "release, ms | unload, ms | others held up, ms | reported | delivered |\n"
                       "|---|---|---|---|---|---|---|---|---|---|---|---|\n";
    for (const auto& [name, row] : rows)
    {
        text += "| " + name.second + " | " + name.first + " |";
        for (const long value : row)
            text += ' ' + std::to_string(value) + " |";
        text += '\n';
    }
    return text;
}

void PutIntoReport(const std::string& path, const std::string& name, const std::string& table)
{
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    std::string report = text.str();
    const std::string begin = "<!-- " + name + " -->\n";
    const std::size_t start = report.find(begin);
    const std::size_t end = report.find("<!-- end of " + name + " -->");
    if (start == report.npos || end == report.npos || end < start)
        throw std::runtime_error(path + " has no lines to put \"" + name + "\" between");
    std::ofstream(path) << report.replace(start, end - start, begin + table);
}

std::string DrawPlot(const std::string& output, const std::vector<double>& delivered)
{
    std::ostringstream svg;
    svg << "<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 " << width << ' '
        << 5 * (height + top) + 8 << "' font-family='sans-serif' font-size='13'>\n"
        << "<rect width='100%' height='100%' fill='white'/>\n";
    DrawCurve(svg, 0, "bytes on all heaps of the host", FindNumbers(output, "left "));
    DrawCurve(svg, 1, "handles of the host", FindNumbers(output, " bytes, "));
    DrawCurve(svg, 2, "threads of the host", FindNumbers(output, " handles, "));
    std::vector<double> wakeUps = FindNumbers(output, " threads, ");
    std::adjacent_difference(wakeUps.begin(), wakeUps.end(), wakeUps.begin());
    DrawCurve(svg, 3, "wake-ups of the two workers in a round", wakeUps);
    DrawCurve(svg, 4, "requests delivered", delivered);
    return svg.str() + "</svg>\n";
}

} // namespace soak
