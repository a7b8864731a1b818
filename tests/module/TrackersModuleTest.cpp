#include "tests/module/ModuleTest.h"

#include <algorithm>
#include <map>
#include <regex>

namespace module {

namespace {

using Texts = std::vector<std::string>;

class TrackersModuleTest : public CModuleTest
{
protected:
    TrackersModuleTest() : CModuleTest(443) {}

    // "METHOD TARGET BODY" of what the host's commands bring about, the KPI tracker's last. Each
    // identifier and time is <1>, <2> ... in the order in which this case meets them. Ticks and the
    // visitor, which Wine's users have for one run only, are "*".
    Texts Report(const std::string& commands)
    {
        collector.Clear();
        const ProgramResult run = RunHost("initialize\n" + commands);
        EXPECT_EQ(run.status, 0) << run.output;
        Texts texts;
        for (const collector::Hit& hit : collector.GetHits())
        {
            texts.push_back(hit.method + " " + hit.target + " " + hit.body);
            EXPECT_EQ(std::ranges::count(hit.headers, "User-Agent", &collector::Header::name), 1);
            EXPECT_EQ(collector::FindHeader(hit, "User-Agent"),
                      "Disk Tool/3.2.1 (Windows NT 6.1; WOW64)");
        }
        std::ranges::stable_sort(texts, {}, [](const auto& text) { return text.substr(0, 6); });
        for (std::string& text : texts)
            text = PutNames(text);
        return texts;
    }

private:
    std::string PutNames(const std::string& text)
    {
        static const std::regex fleeting("((?:utmn|rand|z)=|999857984\\.(?=[0-9]{64}))-?[0-9]+");
        static const std::regex named("\\b([0-9a-f]{32}|[0-9]{10})\\b");
        std::string rest = std::regex_replace(text, fleeting, "$1*");
        std::string whole;
        for (std::smatch found; std::regex_search(rest, found, named); rest = found.suffix())
        {
            const auto number = names.emplace(found.str(), names.size() + 1).first->second;
            whole += found.prefix().str() + "<" + std::to_string(number) + ">";
        }
        return whole + rest;
    }

    std::map<std::string, std::size_t> names;
};

const std::string configured = "GAID=UA-1\nProductName=Disk Tool\nLanguage=de_DE\nPHASH=ab1\n"
                               "KPISource=news\n";

// What one of two runs reports.
Texts MakeRun(const std::string& time, const std::string& session)
{
    const std::string parts[] = {
        "&utmp=Disk%20Tool", "&utmt=event&utme=8(1!PHASH)9(1!AB1)11(1!2)&utmp=",
        "&utmt=event&utme=5(SCAN*START%20NOW*UNKNOWN)(0)&utmp=Disk%20Tool",
        "&utmt=event&utme=5(MENU*OPEN%20FILE*)(" + session + ")&utmp=P%C3%A4ge"};
    Texts run;
    for (std::size_t i = 0; i < std::size(parts); ++i)
    {
        const std::string utms = std::to_string(i + 1);
        run.push_back(
            "GET /__utm.gif?utmwv=5.4.3&utms=" + utms + "&utmn=*&utmac=UA-1&utmsr=1024x768" +
            parts[i] +
            "&utmhn=Disk%20Tool&utmcs=UTF-8&utmdt=Disk%20Tool&utmul=de%5FDE&utmr=Disk%20Tool"
            "&aip=1&utmcc=__utma%3D999857984.*.<1>.<1>." +
            time + "." + session + "%3B%2B__utmb%3D999857984." + utms + ".10." + time +
            "%3B%2B__utmc%3D999857984%3B%2B__utmz%3D999857984." + time + "." + session +
            ".1.utmcsr=(ab1)|utmccn=(partners)|utmcmd=(unknown) ");
    }
    run.push_back(
        "GET /piwik.php?send_image=0&rec=1&apiv=1&idsite=1"
        "&ua=Disk%20Tool/3.2.1%20(Windows%20NT%206.1;%20WOW64)&url=www.zotracker.example&uid=<2>"
        "&lang=de%5FDE&rand=*&_rcn=ab1&_rck=news"
        "&_cvar={\"1\":[\"product\",%20\"My%20\"Tool\"%20%231%20%E2%82%AC%20/%2E./%5Cx\"]}"
        "&e_c=unknown&e_a=Ok%C3%A9&e_n=a%7Cb&e_v=5%20% ");
    return run;
}

} // namespace

// The first run ends without a release, and has its history saved.
TEST_F(TrackersModuleTest, TwoRunsArriveByteForByte)
{
    PutConfig(MakeConfig(configured));
    const std::string commands = "use kpi\n"
                                 "product \"My \\\"Tool\\\" #1 \xE2\x82\xAC /../\\x\"\n"
                                 "eventex \"\" Ok\xC3\xA9 a|b \"5 %\"\n"
                                 "use main\n"
                                 "event Scan \"Start now\"\n"
                                 "eventex Menu \"Open file\" \"\" \"\" P\xC3\xA4ge\n"
                                 "sleep 5000\n";
    EXPECT_EQ(Report(commands + "exit\n"), MakeRun("<1>", "1"));
    EXPECT_EQ(Report(commands), MakeRun("<3>", "2"));
}

TEST_F(TrackersModuleTest, TheMeasurementProtocolArrivesByteForByte)
{
    PutConfig(MakeConfig(configured) + measurementSection);
    const std::string front = "POST /collect?z=* v=1&tid=UA-7&aip=1&ds=host%2Eexe&cid=<1>&uid=<2>"
                              "&cs=ab1&cn=%28partners%29&cm=%28direct%29&sr=1024x768&ul=de%5FDE"
                              "&cd=Disk%20Tool";
    EXPECT_EQ(Report("use main\n"
                     "pageview\n"
                     "eventex \"\" Ok\xC3\xA9 a|b \"5 %\"\n"
                     "sleep 5000\n"),
              (Texts{front + "&t=pageview&dp=%2FDisk%20Tool",
                     front + "&t=event&ec=unknown&ea=Ok\xC3\xA9&el=a%7Cb&ev=5 %"}));
}

} // namespace module
