#include "tools/collector/ClassicFields.h"

#include "tools/collector/Decode.h"

#include <array>

namespace collector {

namespace {

constexpr std::array<const char*, 6> visitorNames = {"domain hash",   "visitor number",
                                                     "first visit",   "previous visit",
                                                     "current visit", "session count"};

using Parameters = std::vector<Parameter>;

void AppendPart(std::string_view name, std::string_view meaning, std::string_view raw,
                Parameters& parameters)
{
    parameters.push_back(
        {std::string(name), std::string(raw), DecodeText(raw), std::string(meaning)});
}

// A part of the cookies, which were decoded as a whole.
void AppendCookiePart(std::string_view meaning, std::string_view text, Parameters& parameters)
{
    parameters.push_back({"utmcc", std::string(text), std::string(text), std::string(meaning)});
}

// The text between `head` and the next ")", both taken off `rest`; false when `rest` is otherwise.
bool TakeGroup(std::string_view& rest, std::string_view head, std::string_view& group)
{
    const std::size_t end = rest.find(')');
    if (!rest.starts_with(head) || end == std::string_view::npos || end < head.size())
        return false;
    group = rest.substr(head.size(), end - head.size());
    rest.remove_prefix(end + 1);
    return true;
}

// "5(CATEGORY*ACTION*LABEL)(VALUE)"; the four texts are escaped each for itself, so the marks
// around them are unambiguous as long as nothing is decoded.
bool AppendEvent(std::string_view expression, Parameters& parameters)
{
    std::string_view texts;
    std::string_view value;
    if (!TakeGroup(expression, "5(", texts) || !TakeGroup(expression, "(", value) ||
        !expression.empty())
        return false;
    const std::vector<std::string_view> parts = Split(texts, "*");
    if (parts.size() != 3)
        return false;
    AppendPart("utme", "event category", parts[0], parameters);
    AppendPart("utme", "event action", parts[1], parameters);
    AppendPart("utme", "event label", parts[2], parameters);
    AppendPart("utme", "event value", value, parameters);
    return true;
}

// "8(SLOT!NAME)9(SLOT!VALUE)11(SLOT!SCOPE)".
bool AppendCustomVariable(std::string_view expression, Parameters& parameters)
{
    const struct
    {
        std::string_view head;
        const char* name;
    } groups[] = {{"8(", "custom variable name"},
                  {"9(", "custom variable value"},
                  {"11(", "custom variable scope"}};
    Parameters found;
    for (const auto& [head, name] : groups)
    {
        std::string_view group;
        if (!TakeGroup(expression, head, group))
            return false;
        const std::vector<std::string_view> parts = Split(group, "!");
        if (parts.size() != 2)
            return false;
        if (found.empty())
            AppendPart("utme", "custom variable slot", parts[0], found);
        AppendPart("utme", name, parts[1], found);
    }
    if (!expression.empty())
        return false;
    parameters.insert(parameters.end(), found.begin(), found.end());
    return true;
}

// "HASH.VISITOR.FIRST.PREVIOUS.CURRENT.SESSIONS".
bool AppendVisitor(std::string_view cookie, Parameters& parameters)
{
    const std::vector<std::string_view> parts = Split(cookie, ".");
    if (parts.size() != visitorNames.size())
        return false;
    for (std::size_t index = 0; index < parts.size(); ++index)
        AppendCookiePart(visitorNames[index], parts[index], parameters);
    return true;
}

std::string_view NameCampaignPart(std::string_view part)
{
    return part == "utmcsr"   ? "campaign source"
           : part == "utmccn" ? "campaign name"
           : part == "utmcmd" ? "campaign medium"
                              : part;
}

// "HASH.TIME.SESSIONS.1.utmcsr=(S)|utmccn=(N)|utmcmd=(M)"; the parentheses are taken off.
bool AppendCampaign(std::string_view cookie, Parameters& parameters)
{
    const std::size_t start = cookie.find("utmcsr=");
    if (start == std::string_view::npos)
        return false;
    AppendCookiePart("__utmz", cookie.substr(0, start), parameters);
    for (const std::string_view part : Split(cookie.substr(start), "|"))
    {
        const std::size_t equals = part.find('=');
        std::string_view value =
            equals == std::string_view::npos ? std::string_view() : part.substr(equals + 1);
        if (value.size() >= 2 && value.starts_with('(') && value.ends_with(')'))
            value = value.substr(1, value.size() - 2);
        AppendCookiePart(NameCampaignPart(part.substr(0, equals)), value, parameters);
    }
    return true;
}

// "__utma=...;+__utmb=...;+__utmc=...;+__utmz=...".
void AppendCookies(std::string_view value, Parameters& parameters)
{
    const std::string text = DecodeText(value);
    for (const std::string_view cookie : Split(text, ";+"))
    {
        const std::size_t equals = cookie.find('=');
        const std::string_view name =
            equals == std::string_view::npos ? std::string_view("utmcc") : cookie.substr(0, equals);
        const std::string_view content =
            equals == std::string_view::npos ? cookie : cookie.substr(equals + 1);
        if ((name == "__utma" && AppendVisitor(content, parameters)) ||
            (name == "__utmz" && AppendCampaign(content, parameters)))
            continue;
        AppendCookiePart(name, content, parameters);
    }
}

} // namespace

void AppendClassic(const Piece& piece, Parameters& parameters)
{
    if (piece.name == "utme" &&
        (AppendEvent(piece.value, parameters) || AppendCustomVariable(piece.value, parameters)))
        return;
    if (piece.name == "utmcc")
        AppendCookies(piece.value, parameters);
    else
        parameters.push_back(MakeParameter(EEndpoint::Classic, piece));
}

std::string GetClassicKind(const Parameters& parameters)
{
    if (!GetValue(parameters, "custom variable slot").empty())
        return "custom variable";
    const std::string_view type = GetValue(parameters, "type");
    return type.empty() ? "pageview" : type == "tran" ? "transaction" : std::string(type);
}

} // namespace collector
