#include "tools/collector/Decode.h"
#include "tools/collector/HitLog.h"
#include "tools/collector/Summary.h"

#include <cstdlib>
#include <gtest/gtest.h>

using namespace collector;

namespace {

Hit MakeHit(std::string target, std::string body = {})
{
    Hit hit;
    hit.sequence = 3;
    hit.connection = 2;
    hit.method = body.empty() ? "GET" : "POST";
    hit.target = std::move(target);
    hit.body = std::move(body);
    return hit;
}

// "kind: name=value|name=value", the whole result in one text.
std::string Show(const DecodedHit& hit)
{
    std::string text = hit.kind + ':';
    for (const Field& field : hit.fields)
        text += (&field == &hit.fields.front() ? " " : "|") + field.name + '=' + field.value;
    return text;
}

std::string Decode(const std::string& target, const std::string& body = {})
{
    return Show(DecodeHit(MakeHit(target, body)));
}

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

TEST(DecodeKpi, NamesItsFields)
{
    const std::string head =
        "/piwik.php?send_image=0&rec=1&apiv=1&idsite=4&ua=Tool/2.0%20(Windows%20"
        "NT%206.1;%20WOW64)&url=www.x.example&uid=ab&lang=de%2Dde&rand=77"
        "&_rcn=p1&_rck=";
    const std::string decoded =
        " send image=0|record=1|version=1|site id=4|user agent=Tool/2.0 (Windows NT 6.1; WOW64)|"
        "site=www.x.example|user id=ab|language=de-de|tick count=77|campaign name=p1|"
        "campaign keyword=|";
    const struct
    {
        const char* tail;
        std::string expected;
    } cases[] = {
        {"&_cvar={\"1\":[\"product\", \"Disk Tool\"]}", "visit:" + decoded + "product=Disk Tool"},
        {"&_cvar=%7B%221%22:[%22product%22,%20%22D%22]}&e_c=Scan&e_a=Start%21&e_n=&e_v=7",
         "event:" + decoded +
             "product=D|event category=Scan|event action=Start!|event label=|event value=7"},
        {"&_cvar={\"1\":[\"product\", \"5\" & \"3\"]}&x=1",
         "visit:" + decoded + "product=5\" & \"3|x=1"},
        {"&_cvar={\"2\":[\"product\",\"J\\u00e9\"]}", "visit:" + decoded + "product=J\xC3\xA9"},
        {"&_cvar={\"1\":[\"product\", \"]}",
         "visit:" + decoded + "_cvar={\"1\":[\"product\", \"]}"},
        {"&_cvar={\"1\":[1,2,[3]]}", "visit:" + decoded + "_cvar={\"1\":[1,2,[3]]}"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(Decode(head + c.tail), c.expected) << c.tail;
}

TEST(DecodeClassic, NamesItsFields)
{
    const std::string head = "/__utm.gif?utmwv=5.4.3&utms=2&utmn=900&utmac=UA-1&utmsr=800x600";
    const std::string tail =
        "&utmhn=D%2E&utmcs=UTF-8&utmdt=D&utmul=de&utmr=D&aip=1&utmcc=__utma%3D7.42.100.200.300.3"
        "%3B%2B__utmb%3D7.2.10.300%3B%2B__utmc%3D7";
    const std::string decodedHead =
        "version=5.4.3|session hit=2|hit number=900|account=UA-1|screen=800x600|";
    const std::string decodedTail =
        "|host=D.|charset=UTF-8|title=D|language=de|referrer=D|anonymise address=1|domain hash=7|"
        "visitor number=42|first visit=100|previous visit=200|current visit=300|session count=3|"
        "__utmb=7.2.10.300|__utmc=7";
    const struct
    {
        const char *middle, *kind, *fields, *description;
    } cases[] = {
        {"&utmp=Disk%20Tool", "pageview", "page=Disk Tool", "Disk Tool"},
        {"&utmt=event&utme=5(MENU*OPEN%20%2A%20FILE*)(3)&utmp=D", "event",
         "type=event|event category=MENU|event action=OPEN * FILE|event label=|event "
         "value=3|page=D",
         "MENU / OPEN * FILE (3)"},
        {"&utmt=event&utme=8(1!PHASH)9(1!AB%21)11(1!2)&utmp=D", "custom variable",
         "type=event|custom variable slot=1|custom variable name=PHASH|custom variable value=AB!|"
         "custom variable scope=2|page=D",
         "1 PHASH AB!"},
        {"&utmt=tran&utmp=D&utmtid=a_1&utmtst=p&utmtto=30.00&utmtsp=0.00&utmttx=5.70",
         "transaction", "type=tran|page=D|order id=a_1|store=p|total=30.00|shipping=0.00|tax=5.70",
         "a_1 30.00"},
        {"&utmt=item&utmp=D&utmtid=&utmipc=P1&utmipn=Pack%20%261&utmipr=10.00&utmiqt=3&utmiva=de",
         "item",
         "type=item|page=D|order id=|item code=P1|item name=Pack &1|unit price=10.00|quantity=3|"
         "item variation=de",
         "Pack &1 10.00 3"},
    };
    for (const auto& c : cases)
    {
        const DecodedHit decoded = DecodeHit(MakeHit(head + c.middle + tail));
        EXPECT_EQ(Show(decoded), c.kind + (": " + decodedHead) + c.fields + decodedTail);
        EXPECT_EQ(DescribeHit(decoded), c.description);
    }
}

TEST(DecodeHit, NamesFieldsAndLeavesWhatIsMalformed)
{
    const struct
    {
        const char *target, *body, *expected;
    } cases[] = {
        {"/collect?z=99",
         "v=1&tid=UA-1&aip=1&ds=host%2Eexe&cid=c1&uid=u1&cs=p&cn=%28partners%29&cm=%28direct%29&"
         "sr=800x600&ul=de&cd=Tool&t=event&ec=Scan&ea=Start&el=l&ev=5&sc=start&cx",
         "event: version=1|tracking id=UA-1|anonymise address=1|data source=host.exe|"
         "client id=c1|user id=u1|campaign source=p|campaign name=(partners)|"
         "campaign medium=(direct)|screen=800x600|language=de|screen name=Tool|hit=event|"
         "event category=Scan|event action=Start|event label=l|event value=5|"
         "session=start&cx|cache buster=99"},
        {"/collect", "t=transaction&dp=%2FTool&ti=o%5F1&ta=p&tr=30.00",
         "transaction: hit=transaction|page=/Tool|order id=o_1|affiliation=p|total=30.00"},
        {"/collect", "t=item&ti=o&in=P1&ip=10.00&iq=3&new=%31",
         "item: hit=item|order id=o|item name=P1|unit price=10.00|quantity=3|new=1"},
        {"/collect", "", "request:"},
        {"/elsewhere?a=%21&a=2", "", "request: a=!|a=2"},
        {"/__utm.gif?utmcc=__utmz%3D7.300.3.1.utmcsr=(a.b)|utmccn=(partners)|utmcmd=(unknown)", "",
         "pageview: __utmz=7.300.3.1.|campaign source=a.b|campaign name=partners|"
         "campaign medium=unknown"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(Decode(c.target, c.body), c.expected) << c.target;

    const struct
    {
        const char *query, *expected;
    } malformed[] = {
        {"", "pageview:"},
        {"&&=&utmp", "pageview: =&utmp"},
        {"utme=", "pageview: utme="},
        {"utme=5", "pageview: utme=5"},
        {"utme=5(A*B*C", "pageview: utme=5(A*B*C"},
        {"utme=5(A*B)(1)", "pageview: utme=5(A*B)(1)"},
        {"utme=5(A*B*C)", "pageview: utme=5(A*B*C)"},
        {"utme=5(A*B*C)(1", "pageview: utme=5(A*B*C)(1"},
        {"utme=5(A*B*C)(1)x%21", "pageview: utme=5(A*B*C)(1)x!"},
        {"utme=5)(", "pageview: utme=5)("},
        {"utme=8(1!a)9(1!b)", "pageview: utme=8(1!a)9(1!b)"},
        {"utme=8(1!a)9(1)11(1!c)", "pageview: utme=8(1!a)9(1)11(1!c)"},
        {"utme=8(1!a)9(1!b)11(1!c)z", "pageview: utme=8(1!a)9(1!b)11(1!c)z"},
        {"utmcc=", "pageview: utmcc="},
        {"utmcc=__utma%3D1.2.3%3B%2B%3B%2Bx", "pageview: __utma=1.2.3|utmcc=|utmcc=x"},
        {"utmcc=__utmz%3D1.2", "pageview: __utmz=1.2"},
        {"utmcc=__utmz%3Dutmcsr=()|utmcmd=(|z", "pageview: __utmz=|campaign source=|"
                                                "campaign medium=(|z="},
        {"utmzz=a%zz", "pageview: utmzz=a%zz"},
    };
    for (const auto& c : malformed)
        EXPECT_EQ(Decode(std::string("/__utm.gif?") + c.query), c.expected) << c.query;
}

TEST(HitLog, WritesJsonAndReadableText)
{
    ::setenv("TZ", "UTC", 1);
    const std::string ys(301, 'y');
    Hit hit = MakeHit("/x?a=%1B[31m&a=\xFF&long=" + ys, "\xFF\"\n");
    hit.time = std::chrono::system_clock::time_point(std::chrono::milliseconds(1700000000007));
    hit.headers = {{"Host", "h"}, {"Host", "i"}};
    EXPECT_EQ(
        WriteJsonLine(hit, DecodeHit(hit)),
        R"({"sequence":3,"connection":2,"time":"2023-11-14T22:13:20.007Z","endpoint":"other",)"
        R"("kind":"request","method":"POST","target":"/x?a=%1B[31m&a=)"
        "\uFFFD&long=" +
            ys +
            R"(","headers":[["Host","h"],["Host","i"]],"body":")"
            "\uFFFD"
            R"(\"\n","fields":{"a":["\u001b[31m",")"
            "\u00FF\"],\"long\":\"" +
            ys + "\"}}");

    hit.target = "/x?a=%1B[31m&long=" + ys;
    EXPECT_EQ(WriteReadable(hit, DecodeHit(hit), false),
              "#3 22:13:20 other request  POST /x?a=%1B[31m&long=" + std::string(277, 'y') +
                  "... (324 bytes)\n"
                  "    a     ?[31m\n"
                  "    long  " +
                  std::string(300, 'y') + "... (301 bytes)\n");
    const Hit event = MakeHit("/piwik.php?e_c=Scan&e_a=Start&e_n=&e_v=");
    EXPECT_EQ(WriteReadable(event, DecodeHit(event), true).substr(0, 63),
              "\033[1;36m#3 00:00:00 KPI event  Scan / Start\033[0m\n    \033[2mevent ca");
}

TEST(Summary, CountsAndFollowsVisitors)
{
    CSummary summary;
    EXPECT_EQ(summary.Write(), "Hits collected: 0\n");
    const char* const targets[] = {"/__utm.gif?utms=1&utmcc=__utma%3D7.42.1.1.1.1",
                                   "/__utm.gif?utms=2&utmcc=__utma%3D7.42.1.1.1.1",
                                   "/__utm.gif?utmt=event&utms=1&utmcc=__utma%3D7.42.1.1.5.2",
                                   "/piwik.php?e_c=a", "/nothing"};
    for (const char* target : targets)
        summary.Add(DecodeHit(MakeHit(target)));
    EXPECT_EQ(summary.GetCollected(), 4U);
    EXPECT_EQ(summary.Write(), "Hits collected: 4\n"
                               "  classic: 3 (event 1, pageview 2)\n"
                               "  KPI: 1 (event 1)\n"
                               "  other: 1 (request 1)\n"
                               "  visitor 42: session count 2, page counter 1\n");
}

} // namespace
