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
    const char* value;    // what the value means; null: takes none
    const char* commands; // which take it: s(erve), r(ead), e(xpect)
    const char* effect;
    void (*take)(Options&, const std::string& value);
};

constexpr int largest = std::numeric_limits<int>::max();

constexpr OptionKind kinds[] = {
    {"--port", "NUMBER", "se", "listen there for hits (default: any free port)",
     [](Options& options, const std::string& value) {
         options.port = ParseNumber(value, 0, 65535);
     }},
    {"--folder", "FOLDER", "se", "keep the authority and hits.jsonl there (default: collector)",
     [](Options& options, const std::string& value) { options.folder = value; }},
    {"--port-file", "FILE", "se", "write the port there once it listens",
     [](Options& options, const std::string& value) { options.portFile = value; }},
    {"--page-port", "NUMBER", "se", "serve page and HTTP interface there (0: any free port)",
     [](Options& options, const std::string& value) {
         options.pagePort = ParseNumber(value, 0, 65535);
     }},
    {"--page-port-file", "FILE", "se", "write the page's port there once it listens",
     [](Options& options, const std::string& value) { options.pagePortFile = value; }},
    {"--database", "FILE", "sre", "keep the hits there, with those that it holds (SQLite)",
     [](Options& options, const std::string& value) { options.database = value; }},
    {"--output", "FILE", "r", "write the hits there as JSON lines (-: standard output)",
     [](Options& options, const std::string& value) { options.output = value; }},
    {"--junit", "FILE", "e", "write the comparison there as JUnit XML",
     [](Options& options, const std::string& value) { options.junit = value; }},
    {"--until", "HITS", "s", "end with 0 after so many hits at the three endpoints",
     [](Options& options, const std::string& value) {
         options.until = static_cast<std::size_t>(ParseNumber(value, 1, largest));
     }},
    {"--timeout", "SECONDS", "se",
     "end then; with 2 when fewer hits than --until says have come, or the host still runs",
     [](Options& options, const std::string& value) {
         options.timeout = std::chrono::seconds(ParseNumber(value, 1, largest));
     }},
    {"--fault", "NAME[:ARG]", "se",
     "misbehave; see below (may be given again: for connections and requests)",
     [](Options& options, const std::string& value) { options.faults.push_back(value); }},
    {"--quiet", nullptr, "sre", "print no hits, draw no progress",
     [](Options& options, const std::string&) { options.quiet = true; }},
    {"--help", nullptr, "sre", "print this",
     [](Options& options, const std::string&) { options.command = ECommand::Help; }},
};

const OptionKind& FindKind(const std::string& name, char command)
{
    for (const OptionKind& kind : kinds)
        if (name == kind.name && std::string_view(kind.commands).find(command) != std::string::npos)
            return kind;
    throw std::invalid_argument("unknown option " + name + "; see collector --help");
}

void TakeOption(Options& options, char command, const std::vector<std::string>& arguments,
                std::size_t& index)
{
    const OptionKind& kind = FindKind(arguments[index], command);
    if (kind.value == nullptr)
        return kind.take(options, {});
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

// What is no option: the files to read, or the plan, "--" and the host.
bool TakePlainArgument(Options& options, const std::vector<std::string>& arguments,
                       std::size_t& index)
{
    const std::string& argument = arguments[index];
    if (argument == "--" && options.command == ECommand::Expect)
    {
        options.hostArguments.assign(arguments.begin() + static_cast<long>(index) + 1,
                                     arguments.end());
        index = arguments.size();
        return true;
    }
    if (argument != "-" && argument.starts_with('-'))
        return false;
    if (options.command == ECommand::Read)
        options.files.push_back(argument);
    else if (options.command == ECommand::Expect && options.plan.empty())
        options.plan = argument;
    else
        return false;
    return true;
}

void CheckComplete(const Options& options)
{
    if (options.command == ECommand::Read && options.files.empty())
        throw std::invalid_argument("read needs a FILE, or - for standard input");
    if (options.command == ECommand::Expect &&
        (options.plan.empty() || options.hostArguments.empty()))
        throw std::invalid_argument("expect needs a PLAN, -- and a HOST");
}

} // namespace

Options ParseOptions(const std::vector<std::string>& arguments)
{
    Options options;
    std::size_t index = 0;
    char command = 's';
    if (!arguments.empty() && (arguments[0] == "read" || arguments[0] == "expect"))
    {
        command = arguments[0].front();
        options.command = command == 'r' ? ECommand::Read : ECommand::Expect;
        ++index;
    }
    for (; index < arguments.size(); ++index)
        if (!TakePlainArgument(options, arguments, index))
            TakeOption(options, command, arguments, index);
    CheckComplete(options);
    return options;
}

std::string WriteHelp()
{
    std::string text;
    const struct
    {
        char letter;
        const char* what;
    } commands[] = {
        {'s', "collector [OPTION...]: shows the hits that a host reports over HTTPS on 127.0.0.1"},
        {'r', "collector read [OPTION...] FILE...: decodes and checks access logs of web servers "
              "and\nthe collector's JSON lines"},
        {'e', "collector expect [OPTION...] PLAN -- HOST [ARGUMENT...]: runs the host and compares "
              "its\nhits with the plan"},
    };
    for (const auto& command : commands)
    {
        text.append(command.what).append("\n\n");
        for (const OptionKind& kind : kinds)
        {
            if (std::string_view(kind.commands).find(command.letter) == std::string::npos)
                continue;
            std::string name = kind.name;
            if (kind.value)
                name.append(" ").append(kind.value);
            name.resize(24, ' ');
            text.append("  ").append(name).append(kind.effect).append("\n");
        }
        text += '\n';
    }
    text += "faults:\n" + ListFaults();
    text +=
        "\nEnds with 0 when all went well, 1 when it could not work or the hits differ from the "
        "plan,\n2 when hits were missing at the end, or the host still ran at the timeout.\n";
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
