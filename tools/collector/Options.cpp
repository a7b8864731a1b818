#include "tools/collector/Options.h"

#include "tools/collector/Faults.h"

#include <charconv>
#include <limits>
#include <stdexcept>

namespace collector {

namespace {

struct OptionKind
{
    const char* name;
    const char* value; // what the value means; null: takes none
    const char* effect;
    void (*take)(Options&, const std::string& value);
};

constexpr int largest = std::numeric_limits<int>::max();

constexpr OptionKind kinds[] = {
    {"--port", "NUMBER", "listen there (default: any free port)",
     [](Options& options, const std::string& value) {
         options.port = ParseNumber(value, 0, 65535);
     }},
    {"--folder", "FOLDER", "keep the authority and hits.jsonl there (default: collector)",
     [](Options& options, const std::string& value) { options.folder = value; }},
    {"--port-file", "FILE", "write the port there once it listens",
     [](Options& options, const std::string& value) { options.portFile = value; }},
    {"--until", "HITS", "end with 0 after so many hits at the three endpoints",
     [](Options& options, const std::string& value) {
         options.until = static_cast<std::size_t>(ParseNumber(value, 1, largest));
     }},
    {"--timeout", "SECONDS", "end then; with 2 when fewer hits than --until says have come",
     [](Options& options, const std::string& value) {
         options.timeout = std::chrono::seconds(ParseNumber(value, 1, largest));
     }},
    {"--fault", "NAME[:ARG]",
     "misbehave; see below (may be given again: for connections and requests)",
     [](Options& options, const std::string& value) { options.faults.push_back(value); }},
    {"--quiet", nullptr, "print no hits",
     [](Options& options, const std::string&) { options.quiet = true; }},
    {"--help", nullptr, "print this",
     [](Options& options, const std::string&) { options.help = true; }},
};

const OptionKind& FindKind(const std::string& name)
{
    for (const OptionKind& kind : kinds)
        if (name == kind.name)
            return kind;
    throw std::invalid_argument("unknown option " + name + "; see collector --help");
}

} // namespace

Options ParseOptions(const std::vector<std::string>& arguments)
{
    Options options;
    for (std::size_t index = 0; index < arguments.size(); ++index)
    {
        const OptionKind& kind = FindKind(arguments[index]);
        if (kind.value == nullptr)
        {
            kind.take(options, {});
            continue;
        }
        if (++index == arguments.size())
            throw std::invalid_argument(std::string(kind.name) + " needs a value: " + kind.value);
        try
        {
            kind.take(options, arguments[index]);
        }
        catch (const std::invalid_argument& problem)
        {
            throw std::invalid_argument(std::string(kind.name) + ": " + problem.what());
        }
    }
    return options;
}

std::string WriteHelp()
{
    std::string text = "collector: shows the hits that a host reports over HTTPS on 127.0.0.1\n\n";
    for (const OptionKind& kind : kinds)
    {
        std::string name = kind.name;
        if (kind.value)
            name.append(" ").append(kind.value);
        name.resize(22, ' ');
        text.append("  ").append(name).append(kind.effect).append("\n");
    }
    text += "\nfaults:\n" + ListFaults();
    text +=
        "\nEnds with 0 when all went well, 1 when it could not work, 2 when hits are missing.\n";
    return text;
}

int ParseNumber(const std::string& text, int least, int most)
{
    int number = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || stop != end || number < least || number > most)
        throw std::invalid_argument("\"" + text + "\" is no number from " + std::to_string(least) +
                                    " to " + std::to_string(most));
    return number;
}

} // namespace collector
