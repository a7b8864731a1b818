#include "tools/collector/Plan.h"

#include "tools/collector/Options.h"

#include <algorithm>
#include <stdexcept>

namespace collector {

namespace {

constexpr int mostTimes = 1000;

std::string_view Trim(std::string_view text)
{
    const std::size_t begin = text.find_first_not_of(" \t\r");
    if (begin == std::string_view::npos)
        return {};
    return text.substr(begin, text.find_last_not_of(" \t\r") + 1 - begin);
}

// Takes the word off the text's start; false when it does not stand there.
bool TakeWord(std::string_view& text, std::string_view word)
{
    if (!text.starts_with(word) || (text.size() > word.size() && text[word.size()] != ' '))
        return false;
    text = Trim(text.substr(word.size()));
    return true;
}

std::string TakeAnyWord(std::string_view& text)
{
    const std::size_t end = std::min(text.find(' '), text.size());
    const std::string word(text.substr(0, end));
    text = Trim(text.substr(end));
    return word;
}

std::size_t TakeNumber(std::string_view& text)
{
    return static_cast<std::size_t>(ParseNumber(TakeAnyWord(text), 0, mostTimes));
}

void TakeTimes(std::string_view& text)
{
    if (!TakeWord(text, "times") && !TakeWord(text, "time"))
        throw std::invalid_argument("\"times\" is missing behind the number");
}

// "once", "never", "N times", "N to M times", "at most N times", "at least N times" or nothing.
void TakeCount(std::string_view& text, PlanLine& line)
{
    if (TakeWord(text, "once"))
        return;
    if (TakeWord(text, "never"))
    {
        line.least = line.most = 0;
        return;
    }
    if (TakeWord(text, "at most"))
    {
        line.least = 0;
        line.most = TakeNumber(text);
    }
    else if (TakeWord(text, "at least"))
    {
        line.least = TakeNumber(text);
        line.most = PlanLine::unlimited;
    }
    else if (!text.empty() && text.front() >= '0' && text.front() <= '9')
    {
        line.least = TakeNumber(text);
        line.most = TakeWord(text, "to") ? TakeNumber(text) : line.least;
    }
    else
        return;
    TakeTimes(text);
}

// What stands before the next comma outside of quotes; taken off with its comma.
std::string_view TakePart(std::string_view& text)
{
    bool quoted = false;
    std::size_t end = 0;
    for (; end < text.size() && (quoted || text[end] != ','); ++end)
        if (text[end] == '"')
            quoted = !quoted;
    const std::string_view part = Trim(text.substr(0, end));
    text = end == text.size() ? std::string_view() : text.substr(end + 1);
    return part;
}

std::vector<PlanCondition> ParseConditions(std::string_view text)
{
    std::vector<PlanCondition> conditions;
    while (!text.empty())
    {
        const std::string_view part = TakePart(text);
        const std::size_t equals = part.find('=');
        if (equals == std::string_view::npos)
            throw std::invalid_argument("\"" + std::string(part) + "\" is no NAME = VALUE");
        std::string_view value = Trim(part.substr(equals + 1));
        if (value.size() >= 2 && value.front() == '"' && value.back() == '"')
            value = value.substr(1, value.size() - 2);
        conditions.push_back({std::string(Trim(part.substr(0, equals))), std::string(value)});
    }
    return conditions;
}

PlanLine ParseLine(std::string_view text)
{
    PlanLine line;
    line.text = text;
    TakeCount(text, line);
    line.tracker = TakeAnyWord(text);
    constexpr std::string_view trackers[] = {"classic", "measurement", "KPI", "other", "*"};
    if (std::find(std::begin(trackers), std::end(trackers), line.tracker) == std::end(trackers))
        throw std::invalid_argument("\"" + line.tracker +
                                    "\" is neither classic, measurement, KPI, other nor *");
    constexpr std::string_view with = " with ";
    const std::size_t end = std::min(text.find(with), text.size());
    line.kind = Trim(text.substr(0, end));
    if (line.kind.empty())
        throw std::invalid_argument("the kind of hit is missing");
    if (end < text.size())
        line.conditions = ParseConditions(text.substr(end + with.size()));
    return line;
}

void TakePlanLine(Plan& plan, std::string_view text, int number)
{
    if (text.empty() || text.front() == '#')
        return;
    if (TakeWord(text, "title"))
        plan.title = text;
    else if (text == "in any order")
        plan.inAnyOrder = true;
    else if (text == "others allowed")
        plan.othersAllowed = true;
    else
    {
        plan.lines.push_back(ParseLine(text));
        plan.lines.back().number = number;
    }
}

// Every value that the hit has under that name.
std::vector<std::string_view> ListValues(const HitReport& hit, std::string_view name)
{
    const std::pair<std::string_view, std::string_view> own[] = {
        {"product", hit.product},
        {"visitor", hit.visitor},
        {"session", hit.session},
        {"sentence", hit.sentence},
        {"verdict", GetName(GetSeverity(hit))}};
    for (const auto& [known, value] : own)
        if (known == name)
            return {value};
    if (name == "code")
        return ListCodes(hit);
    std::vector<std::string_view> values;
    for (const Parameter& parameter : hit.parameters)
        if (parameter.meaning == name || parameter.name == name)
            values.push_back(parameter.decoded);
    return values;
}

bool Fulfils(const HitReport& hit, const PlanCondition& condition)
{
    const std::vector<std::string_view> values = ListValues(hit, condition.name);
    if (values.empty())
        return condition.pattern.empty();
    return std::any_of(values.begin(), values.end(), [&](std::string_view value) {
        return MatchesPattern(condition.pattern, value);
    });
}

} // namespace

Plan ParsePlan(std::string_view text)
{
    Plan plan;
    for (int number = 1; !text.empty(); ++number)
    {
        const std::size_t end = std::min(text.find('\n'), text.size());
        try
        {
            TakePlanLine(plan, Trim(text.substr(0, end)), number);
        }
        catch (const std::invalid_argument& problem)
        {
            throw std::invalid_argument("plan line " + std::to_string(number) + ": " +
                                        problem.what());
        }
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return plan;
}

bool Matches(const PlanLine& line, const HitReport& hit)
{
    return (line.tracker == "*" || line.tracker == hit.tracker) &&
           MatchesPattern(line.kind, hit.kind) &&
           std::all_of(line.conditions.begin(), line.conditions.end(),
                       [&](const PlanCondition& condition) { return Fulfils(hit, condition); });
}

std::vector<std::string> ListMismatches(const PlanLine& line, const HitReport& hit)
{
    std::vector<std::string> mismatches;
    if (!MatchesPattern(line.kind, hit.kind))
        mismatches.push_back("it is no " + line.kind);
    for (const PlanCondition& condition : line.conditions)
    {
        if (Fulfils(hit, condition))
            continue;
        const std::vector<std::string_view> values = ListValues(hit, condition.name);
        mismatches.push_back(condition.name + (values.empty()
                                                   ? " is missing"
                                                   : " is \"" + std::string(values.front()) + '"'));
    }
    return mismatches;
}

bool MatchesPattern(std::string_view pattern, std::string_view text)
{
    std::size_t at = 0;    // in the text
    std::size_t retry = 0; // where the latest "*" may end next
    std::string_view rest = pattern;
    std::string_view behindStar;
    bool star = false;
    while (at < text.size() || !rest.empty())
        if (!rest.empty() && rest.front() == '*')
        {
            rest.remove_prefix(1);
            behindStar = rest;
            retry = at;
            star = true;
        }
        else if (!rest.empty() && at < text.size() && rest.front() == text[at])
        {
            rest.remove_prefix(1);
            ++at;
        }
        else if (star && retry < text.size())
        {
            rest = behindStar;
            at = ++retry;
        }
        else
            return false;
    return true;
}

} // namespace collector
