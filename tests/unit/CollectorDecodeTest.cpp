#include "tools/collector/Comparison.h"
#include "tools/collector/HitJson.h"
#include "tools/collector/HitLog.h"
#include "tools/collector/Inspector.h"
#include "tools/collector/LogLine.h"
#include "tools/collector/QueryText.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <stdexcept>

using namespace collector;

namespace {

Hit MakeHit(std::string target, std::string body = {})
{
    Hit hit;
    hit.method = body.empty() ? "GET" : "POST";
    hit.target = std::move(target);
    hit.version = "HTTP/1.1";
    hit.body = std::move(body);
    return hit;
}

// "kind: meaning=value|meaning=value|...", the whole result in one text.
std::string Decode(const std::string& target, const std::string& body = {})
{
    const HitReport report = DecodeReport(MakeHit(target, body));
    std::string text = report.kind + ':';
    for (const Parameter& parameter : report.parameters)
        text += (&parameter == &report.parameters.front() ? " " : "|") + parameter.meaning + '=' +
                parameter.decoded;
    return text;
}

// What the real trackers send, as it stands on the wire.
const std::string classicHead = "/__utm.gif?utmwv=5.4.3&utms=2&utmn=-9&utmac=UA-1&utmsr=800x600";
const std::string classicTail =
    "&utmhn=D%2E&utmcs=UTF-8&utmdt=D&utmul=de&utmr=D&aip=1&utmcc=__utma%3D7.42.100.200.300.3"
    "%3B%2B__utmb%3D7.2.10.300%3B%2B__utmc%3D7";
const std::string event = "&utmt=event&utme=5(MENU*OPEN%20%2A%20FILE*)(3)&utmp=D";
const std::string digest = "0123456789abcdef0123456789ABCDEF";
const std::string common = "v=1&tid=UA-1&aip=1&ds=host%2Eexe&cid=" + digest + "&uid=" + digest +
                           "&cs=p&cn=%28partners%29&cm=%28direct%29&sr=800x600&ul=de&cd=Tool";
const std::string kpi = "/piwik.php?send_image=0&rec=1&apiv=1&idsite=4&ua=Tool/2.0%20(Windows%20NT"
                        "%206.1;%20WOW64)&url=http://x.example&uid=" +
                        digest + "&lang=de%2Dde&rand=77&_rcn=p1&_rck=";
const std::string product = "&_cvar={\"1\":[\"product\",%20\"Disk%20Tool\"]}";

TEST(DecodeText, UndoesBothPercentForms)
{
    const struct
    {
        const char *what, *text, *expected;
    } cases[] = {
        {"nothing to do", "a+b c", "a+b c"},
        {"two digits", "a%20b%2Fc%2fd", "a b/c/d"},
        {"one digit", "a%9z%A", "a\tz\n"},
        {"bytes of UTF-8", "%E2%82%AC%C3%A9", "\xE2\x82\xAC\xC3\xA9"},
        {"bare bytes of UTF-8", "\xC3\xA9%C3\xA9", "\xC3\xA9\xC3\xA9"},
        {"a unit below 256", "caf%E9!", "caf\xC3\xA9!"},
        {"the ambiguous form is two digits", "%20AC", " AC"},
        {"four digits where two are a letter", "%4E2D", "\xE4\xB8\xAD"},
        {"two digits where four are not there", "%4E2", "N2"},
        {"surrogate pair", "%D83D%DE00", "\xF0\x9F\x98\x80"},
        {"half a pair", "%D83Dx", "\u00D83Dx"},
        {"two low halves", "%DE00%DE00", "\u00DE00\u00DE00"},
        {"overlong UTF-8", "%C0%AF", "\u00C0\u00AF"},
        {"surrogate in UTF-8", "%ED%A0%80", "\u00ED\u00A0\u0080"},
        {"cut UTF-8", "%E2%82", "\u00E2\u0082"},
        {"no digits", "100%|%g|%", "100%|%g|%"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(DecodeText(c.text), c.expected) << c.what;
}

TEST(Decode, NamesItsParametersAndLeavesWhatIsMalformed)
{
    const std::string classic =
        " version=5.4.3|session hit=2|hit number=-9|account=UA-1|screen=800x600|";
    const std::string tail =
        "|host=D.|charset=UTF-8|title=D|language=de|referrer=D|anonymise address=1|domain hash=7|"
        "visitor number=42|first visit=100|previous visit=200|current visit=300|session count=3|"
        "__utmb=7.2.10.300|__utmc=7";
    const struct
    {
        std::string target, body, expected, sentence;
    } cases[] = {
        {classicHead + event + classicTail, "",
         "event:" + classic +
             "type=event|event category=MENU|event action=OPEN * FILE|event label=|event value=3|"
             "page=D" +
             tail,
         "event MENU / OPEN * FILE, value 3"},
        {classicHead + "&utmt=event&utme=8(1!PHASH)9(1!AB%21)11(1!2)&utmp=" + classicTail, "",
         "custom variable:" + classic +
             "type=event|custom variable slot=1|custom variable name=PHASH|custom variable value="
             "AB!|custom variable scope=2|page=" +
             tail,
         "custom variable 1: PHASH = AB!"},
        {"/__utm.gif?utmt=item&utmipc=P1&utmipn=Pack%20%261&utmipr=10.00&utmiqt=3", "",
         "item: type=item|item code=P1|item name=Pack &1|unit price=10.00|quantity=3",
         "item P1 Pack &1, 3 at 10.00"},
        {"/__utm.gif?utmcc=__utmz%3D7.3.1.utmcsr=(a.b)|utmccn=(partners)|utmcmd=(unknown)", "",
         "pageview: __utmz=7.3.1.|campaign source=a.b|campaign name=partners|"
         "campaign medium=unknown",
         "pageview"},
        {kpi + product, "",
         "visit: send image=0|record=1|version=1|site id=4|user agent=Tool/2.0 (Windows NT 6.1; "
         "WOW64)|site=http://x.example|user id=" +
             digest +
             "|language=de-de|tick count=77|campaign name=p1|campaign keyword=|product=Disk Tool",
         "visit of Disk Tool"},
        {"/piwik.php?_cvar=%7B%221%22:[%22product%22,%20%225%22%20&%20%223\"]}&e_c=S&e_a=&e_v=7",
         "", "event: product=5\" & \"3|event category=S|event action=|event value=7",
         "event S, value 7"},
        {"/piwik.php?_cvar={\"2\":[\"product\",\"J\\u00e9\"]}", "", "visit: product=J\xC3\xA9",
         "visit of J\xC3\xA9"},
        {"/piwik.php?_cvar={\"1\":[1,2,[3]]}", "", "visit: _cvar={\"1\":[1,2,[3]]}", "visit"},
        {"/collect?z=9", "ti=o%5F1&t=transaction&tr=30.00&sc=start&cx&new=%31",
         "transaction: order id=o_1|hit=transaction|total=30.00|session=start&cx|new=1|cache "
         "buster=9",
         "transaction o_1, total 30.00"},
        {"/collect", "", "request:", "request"},
        {"/elsewhere?a=%21&a=2", "", "request: a=!|a=2", "GET /elsewhere"},
    };
    for (const auto& c : cases)
    {
        EXPECT_EQ(Decode(c.target, c.body), c.expected);
        EXPECT_EQ(DecodeReport(MakeHit(c.target, c.body)).sentence, c.sentence);
    }

    const struct
    {
        const char *query, *expected;
    } malformed[] = {
        {"&&=&utmp", "=&utmp"},
        {"utme=5(A*B*C", "expression=5(A*B*C"},
        {"utme=5(A*B)(1)", "expression=5(A*B)(1)"},
        {"utme=5(A*B*C)", "expression=5(A*B*C)"},
        {"utme=5(A*B*C)(1)x%21", "expression=5(A*B*C)(1)x!"},
        {"utme=5)(", "expression=5)("},
        {"utme=8(1!a)9(1)11(1!c)", "expression=8(1!a)9(1)11(1!c)"},
        {"utme=8(1!a)9(1!b)11(1!c)z", "expression=8(1!a)9(1!b)11(1!c)z"},
        {"utmcc=", "utmcc="},
        {"utmcc=__utma%3D1.2.3%3B%2B%3B%2Bx", "__utma=1.2.3|utmcc=|utmcc=x"},
        {"utmcc=__utmz%3Dutmcsr=()|utmcmd=(|z", "__utmz=|campaign source=|campaign medium=(|z="},
    };
    for (const auto& c : malformed)
        EXPECT_EQ(Decode(std::string("/__utm.gif?") + c.query),
                  std::string("pageview: ") + c.expected);
}

// "code:parameter code:parameter" of one hit.
std::string ListFindings(const HitReport& report)
{
    std::string text;
    for (const Verdict& verdict : report.verdicts)
        text += (text.empty() ? "" : " ") + verdict.code + ':' + verdict.parameter;
    return text;
}

TEST(Verdicts, HoldEachHitAgainstItsTable)
{
    const std::string classic = classicHead + event + classicTail;
    const std::string eventTail = "&e_c=a&e_a=b&e_n=&e_v=1.5";
    const std::string measured = common + "&t=event&ec=a&ea=b&ev=5";
    const struct
    {
        std::string target, body, from, to, findings;
    } cases[] = {
        {classic, "", "", "", ""},
        {kpi + product, "", "", "", ""},
        {kpi + product + eventTail, "", "", "", ""},
        {"/collect?z=-1", measured, "", "", ""},
        {"/collect?z=1", common + "&t=item&dp=%2FT&ti=o&in=P&ip=1.00&iq=-2&sc=start", "", "", ""},
        {classic, "", "&utmn=-9", "", "missing:utmn"},
        {classic, "", "&aip=1", "&aip=1&new=2", "unknown:new"},
        {kpi + product, "", "send_image", "bots=1&send_image", ""},
        {classic, "", "&utmcs=UTF-8", "&utmcs=UTF-8&utmcs=UTF-8", "repeated:utmcs"},
        {classic, "", "&utmul=de&utmr=D", "&utmr=D&utmul=de", "misplaced:utmul"},
        {classic, "", "&utmp=D", "&utmp=D&utmtid=1", "misplaced:utmtid"},
        {classic, "", "800x600", "0x600", "malformed:utmsr"},
        {classic, "", "utmt=event", "utmt=evil", "kind: misplaced:utmt misplaced:utme"},
        {classic, "", "5(MENU", "6(MENU", "malformed:utme"},
        {classic, "", ".300.3%3B", ".300.0%3B", "out-of-range:utmcc"},
        {classic, "", "42.100.200", "42.201.200", "out-of-range:utmcc"},
        {classic, "", "__utmb%3D7.2", "__utmb%3D7.3", "inconsistent:utmcc"},
        {"/collect?z=x", measured, "", "", "malformed:z"},
        {"/collect?z=1", measured, digest, "1", "malformed:cid"},
        {"/collect?z=1", measured, "&ec=a", "", "missing:ec"},
        {"/collect?z=1", common + "&t=transaction&dp=%2FT&ti=o&tr=3", "", "", "malformed:tr"},
        {kpi + product + eventTail, "", "e_v=1.5", "e_v=1&idsite=2", "repeated:idsite"},
        {kpi + product, "", "ua=Tool", "ua=Link%20Checker", "robot:ua"},
        {kpi + product, "", "ua=Tool", "ua=Botany%20Checkers", ""},
        {kpi + product, "", "ua=Tool", "ua=", "no-product:ua"},
        {kpi + product, "", "Disk%20Tool", "C++", "product-altered:_cvar"},
        {kpi + product, "", "Disk%20Tool", "100%", "product-lost:_cvar"},
        {kpi + product, "", "http://x", "x", "site-without-scheme:url"},
        {kpi + product, "", "de%2Dde", "de%5FDE", "language-country:lang"},
        {kpi + product + eventTail, "", "e_c=a", "e_c=%20%20", "blank-category:e_c"},
        {kpi + product + eventTail, "", "e_n=", "e_n=" + std::string(4097, 'x'),
         "label-too-long:e_n"},
        {kpi + product + eventTail, "", "1.5", "many", "no-number:e_v"},
        {"/collect?z=1", "", "", "",
         "method: kind: missing:v missing:tid missing:aip missing:ds missing:cid missing:uid "
         "missing:cs missing:cn missing:cm missing:sr missing:ul missing:cd missing:t"},
        {"/elsewhere", "", "", "", "address:"},
    };
    for (const auto& c : cases)
    {
        std::string target = c.target;
        std::string body = c.body;
        std::string& changed = body.empty() ? target : body;
        if (!c.from.empty())
            changed.replace(changed.find(c.from), c.from.size(), c.to);
        EXPECT_EQ(ListFindings(DecodeReport(MakeHit(target, body))), c.findings)
            << target << ' ' << body;
    }
}

TEST(Course, FollowsEachVisitor)
{
    // utms, visitor, start of the session, number of the session
    const auto classic = [](const char* hit, const char* visitor, const char* visit,
                            const char* session, const std::string& middle = "&utmp=D") {
        return std::string("/__utm.gif?utms=") + hit + middle + "&utmdt=D&utmcc=__utma%3D7." +
               visitor + ".1.1." + visit + '.' + session;
    };
    const auto measured = [](const char* body) { return "cid=c&" + std::string(body); };
    const std::string sale = "&utmt=tran&utmtid=7&";
    const struct
    {
        int second;
        std::string target, body, session, findings;
    } cases[] = {
        {0, classic("4", "42", "5", "2"), "", "2", ""},
        {1, classic("5", "42", "5", "2"), "", "2", ""},
        {1, classic("5", "42", "5", "2"), "", "2", "twice"},
        {2, classic("8", "42", "5", "2"), "", "2", "counter-jump"},
        {3, classic("6", "42", "5", "2"), "", "2", "counter-backwards"},
        {4, classic("1", "42", "6", "3"), "", "3", ""},
        {5, classic("1", "42", "7", "3"), "", "3", ""}, // a start that was taken back
        {6, classic("1", "42", "9", "5"), "", "5", "session-jump"},
        {7, classic("1", "42", "9", "4"), "", "4", "session-backwards"},
        {8, classic("2", "43", "9", "4"), "", "4", "visitor-changed"},
        {9, classic("3", "43", "9", "4", "&utmt=item&utmtid="), "", "4", "lone-item"},
        {9, classic("4", "43", "9", "4", sale), "", "4", ""},
        {9, classic("5", "43", "9", "4", "&utmt=item&utmtid="), "", "4", ""},
        {9, classic("6", "43", "9", "4", "&utmt=item&utmtid=8"), "", "4", "lone-item"},
        {10, "/collect", measured("t=pageview"), "1", ""},
        {1810, "/collect", measured("t=pageview&z=1"), "1", ""},
        {3611, "/collect", measured("t=pageview"), "2", ""},
        {3612, "/collect", measured("t=pageview&sc=start"), "3", ""},
    };
    CInspector inspector;
    for (const auto& c : cases)
    {
        Hit hit = MakeHit(c.target, c.body);
        hit.connection = 1;
        hit.time += std::chrono::seconds(c.second);
        const HitReport report = inspector.Inspect(hit);
        std::string findings;
        for (const Verdict& verdict : report.verdicts)
            for (const char* code : {"twice", "counter-", "session-", "visitor-", "lone-"})
                findings += verdict.code.starts_with(code) ? verdict.code : "";
        EXPECT_EQ(report.session + ' ' + findings, c.session + ' ' + c.findings) << c.target;
    }
    std::string sentences;
    for (const char* rand : {"1", "2", "3"})
    {
        const HitReport report =
            inspector.Inspect(MakeHit(std::string("/piwik.php?uid=u&url=x&e_c=a&rand=") + rand));
        sentences += report.sentence + ' ' + ListFindings(report).substr(0, 3) +
                     (ListFindings(report).find("site-without") != std::string::npos ? "!|" : "|");
    }
    EXPECT_EQ(sentences, "event a mal!|event a, second time mal|event a, third time mal|");
}

TEST(LogLine, ReadsWhatWebServersWrite)
{
    const std::string time = "10.0.0.1 - - [10/Oct/2023:13:55:36 -0730] ";
    const std::string rest = " 204 0 \"-\" \"Tool/2 (W)\"";
    const struct
    {
        std::string line, expected; // second|method|target|version|agent|body
    } cases[] = {
        {time + R"("GET /piwik.php?_cvar={\x221\x22:[\x22p\x22,%20\x22a\x5Cb\x22]} HTTP/1.1")" +
             rest,
         R"(1696973136|GET|/piwik.php?_cvar={"1":["p",%20"a\b"]}|HTTP/1.1|Tool/2 (W)|)"},
        {"h:443 " + time + R"("GET /piwik.php?_cvar={\"1\"} \\ b HTTP/1.1")" + rest,
         R"(1696973136|GET|/piwik.php?_cvar={"1"} \ b|HTTP/1.1|Tool/2 (W)|)"},
        {time + "\"POST /collect?z=1 HTTP/1.1\"" + rest + R"( "v=1\xC3\xA9&t=\x0A")",
         "1696973136|POST|/collect?z=1|HTTP/1.1|Tool/2 (W)|v=1\u00E9&t=\n"},
        {time + "\"GET /x HTTP/1.0\" 200 1", "1696973136|GET|/x|HTTP/1.0||"},
        {R"({"time":1500,"request":{"method":"GET","target":"/a"}})", "1|GET|/a|||"},
        {time + "\"\\x16\\x03\" 400 0", ""},
        {time + "\"GET /x HTTP/1.0", ""},
        {"h - - [99/Foo/2023:13:55:36 -0730] \"GET /x HTTP/1.0\"", ""},
        {"{}", ""},
        {"\\", ""},
    };
    for (const auto& c : cases)
    {
        const std::optional<Hit> hit = ReadLogLine(c.line);
        std::string text;
        if (hit)
            text = std::to_string(std::chrono::system_clock::to_time_t(hit->time)) + '|' +
                   hit->method + '|' + hit->target + '|' + hit->version + '|' +
                   FindHeader(*hit, "User-Agent") + '|' + hit->body;
        EXPECT_EQ(text, c.expected) << c.line;
    }
}

HitReport MakeEvent(std::uint64_t id, const char* action)
{
    HitReport report = DecodeReport(MakeHit(std::string("/piwik.php?e_c=Scan&e_a=") + action));
    report.id = id;
    report.verdicts.clear();
    return report;
}

TEST(Plan, IsComparedWithTheHitsThatCame)
{
    const std::vector<HitReport> hits = {MakeEvent(1, "Start"), MakeEvent(2, "Step"),
                                         MakeEvent(3, "Step"), MakeEvent(4, "Stop")};
    const std::string start = "KPI event with event action = Start\n";
    const std::string steps = "KPI event with event action = Step\n";
    const std::string stop = "once KPI ev*t with event category = \"Scan\", e_a = S*op\n";
    const struct
    {
        std::string plan, problems;
    } cases[] = {
        {start + "# and\n\n2 times " + steps + stop, ""},
        {"at most 2 times * * with product =\n2 times KPI *", ""},
        {start + "at least 1 time " + steps + stop, ""},
        {start + "1 to 3 times " + steps + stop, ""},
        {"at most 9 times KPI *\n" + stop, ""},
        {"others allowed\n" + stop, ""},
        {"in any order\n" + stop + "2 times " + steps + start, ""},
        {stop + "2 times " + steps + start,
         "1: missing: 0 of 1 came; nearest is #4 KPI event Scan / Stop, but it comes in another "
         "order|3: missing: 0 of 1 came; nearest is #1 KPI event Scan / Start, but it comes in "
         "another order|unexpected: #1 KPI event Scan / Start|unexpected: #4 KPI event Scan / "
         "Stop"},
        {start + "3 times " + steps + stop, "2: missing: 2 of 3 came"},
        {"never * * with verdict = error\nat most 3 times KPI *",
         "unexpected: #4 KPI event Scan / Stop"},
        {"others allowed\nnever KPI * with e_a = *op", "2: forbidden: #4 KPI event Scan / Stop"},
        {"others allowed\nclassic pageview", "2: missing: 0 of 1 came"},
        {"others allowed\nKPI * with e_a = Start, code = robot, event label = x",
         "2: missing: 0 of 1 came; nearest is #1 KPI event Scan / Start, but code is missing, "
         "event "
         "label is missing"},
    };
    for (const auto& c : cases)
    {
        const Plan plan = ParsePlan(c.plan);
        std::string problems;
        for (const PlanResult& result : Compare(plan, hits))
            for (const std::string& problem : result.problems)
                problems += (problems.empty() ? "" : "|") +
                            (result.line ? std::to_string(result.line->number) + ": " : "") +
                            problem;
        EXPECT_EQ(problems, c.problems) << c.plan;
    }
    const std::pair<const char*, const char*> mistakes[] = {
        {"\nGET x", "plan line 2: \"GET\" is neither classic, measurement, KPI, other nor *"},
        {"once KPI", "plan line 1: the kind of hit is missing"},
        {"2 KPI event", "plan line 1: \"times\" is missing behind the number"},
        {"at most x times KPI event", "plan line 1: \"x\" is no number from 0 to 1000"},
        {"KPI event with action", "plan line 1: \"action\" is no NAME = VALUE"},
    };
    for (const auto& [text, message] : mistakes)
        try
        {
            ParsePlan(text);
            ADD_FAILURE() << text;
        }
        catch (const std::invalid_argument& problem)
        {
            EXPECT_STREQ(problem.what(), message);
        }
}

TEST(HitLog, WritesJsonAndReadableText)
{
    ::setenv("TZ", "UTC", 1);
    const std::string ys(301, 'y');
    Hit hit = MakeHit("/x?a=%1B[31m&a=\xFF&long=" + ys, "\xFF\"\n");
    hit.time = std::chrono::system_clock::time_point(std::chrono::milliseconds(1700000000007));
    hit.headers = {{"Host", "h"}, {"Host", "i"}};
    HitReport report = DecodeReport(hit);
    report.id = 3;
    EXPECT_TRUE(
        WriteLine(report) ==
        R"({"id":3,"time":1700000000007,"tracker":"other","endpoint":"/x","kind":"request",)"
        R"("product":"","visitor":"","session":"","sentence":"POST /x","verdict":"warning",)"
        R"("codes":["address"],"connection":0,"verdicts":[{"severity":"warning","code":"address",)"
        R"("parameter":"","explanation":"No tracker sends to this address."}],"fields":{"a":)"
        R"("\u001b[31m","long":")" +
            ys +
            R"("},"headers":[["Host","h"],["Host","i"]],"request":{"method":"POST","target":)"
            R"("/x?a=%1B[31m&a=)"
            "\uFFFD&long=" +
            ys + R"(","version":"HTTP/1.1","body":")" + "\uFFFD" + R"(\"\n"}})")
        << WriteLine(report);
    const Hit read = ReadLine(WriteLine(report));
    EXPECT_EQ(read.method + read.target.substr(0, 12) + read.headers[1].value, "POST/x?a=%1B[31mi");
    EXPECT_TRUE(read.time == hit.time);
    EXPECT_TRUE(WriteReadable(report, false) ==
                "#3 22:13:20 other  POST /x\n    warning: No tracker sends to this address.\n"
                "    a     ?[31m\n    a     \u00FF\n    long  " +
                    ys.substr(0, 300) + "... (301 bytes)\n")
        << WriteReadable(report, false);
}

} // namespace
