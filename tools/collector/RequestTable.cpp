#include "tools/collector/RequestTable.h"

#include <algorithm>
#include <cctype>

namespace collector {

namespace {

bool IsDigits(std::string_view text)
{
    return !text.empty() && std::all_of(text.begin(), text.end(),
                                        [](unsigned char unit) { return std::isdigit(unit) != 0; });
}

bool IsHexDigest(std::string_view text)
{
    return text.size() == 32 && std::all_of(text.begin(), text.end(), [](unsigned char unit) {
               return std::isxdigit(unit) != 0;
           });
}

bool IsCount(std::string_view text)
{
    return IsDigits(text) && text.find_first_not_of('0') != std::string_view::npos;
}

bool IsAmount(std::string_view text)
{
    const std::size_t point = text.find('.');
    return point != std::string_view::npos && text.size() == point + 3 &&
           IsWholeNumber(text.substr(0, point)) && IsDigits(text.substr(point + 1));
}

bool IsScreen(std::string_view text)
{
    const std::size_t cross = text.find('x');
    return cross != std::string_view::npos && IsCount(text.substr(0, cross)) &&
           IsCount(text.substr(cross + 1));
}

bool IsExpression(std::string_view text)
{
    return (text.starts_with("5(") || text.starts_with("8(")) && text.ends_with(')');
}

bool IsUserAgent(std::string_view text)
{
    return text.find('/') != std::string_view::npos && text.ends_with(')') &&
           text.find(" (") != std::string_view::npos;
}

constexpr Form someText{"a text", [](std::string_view text) { return !text.empty(); }};
constexpr Form whole{"a whole number", IsWholeNumber};
constexpr Form digits{"a number of digits only", IsDigits};
constexpr Form count{"a number from 1 on", IsCount};
constexpr Form amount{"an amount with two decimals", IsAmount};
constexpr Form screen{"WIDTHxHEIGHT", IsScreen};
constexpr Form digest{"32 hexadecimal digits", IsHexDigest};
constexpr Form userNumber{"a text of 32 units",
                          [](std::string_view text) { return text.size() == 32; }};
constexpr Form expression{"5(CATEGORY*ACTION*LABEL)(VALUE) or 8(...)9(...)11(...)", IsExpression};
constexpr Form userAgent{"PRODUCT/VERSION (SYSTEM)", IsUserAgent};
constexpr Form one{"1", [](std::string_view text) { return text == "1"; }};
constexpr Form zero{"0", [](std::string_view text) { return text == "0"; }};
constexpr Form nothingShipped{"0.00", [](std::string_view text) { return text == "0.00"; }};
constexpr Form protocolVersion{"5.4.3", [](std::string_view text) { return text == "5.4.3"; }};
constexpr Form charset{"UTF-8", [](std::string_view text) { return text == "UTF-8"; }};
constexpr Form campaign{"(partners)", [](std::string_view text) { return text == "(partners)"; }};
constexpr Form direct{"(direct)", [](std::string_view text) { return text == "(direct)"; }};
constexpr Form start{"start", [](std::string_view text) { return text == "start"; }};
constexpr Form path{"a page that begins with /",
                    [](std::string_view text) { return text.starts_with('/'); }};

constexpr ParameterRule classic[] = {
    {"utmwv", "version", &protocolVersion},
    {"utms", "session hit", &count},
    {"utmn", "hit number", &whole},
    {"utmac", "account", &someText},
    {"utmsr", "screen", &screen},
    {"utmt", "type", &someText, "event,custom variable,transaction,item"},
    {"utme", "expression", &expression, "event,custom variable"},
    {"utmp", "page", nullptr},
    {"utmtid", "order id", nullptr, "transaction,item"},
    {"utmtst", "store", nullptr, "transaction"},
    {"utmtto", "total", &amount, "transaction"},
    {"utmtsp", "shipping", &nothingShipped, "transaction"},
    {"utmttx", "tax", &amount, "transaction"},
    {"utmipc", "item code", nullptr, "item"},
    {"utmipn", "item name", nullptr, "item"},
    {"utmipr", "unit price", &amount, "item"},
    {"utmiqt", "quantity", &whole, "item"},
    {"utmiva", "item variation", nullptr, "item"},
    {"utmhn", "host", nullptr},
    {"utmcs", "charset", &charset},
    {"utmdt", "title", nullptr},
    {"utmul", "language", nullptr},
    {"utmr", "referrer", nullptr},
    {"aip", "anonymise address", &one},
    {"utmcc", "cookies", nullptr},
};

constexpr ParameterRule measurement[] = {
    {"v", "version", &someText},
    {"tid", "tracking id", &someText},
    {"aip", "anonymise address", &one},
    {"ds", "data source", &someText},
    {"cid", "client id", &digest},
    {"uid", "user id", &digest},
    {"cs", "campaign source", nullptr},
    {"cn", "campaign name", &campaign},
    {"cm", "campaign medium", &direct},
    {"sr", "screen", &screen},
    {"ul", "language", nullptr},
    {"cd", "screen name", nullptr},
    {"t", "hit", &someText},
    {"ec", "event category", nullptr, "event"},
    {"ea", "event action", nullptr, "event"},
    {"el", "event label", &someText, "event", true},
    {"ev", "event value", &someText, "event", true},
    {"dp", "page", &path, "pageview,transaction,item"},
    {"ti", "order id", &someText, "transaction,item"},
    {"ta", "affiliation", &someText, "transaction,item", true},
    {"tr", "total", &amount, "transaction"},
    {"in", "item name", nullptr, "item"},
    {"ip", "unit price", &amount, "item"},
    {"iq", "quantity", &whole, "item"},
    {"sc", "session", &start, "*", true},
    {"z", "cache buster", &whole},
};

// Parts of "utmcc", which is made of the cookies __utma, __utmb, __utmc and perhaps __utmz.
constexpr ParameterRule visitorParts[] = {
    {"utmcc", "domain hash", &digits},   {"utmcc", "visitor number", &digits},
    {"utmcc", "first visit", &digits},   {"utmcc", "previous visit", &digits},
    {"utmcc", "current visit", &digits}, {"utmcc", "session count", &whole},
    {"utmcc", "__utmb", &someText},      {"utmcc", "__utmc", &digits},
};

constexpr ParameterRule kpi[] = {
    {"send_image", "send image", &zero},
    {"rec", "record", &one},
    {"apiv", "version", &one},
    {"idsite", "site id", &digits},
    {"ua", "user agent", &userAgent},
    {"url", "site", &someText},
    {"uid", "user id", &userNumber},
    {"lang", "language", nullptr},
    {"rand", "tick count", &whole},
    {"_rcn", "campaign name", nullptr},
    {"_rck", "campaign keyword", nullptr},
    {"_cvar", "product", nullptr},
    {"e_c", "event category", nullptr, "event"},
    {"e_a", "event action", nullptr, "event"},
    {"e_n", "event label", nullptr, "event"},
    {"e_v", "event value", nullptr, "event"},
};

} // namespace

bool IsWholeNumber(std::string_view text)
{
    return IsDigits(text.starts_with('-') ? text.substr(1) : text);
}

std::span<const ParameterRule> GetTable(EEndpoint endpoint)
{
    switch (endpoint)
    {
    case EEndpoint::Classic:
        return classic;
    case EEndpoint::Measurement:
        return measurement;
    case EEndpoint::Kpi:
        return kpi;
    case EEndpoint::Other:
        break;
    }
    return {};
}

std::span<const ParameterRule> GetVisitorParts() { return visitorParts; }

const ParameterRule* FindRule(EEndpoint endpoint, std::string_view parameter)
{
    for (const ParameterRule& rule : GetTable(endpoint))
        if (rule.name == parameter)
            return &rule;
    return nullptr;
}

bool BelongsTo(const ParameterRule& rule, std::string_view kind)
{
    if (rule.kinds == "*")
        return true;
    for (std::string_view rest = rule.kinds; !rest.empty();)
    {
        const std::size_t comma = rest.find(',');
        if (rest.substr(0, comma) == kind)
            return true;
        rest = comma == std::string_view::npos ? std::string_view() : rest.substr(comma + 1);
    }
    return false;
}

} // namespace collector
