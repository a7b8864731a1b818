#include "tools/collector/Comparison.h"

#include <algorithm>
#include <cstdint>
#include <stdexcept>

namespace collector {

namespace {

constexpr std::size_t mostPairs = 20'000'000; // of hits and places
constexpr std::int64_t required = 1 << 20;    // a required hit outweighs all optional ones

// A place for one hit, or (`repeats`) for any number of them.
struct Place
{
    std::size_t line;
    std::int64_t weight;
    bool repeats = false;
};

std::string Name(const HitReport& hit)
{
    return '#' + std::to_string(hit.id) + ' ' + hit.tracker + ' ' + hit.sentence;
}

class CComparison
{
public:
    CComparison(const Plan& of, const std::vector<HitReport>& all)
        : plan(of), hits(all), taken(of.lines.size()), used(all.size())
    {}

    std::vector<PlanResult> Run()
    {
        for (const char* tracker : {"classic", "measurement", "KPI", "other"})
            if (plan.inAnyOrder)
                TakeInAnyOrder(tracker);
            else
                TakeInOrder(tracker);
        TakeInAnyOrder("*");
        std::vector<PlanResult> results;
        for (std::size_t line = 0; line < plan.lines.size(); ++line)
            results.push_back(Judge(line));
        if (!plan.othersAllowed)
            results.push_back(JudgeOthers());
        return results;
    }

private:
    void Take(std::size_t line, std::size_t hit)
    {
        ++taken[line];
        used[hit] = true;
    }

    void TakeInAnyOrder(const std::string& tracker)
    {
        for (std::size_t hit = 0; hit < hits.size(); ++hit)
            for (std::size_t line = 0; line < plan.lines.size() && !used[hit]; ++line)
                if (plan.lines[line].tracker == tracker && taken[line] < plan.lines[line].most &&
                    Matches(plan.lines[line], hits[hit]))
                    Take(line, hit);
    }

    std::vector<Place> ListPlaces(const std::string& tracker) const
    {
        std::vector<Place> places;
        for (std::size_t index = 0; index < plan.lines.size(); ++index)
        {
            const PlanLine& line = plan.lines[index];
            if (line.tracker != tracker)
                continue;
            places.insert(places.end(), line.least, {index, required});
            if (line.most == PlanLine::unlimited)
                places.push_back({index, 1, true});
            else
                places.insert(places.end(), line.most - line.least, {index, 1});
        }
        return places;
    }

    // The heaviest assignment in which no hit comes before one of an earlier place.
    void TakeInOrder(const std::string& tracker)
    {
        std::vector<std::size_t> own;
        for (std::size_t hit = 0; hit < hits.size(); ++hit)
            if (hits[hit].tracker == tracker)
                own.push_back(hit);
        const std::vector<Place> places = ListPlaces(tracker);
        const std::size_t columns = places.size() + 1;
        if ((own.size() + 1) * columns > mostPairs)
            throw std::runtime_error("too many hits for so long a plan");
        std::vector<std::int64_t> best((own.size() + 1) * columns);
        const auto at = [&](std::size_t hit, std::size_t place) -> std::int64_t& {
            return best[hit * columns + place];
        };
        const auto value = [&](std::size_t hit, std::size_t place) {
            if (!Matches(plan.lines[places[place].line], hits[own[hit]]))
                return std::int64_t{-1};
            return places[place].weight + at(hit + 1, place + (places[place].repeats ? 0 : 1));
        };
        for (std::size_t hit = own.size(); hit-- > 0;)
            for (std::size_t place = places.size(); place-- > 0;)
                at(hit, place) =
                    std::max({at(hit + 1, place), at(hit, place + 1), value(hit, place)});
        for (std::size_t hit = 0, place = 0; hit < own.size() && place < places.size();)
            if (at(hit, place) == value(hit, place))
            {
                Take(places[place].line, own[hit++]);
                place += places[place].repeats ? 0 : 1;
            }
            else if (at(hit, place) == at(hit, place + 1))
                ++place;
            else
                ++hit;
    }

    PlanResult Judge(std::size_t index) const
    {
        const PlanLine& line = plan.lines[index];
        PlanResult result{&line, {}};
        if (line.most == 0)
        {
            for (const HitReport& hit : hits)
                if (Matches(line, hit))
                    result.problems.push_back("forbidden: " + Name(hit));
        }
        else if (taken[index] < line.least)
            result.problems.push_back("missing: " + std::to_string(taken[index]) + " of " +
                                      std::to_string(line.least) + " came" + FindNearest(line));
        return result;
    }

    // The hit that no line took and that fulfils most of the line.
    std::string FindNearest(const PlanLine& line) const
    {
        std::string nearest;
        std::size_t fewest = line.conditions.size() + 1;
        for (std::size_t hit = 0; hit < hits.size(); ++hit)
        {
            if (used[hit] || (line.tracker != "*" && line.tracker != hits[hit].tracker))
                continue;
            const std::vector<std::string> mismatches = ListMismatches(line, hits[hit]);
            if (mismatches.size() >= fewest)
                continue;
            fewest = mismatches.size();
            nearest = "; nearest is " + Name(hits[hit]);
            if (mismatches.empty())
                nearest += ", but it comes in another order";
            for (const std::string& mismatch : mismatches)
                nearest += (&mismatch == &mismatches.front() ? ", but " : ", ") + mismatch;
        }
        return nearest;
    }

    PlanResult JudgeOthers() const
    {
        PlanResult result;
        for (std::size_t hit = 0; hit < hits.size(); ++hit)
            if (!used[hit])
                result.problems.push_back("unexpected: " + Name(hits[hit]));
        return result;
    }

    const Plan& plan;
    const std::vector<HitReport>& hits;
    std::vector<std::size_t> taken; // hits by line
    std::vector<bool> used;         // by hit
};

std::string DescribeLine(const PlanResult& result)
{
    return result.line ? "line " + std::to_string(result.line->number) + ": " + result.line->text
                       : "beside the plan";
}

std::string EscapeXml(std::string_view text)
{
    std::string escaped;
    for (const char byte : text)
        switch (byte)
        {
        case '&':
            escaped += "&amp;";
            break;
        case '<':
            escaped += "&lt;";
            break;
        case '"':
            escaped += "&quot;";
            break;
        default:
            escaped += static_cast<unsigned char>(byte) < ' ' ? ' ' : byte;
        }
    return escaped;
}

} // namespace

std::vector<PlanResult> Compare(const Plan& plan, const std::vector<HitReport>& hits)
{
    return CComparison(plan, hits).Run();
}

std::size_t CountProblems(const std::vector<PlanResult>& results)
{
    std::size_t count = 0;
    for (const PlanResult& result : results)
        count += result.problems.size();
    return count;
}

std::string WriteDifferences(const Plan& plan, const std::vector<PlanResult>& results,
                             std::size_t hits)
{
    const std::size_t count = CountProblems(results);
    std::string text = plan.title + (plan.title.empty() ? "" : ": ");
    if (count == 0)
        return text + "the " + std::to_string(hits) + " hits are as planned\n";
    text +=
        std::to_string(count) + (count == 1 ? " difference" : " differences") + " from the plan\n";
    for (const PlanResult& result : results)
    {
        if (result.problems.empty())
            continue;
        text += "  " + DescribeLine(result) + '\n';
        for (std::string problem : result.problems)
        {
            for (char& byte : problem)
                byte = static_cast<unsigned char>(byte) < ' ' ? '?' : byte;
            text += "    " + problem + '\n';
        }
    }
    return text;
}

std::string WriteJunit(const Plan& plan, const std::vector<PlanResult>& results)
{
    const auto failed = std::count_if(results.begin(), results.end(), [](const PlanResult& result) {
        return !result.problems.empty();
    });
    const std::string title = EscapeXml(plan.title.empty() ? "plan" : plan.title);
    std::string xml =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites>\n<testsuite name=\"" + title +
        "\" tests=\"" + std::to_string(results.size()) + "\" failures=\"" + std::to_string(failed) +
        "\">\n";
    for (const PlanResult& result : results)
    {
        xml += "<testcase classname=\"" + title + "\" name=\"" + EscapeXml(DescribeLine(result)) +
               "\">";
        if (!result.problems.empty())
        {
            // One element, because some readers take no more.
            xml += "<failure message=\"" + EscapeXml(result.problems.front()) + "\">";
            for (const std::string& problem : result.problems)
                xml += EscapeXml(problem) + '\n';
            xml += "</failure>";
        }
        xml += "</testcase>\n";
    }
    return xml + "</testsuite>\n</testsuites>\n";
}

} // namespace collector
