// The tester's collector: shows hits as they arrive, reads them from logs, compares them with a
// plan.

#include "tools/collector/Options.h"
#include "tools/collector/Programs.h"

#include <cstdio>
#include <stdexcept>
#include <system_error>

namespace collector {

namespace {

std::string Explain(const std::system_error& problem, int port)
{
    if (problem.code() == std::errc::address_in_use)
        return "port " + std::to_string(port) + " is in use; choose another or end what uses it";
    if (problem.code() == std::errc::permission_denied)
        return "port " + std::to_string(port) +
               " needs more rights; choose one above 1023 or run as root";
    return problem.what();
}

int Run(const Options& options)
{
    switch (options.command)
    {
    case ECommand::Serve:
        return Serve(options);
    case ECommand::Read:
        return Read(options);
    case ECommand::Expect:
        return Expect(options);
    case ECommand::Help:
        break;
    }
    std::fputs(WriteHelp().c_str(), stdout);
    return 0;
}

int Main(const std::vector<std::string>& arguments)
{
    Options options;
    try
    {
        options = ParseOptions(arguments);
        return Run(options);
    }
    catch (const std::filesystem::filesystem_error& problem)
    {
        std::fprintf(stderr, "collector: %s\n", problem.what());
    }
    catch (const std::system_error& problem)
    {
        std::fprintf(stderr, "collector: %s\n", Explain(problem, options.port).c_str());
    }
    catch (const std::exception& problem)
    {
        std::fprintf(stderr, "collector: %s\n", problem.what());
    }
    return 1;
}

} // namespace

} // namespace collector

int main(int count, char** arguments)
{
    return collector::Main(std::vector<std::string>(arguments + 1, arguments + count));
}
