#include "tools/collector/Verdicts.h"

#include "tools/collector/RequestTable.h"

#include <array>
#include <bitset>
#include <charconv>

namespace collector {

namespace {

constexpr std::size_t mostParameters = 64; // of a table
constexpr std::size_t mostVerdicts = 100;  // of one hit, whatever it holds

std::string Quote(std::string_view text)
{
    constexpr std::size_t longest = 60;
    std::string quoted = "\"";
    quoted += text.substr(0, longest);
    return quoted + (text.size() > longest ? "...\"" : "\"");
}

class CTableCheck
{
public:
    CTableCheck(const Hit& request, const DecodedHit& taken, std::vector<Verdict>& found)
        : hit(request), decoded(taken), verdicts(found), table(GetTable(taken.endpoint))
    {}

    void Run()
    {
        CheckMethod();
        CheckKind();
        for (std::size_t index = 0; index < decoded.parameters.size(); ++index)
            CheckParameter(index);
        for (std::size_t index = 0; index < table.size(); ++index)
            if (!seen[index] && !table[index].optional && BelongsTo(table[index], decoded.kind))
                Find("missing", table[index].name,
                     "each " + decoded.kind + " has it, this one has not");
        if (decoded.endpoint == EEndpoint::Classic)
            CheckVisitor();
    }

private:
    void Find(std::string_view code, std::string_view parameter, const std::string& what,
              ESeverity severity = ESeverity::Error)
    {
        if (verdicts.size() < mostVerdicts)
            verdicts.push_back({severity, std::string(code), std::string(parameter),
                                (parameter.empty() ? "" : std::string(parameter) + ": ") + what});
    }

    std::string_view Get(std::string_view meaning) const
    {
        return GetValue(decoded.parameters, meaning);
    }

    void CheckMethod()
    {
        const std::string_view due = decoded.endpoint == EEndpoint::Measurement ? "POST" : "GET";
        if (hit.method != due)
            Find("method", {}, "this request is a " + std::string(due) + ", not a " + hit.method);
    }

    void CheckKind()
    {
        constexpr std::string_view kinds[] = {"pageview", "event",           "transaction",
                                              "item",     "custom variable", "visit"};
        for (const std::string_view kind : kinds)
            if (decoded.kind == kind)
                return;
        Find("kind", {}, "no tracker sends a hit of the kind " + Quote(decoded.kind));
    }

    // True for the second and later parts of one parameter.
    bool IsFurtherPart(std::size_t index, const ParameterRule& rule) const
    {
        return index > 0 && decoded.parameters[index - 1].name == rule.name &&
               decoded.parameters[index].meaning != rule.meaning;
    }

    void CheckParameter(std::size_t index)
    {
        const Parameter& parameter = decoded.parameters[index];
        const ParameterRule* rule = FindRule(decoded.endpoint, parameter.name);
        if (!rule)
        {
            // What stands before the first known parameter belongs to the configured address.
            if (seen.any())
                Find("unknown", parameter.name, "no tracker sends it", ESeverity::Warning);
            return;
        }
        const std::size_t place = static_cast<std::size_t>(rule - table.data());
        if (IsFurtherPart(index, *rule))
            return;
        if (seen[place])
            return Find("repeated", rule->name, "it stands there more than once",
                        ESeverity::Warning);
        seen.set(place);
        if (!BelongsTo(*rule, decoded.kind))
            Find("misplaced", rule->name, "it does not belong to a " + decoded.kind,
                 ESeverity::Warning);
        else if (place < latest)
            Find("misplaced", rule->name,
                 "it stands behind " + std::string(table[latest].name) + ", which follows it",
                 ESeverity::Warning);
        latest = std::max(latest, place);
        if (rule->form && parameter.meaning == rule->meaning)
            CheckForm(*rule, parameter.decoded);
    }

    void CheckForm(const ParameterRule& rule, std::string_view value)
    {
        if (!rule.form->holds(value))
            Find("malformed", rule.name,
                 std::string(rule.meaning) + " is " + Quote(value) + " where " +
                     std::string(rule.form->wants) + " is due");
    }

    void CheckVisitor()
    {
        for (const ParameterRule& part : GetVisitorParts())
            CheckForm(part, Get(part.meaning));
        const auto number = [this](std::string_view meaning) {
            std::int64_t value = 0;
            const std::string_view text = Get(meaning);
            std::from_chars(text.data(), text.data() + text.size(), value);
            return value;
        };
        if (number("session count") < 1 && !Get("session count").empty())
            Find("out-of-range", "utmcc", "sessions are counted from 1");
        if (number("first visit") > number("previous visit") ||
            number("previous visit") > number("current visit"))
            Find("out-of-range", "utmcc", "first, previous and current visit are not in order");
        std::string due{Get("domain hash")};
        due.append(".").append(Get("session hit")).append(".10.").append(Get("current visit"));
        if (Get("__utmb") != due || Get("__utmc") != Get("domain hash"))
            Find("inconsistent", "utmcc",
                 "__utmb and __utmc do not repeat what __utma and utms say");
    }

    const Hit& hit;
    const DecodedHit& decoded;
    std::vector<Verdict>& verdicts;
    std::span<const ParameterRule> table;
    std::bitset<mostParameters> seen;
    std::size_t latest = 0;
};

char LowerAscii(char unit)
{
    return unit >= 'A' && unit <= 'Z' ? static_cast<char>(unit + 32) : unit;
}

// True when a word of the text ends in `ending`, in any case.
bool HasWordEndingIn(std::string_view text, std::string_view ending)
{
    const auto isLetter = [](char unit) {
        return LowerAscii(unit) >= 'a' && LowerAscii(unit) <= 'z';
    };
    for (std::size_t at = 0; at + ending.size() <= text.size(); ++at)
    {
        const std::size_t end = at + ending.size();
        if ((end == text.size() || !isLetter(text[end])) &&
            std::equal(ending.begin(), ending.end(), text.begin() + static_cast<long>(at),
                       [](char wanted, char unit) { return wanted == LowerAscii(unit); }))
            return true;
    }
    return false;
}

std::size_t CountUnits(std::string_view utf8)
{
    std::size_t units = 0;
    for (const char byte : utf8)
        units += (byte & 0xC0) == 0x80 ? 0 : static_cast<unsigned char>(byte) >= 0xF0 ? 2 : 1;
    return units;
}

bool IsBlank(std::string_view text)
{
    return text.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

bool HasBrokenPercent(std::string_view text)
{
    const auto isDigit = [&](std::size_t at) {
        return at < text.size() && std::isxdigit(static_cast<unsigned char>(text[at])) != 0;
    };
    for (std::size_t at = text.find('%'); at != std::string_view::npos; at = text.find('%', at + 1))
        if (!isDigit(at + 1) || !isDigit(at + 2))
            return true;
    return false;
}

bool IsNumber(std::string_view text)
{
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size();
}

class CServerCheck
{
public:
    CServerCheck(const DecodedHit& taken, std::vector<Verdict>& found)
        : decoded(taken), verdicts(found)
    {}

    void Run()
    {
        for (const Parameter& parameter : decoded.parameters)
            for (const auto& [name, check] : checks)
                if (parameter.name == name)
                    (this->*check)(parameter);
    }

private:
    void Find(ESeverity severity, std::string_view code, const Parameter& parameter,
              const std::string& what)
    {
        if (verdicts.size() < mostVerdicts)
            verdicts.push_back(
                {severity, std::string(code), parameter.name, parameter.name + ": " + what});
    }

    void CheckUserAgent(const Parameter& agent)
    {
        const std::string_view product =
            std::string_view(agent.decoded).substr(0, agent.decoded.rfind(" ("));
        for (const char* ending : {"bot", "crawler", "checker", "archiver", "transcoder", "spider"})
            if (HasWordEndingIn(product, ending))
                return Find(ESeverity::Error, "robot", agent,
                            "a word of the product name ends in \"" + std::string(ending) +
                                "\", so servers take the hit for a robot's and drop it; let it "
                                "in with ?bots=1 in PIWIKURL");
        if (product.starts_with('/'))
            Find(ESeverity::Warning, "no-product", agent,
                 "it begins without a product name; set ProductName in install.cfg");
    }

    void CheckProduct(const Parameter& product)
    {
        const std::string& name = product.decoded;
        if (product.meaning != "product" || name.find_first_of("\"&") != std::string::npos ||
            HasBrokenPercent(product.raw))
            Find(ESeverity::Warning, "product-lost", product,
                 "a quote, an ampersand or a lone percent sign in the product name makes servers "
                 "lose it");
        else if (name.find('+') != std::string::npos || CountUnits(name) > 200)
            Find(ESeverity::Warning, "product-altered", product,
                 "servers read a plus sign in the product name as a blank and keep 200 units");
    }

    void CheckSite(const Parameter& site)
    {
        if (site.decoded.find("://") == std::string::npos)
            Find(ESeverity::Note, "site-without-scheme", site,
                 "servers discard an address without scheme, and the hit where only known "
                 "addresses are accepted; see ZO_SITE_ADDRESS");
    }

    void CheckLanguage(const Parameter& language)
    {
        if (language.decoded.find('_') != std::string::npos)
            Find(ESeverity::Note, "language-country", language,
                 "servers find no country in " + Quote(language.decoded));
    }

    void CheckCategory(const Parameter& text)
    {
        if (!text.decoded.empty() && IsBlank(text.decoded))
            Find(ESeverity::Error, "blank-category", text,
                 "servers answer 400 to an event whose category is blanks only");
    }

    void CheckLength(const Parameter& text)
    {
        if (CountUnits(text.decoded) > 4096)
            Find(ESeverity::Error, "label-too-long", text,
                 "servers answer 400 to more than 4096 units");
    }

    void CheckValue(const Parameter& value)
    {
        if (!value.decoded.empty() && !IsNumber(value.decoded))
            Find(ESeverity::Warning, "no-number", value,
                 Quote(value.decoded) + " is no number, so servers store 0");
    }

    using Check = void (CServerCheck::*)(const Parameter&);
    static constexpr std::pair<std::string_view, Check> checks[] = {
        {"ua", &CServerCheck::CheckUserAgent},  {"url", &CServerCheck::CheckSite},
        {"lang", &CServerCheck::CheckLanguage}, {"_cvar", &CServerCheck::CheckProduct},
        {"e_c", &CServerCheck::CheckCategory},  {"e_n", &CServerCheck::CheckLength},
        {"e_v", &CServerCheck::CheckValue},
    };
    const DecodedHit& decoded;
    std::vector<Verdict>& verdicts;
};

} // namespace

void CheckTable(const Hit& hit, const DecodedHit& decoded, std::vector<Verdict>& verdicts)
{
    if (decoded.endpoint == EEndpoint::Other)
        verdicts.push_back(
            {ESeverity::Warning, "address", {}, "No tracker sends to this address."});
    else
        CTableCheck(hit, decoded, verdicts).Run();
}

void CheckServers(const DecodedHit& decoded, std::vector<Verdict>& verdicts)
{
    if (decoded.endpoint == EEndpoint::Kpi)
        CServerCheck(decoded, verdicts).Run();
}

} // namespace collector
