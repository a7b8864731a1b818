#include "tools/collector/ClassicFields.h"

#include "tools/collector/FieldNames.h"

#include <array>

namespace collector {

namespace {

constexpr FieldName names[] = {
    {"utmwv", "version"},
    {"utms", "session hit"},
    {"utmn", "hit number"},
    {"utmac", "account"},
    {"utmsr", "screen"},
    {"utmt", "type"},
    {"utmp", "page"},
    {"utmhn", "host"},
    {"utmcs", "charset"},
    {"utmdt", "title"},
    {"utmul", "language"},
    {"utmr", "referrer"},
    {"utmtid", "order id"},
    {"utmtst", "store"},
    {"utmtto", "total"},
    {"utmtsp", "shipping"},
    {"utmttx", "tax"},
    {"utmipc", "item code"},
    {"utmipn", "item name"},
    {"utmipr", "unit price"},
    {"utmiqt", "quantity"},
    {"utmiva", "item variation"},
    {"aip", "anonymise address"},
};

constexpr FieldName campaignNames[] = {
    {"utmcsr", "campaign source"},
    {"utmccn", "campaign name"},
    {"utmcmd", "campaign medium"},
};

constexpr std::array<const char*, 6> visitorNames = {"domain hash",   "visitor number",
                                                     "first visit",   "previous visit",
                                                     "current visit", "session count"};

using Fields = std::vector<Field>;

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
bool AppendEvent(std::string_view expression, Fields& fields)
{
    std::string_view texts;
    std::string_view value;
    if (!TakeGroup(expression, "5(", texts) || !TakeGroup(expression, "(", value) ||
        !expression.empty())
        return false;
    const std::vector<std::string_view> parts = Split(texts, "*");
    if (parts.size() != 3)
        return false;
    fields.push_back({"event category", DecodeText(parts[0])});
    fields.push_back({"event action", DecodeText(parts[1])});
    fields.push_back({"event label", DecodeText(parts[2])});
    fields.push_back({"event value", DecodeText(value)});
    return true;
}

// "8(SLOT!NAME)9(SLOT!VALUE)11(SLOT!SCOPE)".
bool AppendCustomVariable(std::string_view expression, Fields& fields)
{
    const struct
    {
        std::string_view head;
        const char* name;
    } groups[] = {{"8(", "custom variable name"},
                  {"9(", "custom variable value"},
                  {"11(", "custom variable scope"}};
    Fields found;
    for (const auto& [head, name] : groups)
    {
        std::string_view group;
        if (!TakeGroup(expression, head, group))
            return false;
        const std::vector<std::string_view> parts = Split(group, "!");
        if (parts.size() != 2)
            return false;
        if (found.empty())
            found.push_back({"custom variable slot", DecodeText(parts[0])});
        found.push_back({name, DecodeText(parts[1])});
    }
    if (!expression.empty())
        return false;
    fields.insert(fields.end(), found.begin(), found.end());
    return true;
}

void AppendExpression(const Field& piece, Fields& fields)
{
    if (!AppendEvent(piece.value, fields) && !AppendCustomVariable(piece.value, fields))
        fields.push_back({piece.name, DecodeText(piece.value)});
}

// "HASH.VISITOR.FIRST.PREVIOUS.CURRENT.SESSIONS".
bool AppendVisitor(std::string_view cookie, Fields& fields)
{
    const std::vector<std::string_view> parts = Split(cookie, ".");
    if (parts.size() != visitorNames.size())
        return false;
    for (std::size_t index = 0; index < parts.size(); ++index)
        fields.push_back({visitorNames[index], std::string(parts[index])});
    return true;
}

// "HASH.TIME.SESSIONS.1.utmcsr=(S)|utmccn=(N)|utmcmd=(M)"; the parentheses are taken off.
bool AppendCampaign(std::string_view cookie, Fields& fields)
{
    const std::size_t start = cookie.find("utmcsr=");
    if (start == std::string_view::npos)
        return false;
    fields.push_back({"__utmz", std::string(cookie.substr(0, start))});
    for (const std::string_view part : Split(cookie.substr(start), "|"))
    {
        const std::size_t equals = part.find('=');
        std::string_view value =
            equals == std::string_view::npos ? std::string_view() : part.substr(equals + 1);
        if (value.size() >= 2 && value.starts_with('(') && value.ends_with(')'))
            value = value.substr(1, value.size() - 2);
        fields.push_back(
            {std::string(NameField(part.substr(0, equals), campaignNames)), std::string(value)});
    }
    return true;
}

// "__utma=...;+__utmb=...;+__utmc=...;+__utmz=...".
void AppendCookies(const Field& piece, Fields& fields)
{
    const std::string text = DecodeText(piece.value);
    for (const std::string_view cookie : Split(text, ";+"))
    {
        const std::size_t equals = cookie.find('=');
        const std::string_view name = equals == std::string_view::npos
                                          ? std::string_view(piece.name)
                                          : cookie.substr(0, equals);
        const std::string_view value =
            equals == std::string_view::npos ? cookie : cookie.substr(equals + 1);
        if ((name == "__utma" && AppendVisitor(value, fields)) ||
            (name == "__utmz" && AppendCampaign(value, fields)))
            continue;
        fields.push_back({std::string(name), std::string(value)});
    }
}

std::string GetKind(const DecodedHit& hit)
{
    const std::string type = GetField(hit, "type");
    if (!GetField(hit, "custom variable slot").empty())
        return "custom variable";
    return type.empty() ? "pageview" : type == "tran" ? "transaction" : type;
}

} // namespace

DecodedHit DecodeClassic(const std::vector<Field>& query)
{
    DecodedHit decoded{EEndpoint::Classic, {}, {}};
    for (const Field& piece : query)
        if (piece.name == "utme")
            AppendExpression(piece, decoded.fields);
        else if (piece.name == "utmcc")
            AppendCookies(piece, decoded.fields);
        else
            decoded.fields.push_back(
                {std::string(NameField(piece.name, names)), DecodeText(piece.value)});
    decoded.kind = GetKind(decoded);
    return decoded;
}

} // namespace collector
