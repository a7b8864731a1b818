#include "tools/host/Commands.h"

namespace host {

Command SplitLine(std::wstring_view line)
{
    Command words;
    std::size_t i = 0;
    for (;;)
    {
        i = line.find_first_not_of(L" \t\r\n", i);
        if (i == line.npos || line[i] == L'#')
            return words;
        std::wstring word;
        bool quoted = false;
        for (; i < line.size() && (quoted || (line[i] != L' ' && line[i] != L'\t')); ++i)
        {
            if (line[i] == L'\\' && i + 1 < line.size() && line[i + 1] == L'"')
                word += line[++i];
            else if (line[i] == L'"')
                quoted = !quoted;
            else if (line[i] != L'\r' && line[i] != L'\n')
                word += line[i];
        }
        words.push_back(std::move(word));
    }
}

std::vector<Command> SplitArguments(const std::vector<std::wstring>& arguments)
{
    std::vector<Command> commands(1);
    for (const std::wstring& argument : arguments)
    {
        if (argument == L",")
            commands.emplace_back();
        else
            commands.back().push_back(argument);
    }
    return commands;
}

const std::vector<Command>& GetDemoScenario()
{
    static const std::vector<Command> scenario{
        {L"initialize"},
        {L"status"},
        {L"pageview"},
        {L"event", L"Scan", L"Start"},
        {L"event", L"Menu", L"Open file", L"Recent", L"3"},
        {L"eventex", L"Settings", L"Theme", L"dark", L"", L"Settings page", L"once"},
        {L"message", L"Your trial ends soon"},
        {L"purchase", L"Backup Pack", L"P1", L"10.00", L"ORDER-7", L"3"},
    };
    return scenario;
}

const char* const usage =
    "usage: host [--watch] [--dll FILE] [COMMAND [ARGUMENT...] [, COMMAND ...]]\n"
    "\n"
    "Loads ZoTracker.dll (beside this program unless --dll names another), gets its trackers,\n"
    "does the commands, gives the trackers back and unloads the module. Without commands it reads\n"
    "them from standard input, one a line. --watch reports what the module calls where it should\n"
    "not, and is needed for \"starve\".\n"
    "\n"
    "  use all|main|kpi                 which trackers the following commands go to (all)\n"
    "  status                           print whether tracking is enabled, or what is wrong\n"
    "  left                             print bytes on the process's heaps, handles (without\n"
    "                                   keys of the registry), threads and, with --watch,\n"
    "                                   how often workers have woken up\n"
    "  blocked                          print how long other threads were kept from the loader "
    "and\n"
    "                                   the heap at most, since the first or last such command\n"
    "  calls                            print how many hits were reported and the longest call\n"
    "  starve FIRST [COUNT]             let COUNT (1) of the module's allocations fail, from "
    "number\n"
    "                                   FIRST on; FIRST 0: none\n"
    "  starved                          print how many have failed\n"
    "  initialize [FILE]                read the configuration beside FILE (this program)\n"
    "  pageview\n"
    "  event CATEGORY ACTION [LABEL [VALUE [PAGE]]]\n"
    "  eventex CATEGORY ACTION [LABEL [VALUE [PAGE [once]]]]\n"
    "  message TEXT\n"
    "  purchase NAME CODE PRICE ORDER QUANTITY\n"
    "  hostile                          call every operation with everything odd\n"
    "  product [NAME]                   set the product name; none: the configured one\n"
    "  enable | disable                 switch tracking on or off\n"
    "  idle-pageviews on|off            keep an idle session alive or not\n"
    "  continue on|off                  continue the stored session or not\n"
    "  repeat COUNT COMMAND...          do a command COUNT times\n"
    "  threads COUNT COMMAND...         do a command on COUNT fresh threads at once\n"
    "  hold MILLISECONDS [COMMAND...]   do a command on a thread that holds the loader's lock, "
    "and\n"
    "                                   go on while it keeps the lock so long\n"
    "  sleep MILLISECONDS\n"
    "  get | release                    get one more reference, give one back\n"
    "  load                             load the module again after an unload\n"
    "  unload                           unload the module, whatever is still held\n"
    "  gone MILLISECONDS                wait until the module has left the process\n"
    "  plugin                           load plugin.dll, which gives both trackers back when it "
    "is\n"
    "                                   told to leave\n"
    "  exit                             end the process at once, giving nothing back\n"
    "  kill MILLISECONDS                go on, and let the process be ended so much later\n"
    "  demo                             a small working day\n";

} // namespace host
