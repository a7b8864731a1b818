#include "tools/collector/Comparison.h"
#include "tools/collector/HitJson.h"
#include "tools/collector/HitLog.h"
#include "tools/collector/Inspector.h"
#include "tools/collector/LogLine.h"
#include "tools/collector/QueryText.h"

#include <cstdlib>
#include <gmock/gmock.h>
#include <stdexcept>

using namespace collector;

namespace {

// A GET of "TARGET", a POST of "TARGET\nBODY".
Hit MakeHit(const std::string& request)
{
    const std::size_t end = request.find('\n');
    if (end == request.npos)
        return {0, 0, {}, "GET", request, "HTTP/1.1", {}, {}};
    return {0, 0, {}, "POST", request.substr(0, end), "HTTP/1.1", {}, request.substr(end + 1)};
}

// What the real trackers send, as it stands on the wire.
const std::string digest = "0123456789abcdef0123456789ABCDEF";
const std::string classic =
    "/__utm.gif?utmwv=5.4.3&utms=2&utmn=-9&utmac=UA-1&utmsr=800x600&utmt=event&utme=5(MENU*OPEN%20"
    "%2A%20FILE*)(3)&utmp=D&utmhn=D%2E&utmcs=UTF-8&utmdt=D&utmul=de&utmr=D&aip=1&utmcc=__utma%3D7."
    "42.100.200.300.3%3B%2B__utmb%3D7.2.10.300%3B%2B__utmc%3D7";
const std::string measured = "/collect?z=1\nv=1&tid=UA-1&aip=1&ds=host%2Eexe&cid=" + digest +
                             "&uid=" + digest +
                             "&cs=p&cn=%28partners%29&cm=%28direct%29&sr=800x600&ul=de&cd=Tool";
const std::string visit =
    "/piwik.php?send_image=0&rec=1&apiv=1&idsite=4&ua=Tool/2.0%20(Windows%20NT%206.1;%20WOW64)"
    "&url=http://x.example&uid=" +
    digest + "&lang=de%2Dde&rand=77&_rcn=p1&_rck=&_cvar={\"1\":[\"product\",%20\"Disk%20Tool\"]}";

TEST(DecodeText, UndoesBothPercentForms)
{
    const std::pair<const char*, const char*> cases[] = {
        {"a+b c", "a+b c"},
        {"a%20b%2Fc%2fd|a%9z|%20AC|100%|%g|%", "a b/c/d|a\tz| AC|100%|%g|%"},
        {"%E2%82%AC|\xC3\xA9%C3\xA9|caf%E9!", "\xE2\x82\xAC|\xC3\xA9\xC3\xA9|caf\xC3\xA9!"},
        {"%4E2D|%D83D%DE00|%4E2", "\xE4\xB8\xAD|\xF0\x9F\x98\x80|N2"},
        {"%D83Dx|%DE00%DE00", "\u00D83Dx|\u00DE00\u00DE00"},     // halves of pairs
        {"%C0%AF|%ED%A0%80", "\u00C0\u00AF|\u00ED\u00A0\u0080"}, // too long, and half a pair
        {"%A%E2%82", "\n\u00E2\u0082"},
    };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(DecodeText(text), expected) << text;
}

TEST(Decode, NamesItsParametersAndLeavesWhatIsMalformed)
{
    const std::pair<const char*, const char*> cases[] = {
        {"/__utm.gif?utmt=event&utme=5(MENU*OPEN%20%2A%20FILE*)(3)",
         "event: type=event|event category=MENU|event action=OPEN * FILE|event label=|event "
         "value=3| (event MENU / OPEN * FILE, value 3)"},
        {"/__utm.gif?utmt=event&utme=8(1!PHASH)9(1!AB%21)11(1!2)&utmp=",
         "custom variable: type=event|custom variable slot=1|custom variable name=PHASH|custom "
         "variable value=AB!|custom variable scope=2|page=| (custom variable 1: PHASH = AB!)"},
        {"/__utm.gif?utmt=item&utmipc=P1&utmipn=Pack%20%261&utmipr=10.00&utmiqt=3",
         "item: type=item|item code=P1|item name=Pack &1|unit price=10.00|quantity=3| (item P1 "
         "Pack &1, 3 at 10.00)"},
        {"/__utm.gif?utmcc=__utmz%3D7.3.1.utmcsr=(a.b)|utmccn=(partners)|utmcmd=(unknown)",
         "pageview: __utmz=7.3.1.|campaign source=a.b|campaign name=partners|campaign "
         "medium=unknown| (pageview)"},
        {"/piwik.php?uid=u&_rck=&_cvar={\"1\":[\"product\",%20\"Disk%20Tool\"]}",
         "visit: user id=u|campaign keyword=|product=Disk Tool| (visit of Disk Tool)"},
        {"/piwik.php?_cvar=%7B%221%22:[%22product%22,%20%225%22%20&%20%223\"]}&e_c=S&e_a=&e_v=7",
         "event: product=5\" & \"3|event category=S|event action=|event value=7| (event S, value "
         "7)"},
        {"/piwik.php?_cvar={\"2\":[\"product\",\"J\\u00e9\"]}",
         "visit: product=J\xC3\xA9| (visit of J\xC3\xA9)"},
        {"/piwik.php?_cvar={\"1\":[1,2,[3]]}", "visit: _cvar={\"1\":[1,2,[3]]}| (visit)"},
        {"/collect?z=9\nti=o%5F1&t=transaction&tr=30.00&sc=start&cx&new=%31",
         "transaction: order id=o_1|hit=transaction|total=30.00|session=start&cx|new=1|cache "
         "buster=9| (transaction o_1, total 30.00)"},
        {"/collect", "request:  (request)"},
        {"/__utm.gif?&&=&utmp", "pageview: =&utmp| (pageview)"},
        {"/__utm.gif?utme=5(A*B*C&utme=5(A*B)(1)&utme=5(A*B*C)(1)x%21&utme=5)(",
         "pageview: expression=5(A*B*C|expression=5(A*B)(1)|expression=5(A*B*C)(1)x!|expression="
         "5)(| (pageview)"},
        {"/__utm.gif?utme=8(1!a)9(1)11(1!c)&utme=8(1!a)9(1!b)11(1!c)z",
         "pageview: expression=8(1!a)9(1)11(1!c)|expression=8(1!a)9(1!b)11(1!c)z| (pageview)"},
        {"/__utm.gif?utmcc=&utmcc=__utma%3D1.2.3%3B%2B%3B%2Bx&utmcc=__utmz%3Dutmcsr=()|utmcmd=(|z",
         "pageview: utmcc=|__utma=1.2.3|utmcc=|utmcc=x|__utmz=|campaign source=|campaign "
         "medium=(|z=| (pageview)"},
        {"/elsewhere?a=%21&a=2", "request: a=!|a=2| (GET /elsewhere)"},
    };
    for (const auto& [request, expected] : cases)
    {
        const HitReport report = DecodeReport(MakeHit(request));
        std::string text = report.kind + ": ";
        for (const Parameter& parameter : report.parameters)
            text += parameter.meaning + '=' + parameter.decoded + '|';
        EXPECT_EQ(text + " (" + report.sentence + ')', expected);
    }
}

TEST(Verdicts, HoldEachHitAgainstItsTable)
{
    const std::string happening = visit + "&e_c=a&e_a=b&e_n=&e_v=1.5";
    const struct
    {
        std::string request, from, to, findings;
    } cases[] = {
        {classic, "", "", ""},
        {happening, "", "", ""},
        {measured + "&t=item&dp=%2FT&ti=o&in=P&ip=1.00&iq=-2&sc=start", "z=1", "z=-1", ""},
        {classic, "&utmn=-9", "", "missing:utmn"},
        {classic, "&utmul=de&utmr=D&aip=1", "&utmr=D&utmul=de&aip=1&new=2&aip=1&utmtid=1",
         "misplaced:utmul unknown:new repeated:aip misplaced:utmtid"},
        {classic, "800x600", "0x600", "malformed:utmsr"},
        {classic, "utmt=event", "utmt=evil", "kind: misplaced:utmt misplaced:utme"},
        {classic, "5(MENU", "6(MENU", "malformed:utme"},
        {classic, ".300.3%3B", ".300.0%3B", "out-of-range:utmcc"},
        {classic, "42.100.200", "42.201.200", "out-of-range:utmcc"},
        {classic, "__utmb%3D7.2", "__utmb%3D7.3", "inconsistent:utmcc"},
        {measured + "&t=event&ec=a&ea=b", digest, "1", "malformed:cid"},
        {measured + "&t=event&ea=b&ev=5", "z=1", "z=x", "malformed:z missing:ec"},
        {measured + "&t=transaction&dp=%2FT&ti=o&tr=3", "", "", "malformed:tr"},
        {visit, "send_image", "bots=1&send_image", ""},
        {visit, "ua=Tool", "ua=Link%20Checker", "robot:ua"},
        {visit, "ua=Tool", "ua=Botany%20Checkers", ""},
        {visit, "ua=Tool", "ua=", "no-product:ua"},
        {visit, "Disk%20Tool", "C++", "product-altered:_cvar"},
        {visit, "Disk%20Tool", "100%", "product-lost:_cvar"},
        {visit, "http://x", "x", "site-without-scheme:url"},
        {visit, "de%2Dde", "de%5FDE", "language-country:lang"},
        {happening, "a&e_a=b&e_n=&e_v=1.5",
         "%20%20&e_a=b&e_n=" + std::string(4095, 'x') + "%F0%90%80%80&e_v=many&idsite=2",
         "repeated:idsite blank-category:e_c label-too-long:e_n no-number:e_v"},
        {"/collect?z=1", "", "",
         "method: kind: missing:v missing:tid missing:aip missing:ds missing:cid missing:uid "
         "missing:cs missing:cn missing:cm missing:sr missing:ul missing:cd missing:t"},
        {"/elsewhere", "", "", "address:"},
    };
    for (const auto& c : cases)
    {
        std::string request = c.request;
        request.replace(request.find(c.from), c.from.size(), c.to);
        std::string findings;
        for (const Verdict& verdict : DecodeReport(MakeHit(request)).verdicts)
            findings += (findings.empty() ? "" : " ") + verdict.code + ':' + verdict.parameter;
        EXPECT_EQ(findings, c.findings) << request;
    }
}

// The session, and what the hit's place in the course of its visitor adds to codes and sentence.
TEST(Course, FollowsEachVisitor)
{
    // utms, visitor, start of the session, number of the session
    const auto ofVisit = [](const char* hit, const char* visitor, const char* start,
                            const char* session, const std::string& middle = "&utmp=D") {
        return std::string("/__utm.gif?utms=") + hit + middle + "&utmdt=D&utmcc=__utma%3D7." +
               visitor + ".1.1." + start + '.' + session;
    };
    const std::string item = "&utmt=item&utmtid=";
    const std::string scan = "/piwik.php?uid=u&url=x&e_c=a&rand=";
    const struct
    {
        int second;
        std::string request, expected;
    } cases[] = {
        {0, ofVisit("4", "42", "5", "2"), "2"},
        {1, ofVisit("5", "42", "5", "2"), "2"},
        {1, ofVisit("5", "42", "5", "2"), "2 twice"},
        {2, ofVisit("8", "42", "5", "2"), "2 counter-jump"},
        {3, ofVisit("6", "42", "5", "2"), "2 counter-backwards"},
        {4, ofVisit("1", "42", "6", "3"), "3"},
        {5, ofVisit("1", "42", "7", "3"), "3"}, // a start that was taken back
        {6, ofVisit("1", "42", "9", "5"), "5 session-jump"},
        {7, ofVisit("1", "42", "9", "4"), "4 session-backwards"},
        {8, ofVisit("2", "43", "9", "4"), "4 visitor-changed"},
        {9, ofVisit("3", "43", "9", "4", item), "4 lone-item"},
        {9, ofVisit("4", "43", "9", "4", "&utmt=tran&utmtid=7"), "4"},
        {9, ofVisit("5", "43", "9", "4", item), "4"},
        {9, ofVisit("6", "43", "9", "4", item + '8'), "4 lone-item"},
        {10, "/collect\ncid=c&t=pageview", "1"},
        {1810, "/collect\ncid=c&t=pageview&z=1", "1"},
        {3611, "/collect\ncid=c&t=pageview", "2"},
        {3612, "/collect\ncid=c&t=pageview&sc=start", "3"},
        {3613, scan + '1', "1 site-without-scheme"}, // said once
        {3613, scan + '2', "1, second time"},
        {3613, scan + '3', "1, third time"},
    };
    CInspector inspector;
    for (const auto& c : cases)
    {
        Hit hit = MakeHit(c.request);
        hit.connection = 1;
        hit.time += std::chrono::seconds(c.second);
        const HitReport report = inspector.Inspect(hit);
        std::string found = report.session;
        for (const Verdict& verdict : report.verdicts)
            for (const char* code : {"twice", "counter-", "session-", "visitor-", "lone-", "site-"})
                found += verdict.code.starts_with(code) ? ' ' + verdict.code : "";
        found +=
            report.sentence.substr(std::min(report.sentence.find(','), report.sentence.size()));
        EXPECT_EQ(found, c.expected) << c.request;
    }
    std::string sentences;
    for (int times = 4; times <= 21; ++times)
        sentences += inspector.Inspect(MakeHit(scan + std::to_string(times))).sentence + ';';
    EXPECT_THAT(sentences, testing::ContainsRegex(", 11th time;.*, 21st time;"));
}

TEST(LogLine, ReadsWhatWebServersWrite)
{
    const std::string time = "10.0.0.1 - - [10/Oct/2023:13:55:36 -0730] ";
    const std::string rest = " 204 0 \"-\" \"Tool/2 (W)\"";
    // second|method|target|version|agent|body
    const std::pair<std::string, std::string> cases[] = {
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
    };
    for (const auto& [line, expected] : cases)
    {
        std::string text;
        if (const std::optional<Hit> hit = ReadLogLine(line))
            text = std::to_string(std::chrono::system_clock::to_time_t(hit->time)) + '|' +
                   hit->method + '|' + hit->target + '|' + hit->version + '|' +
                   FindHeader(*hit, "User-Agent") + '|' + hit->body;
        EXPECT_EQ(text, expected) << line;
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
    const std::pair<std::string, std::string> cases[] = {
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
         "Stop|"},
        {start + "3 times " + steps + stop, "2: missing: 2 of 3 came|"},
        {"never * * with verdict = error\nat most 3 times KPI *",
         "unexpected: #4 KPI event Scan / Stop|"},
        {"others allowed\nnever KPI * with e_a = *op", "2: forbidden: #4 KPI event Scan / Stop|"},
        {"others allowed\nclassic pageview", "2: missing: 0 of 1 came|"},
        {"others allowed\nKPI visit with e_a = x", "2: missing: 0 of 1 came|"},
        {"others allowed\nKPI * with e_a = Start, code = robot, event label = x",
         "2: missing: 0 of 1 came; nearest is #1 KPI event Scan / Start, but code is missing, "
         "event label is missing|"},
        {"\nGET x", "plan line 2: \"GET\" is neither classic, measurement, KPI, other nor *"},
        {"once KPI", "plan line 1: the kind of hit is missing"},
        {"2 KPI event", "plan line 1: \"times\" is missing behind the number"},
        {"at most x times KPI event", "plan line 1: \"x\" is no number from 0 to 1000"},
        {"KPI event with action", "plan line 1: \"action\" is no NAME = VALUE"},
    };
    for (const auto& [text, expected] : cases)
    {
        std::string problems;
        try
        {
            const Plan plan = ParsePlan(text);
            for (const PlanResult& result : Compare(plan, hits))
                for (const std::string& problem : result.problems)
                    problems += (result.line ? std::to_string(result.line->number) + ": " : "") +
                                problem + '|';
        }
        catch (const std::invalid_argument& mistake)
        {
            problems = mistake.what();
        }
        EXPECT_EQ(problems, expected) << text;
    }
}

TEST(HitLog, WritesJsonAndReadableText)
{
    ::setenv("TZ", "UTC", 1);
    Hit hit = MakeHit("/x?a=%1B[31m&a=\xFF\n\xFF\"\n");
    hit.time = std::chrono::system_clock::time_point(std::chrono::milliseconds(1700000000007));
    hit.headers = {{"Host", "h"}, {"Host", "i"}};
    HitReport report = DecodeReport(hit);
    report.id = 3;
    const std::string line = WriteLine(report);
    EXPECT_EQ(
        line,
        R"({"id":3,"time":1700000000007,"tracker":"other","endpoint":"/x","kind":"request",)"
        R"("product":"","visitor":"","session":"","sentence":"POST /x","verdict":"warning",)"
        R"("codes":["address"],"connection":0,"verdicts":[{"severity":"warning","code":"address",)"
        R"("parameter":"","explanation":"No tracker sends to this address."}],"fields":{"a":)"
        R"("\u001b[31m"},"headers":[["Host","h"],["Host","i"]],"request":{"method":"POST",)"
        "\"target\":\"/x?a=%1B[31m&a=\uFFFD\",\"version\":\"HTTP/"
        "1.1\",\"body\":\"\uFFFD\\\"\\n\"}}");
    const Hit read = ReadLine(line);
    EXPECT_EQ(read.method + read.target.substr(0, 12) + read.headers[1].value, "POST/x?a=%1B[31mi");
    EXPECT_TRUE(read.time == hit.time);
    report.parameters.push_back({"", "", std::string(301, 'y'), "long"});
    EXPECT_EQ(WriteReadable(report, false),
              "#3 22:13:20 other  POST /x\n    warning: No tracker sends to this address.\n"
              "    a     ?[31m\n    a     \u00FF\n    long  " +
                  std::string(300, 'y') + "... (301 bytes)\n");
}

} // namespace
