#include "tests/module/ModuleTest.h"

#include <algorithm>
#include <chrono>
#include <ctime>
#include <fstream>
#include <sstream>

using namespace std::chrono_literals;

namespace module {

namespace {

// What all requests of one run say alike.
struct Visit
{
    std::string visitor; // the number in the cookies
    std::string first, previous, current;
    std::string session;
    std::uint64_t number; // of the first request
};

std::vector<std::string> Split(const std::string& text, char separator)
{
    std::vector<std::string> parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, separator);)
        parts.push_back(part);
    return parts;
}

// domain hash, visitor, first, previous, current visit, sessions: as the first request tells them.
Visit ReadVisit(const std::string& target)
{
    const std::string cookies = GetParameter(target, "utmcc");
    const std::string front = "__utma%3D";
    EXPECT_TRUE(cookies.starts_with(front)) << target;
    std::vector<std::string> parts =
        Split(cookies.substr(front.size(), cookies.find("%3B") - front.size()), '.');
    parts.resize(6);
    return {parts[1], parts[2], parts[3],
            parts[4], parts[5], std::stoull(GetParameter(target, "utmn"))};
}

std::string MakeTarget(const Visit& run, int hit, int place, const std::string& part)
{
    const std::string utms = std::to_string(hit);
    return "/__utm.gif?utmwv=5.4.3&utms=" + utms +
           "&utmn=" + std::to_string(run.number + static_cast<std::uint64_t>(place)) +
           "&utmac=UA-1&utmsr=1024x768" + part +
           "&utmhn=Disk%20Tool&utmcs=UTF-8&utmdt=Disk%20Tool&utmul=de%5FDE&utmr=Disk%20Tool&aip=1"
           "&utmcc=__utma%3D999857984." +
           run.visitor + "." + run.first + "." + run.previous + "." + run.current + "." +
           run.session + "%3B%2B__utmb%3D999857984." + utms + ".10." + run.current +
           "%3B%2B__utmc%3D999857984%3B%2B__utmz%3D999857984." + run.current + "." + run.session +
           ".1.utmcsr=(ab1)|utmccn=(partners)|utmcmd=(unknown)";
}

class ClassicModuleTest : public CModuleTest
{
protected:
    ClassicModuleTest() { ResetPrefix(); }

    // Runs the host's main tracker, lets it send, and returns the new targets.
    std::vector<std::string> Report(const std::string& commands, const std::string& sleep = "4500")
    {
        collector.Clear();
        const ProgramResult run =
            RunHost("use main\ninitialize\n" + commands + "sleep " + sleep + "\n");
        EXPECT_EQ(run.status, 0) << run.output;
        for (const collector::Hit& hit : collector.GetHits())
        {
            EXPECT_EQ(hit.method, "GET");
            EXPECT_EQ(std::count_if(hit.headers.begin(), hit.headers.end(),
                                    [](const auto& header) { return header.name == "User-Agent"; }),
                      1);
            EXPECT_EQ(collector::FindHeader(hit, "User-Agent"),
                      "Disk Tool/3.2.1 (Windows NT 6.1; WOW64)");
        }
        return GetTargets();
    }

    std::string ReadSavedHistory() const
    {
        std::ostringstream saved;
        saved << std::ifstream(GetPrefix().GetDriveC() /
                               "ProgramData/veltrano/Tidy Desk/tallyhive.xml")
                     .rdbuf();
        return saved.str();
    }
};

} // namespace

TEST_F(ClassicModuleTest, TwoRunsArriveByteForByte)
{
    PutConfig(MakeConfig("GAID=UA-1\nProductName=Disk Tool\nLanguage=de_DE\nPHASH=ab1\n"));
    const std::string hits = "event Scan \"Start now\"\n"
                             "eventex Menu \"Open file\" \"\" \"\" P\xC3\xA4ge\n"
                             "eventex Once Only \"\" \"\" Page once\n"
                             "message \"Hi, you\"\n"
                             "purchase \"Backup Pack\" P1 10.0 O7 3\n";
    const std::vector<std::string> first = Report(hits);
    ASSERT_EQ(first.size(), 8u);
    const Visit run = ReadVisit(first[0]);
    EXPECT_TRUE(run.visitor.size() >= 64 && run.visitor.size() <= 96) << run.visitor;
    EXPECT_NEAR(std::stod(run.current), static_cast<double>(std::time(nullptr)), 60.0);
    EXPECT_EQ(run.first, run.current);
    EXPECT_EQ(run.previous, run.current);
    EXPECT_EQ(run.session, "1");
    const std::vector<std::string> parts{
        "&utmp=Disk%20Tool",
        "&utmt=event&utme=8(1!PHASH)9(1!AB1)11(1!2)&utmp=",
        "&utmt=event&utme=5(SCAN*START%20NOW*UNKNOWN)(0)&utmp=Disk%20Tool",
        "&utmt=event&utme=5(MENU*OPEN%20FILE*)(1)&utmp=P%C3%A4ge",
        "&utmt=event&utme=5(ONCE*ONLY*)(1)&utmp=Page",
        "&utmp=Hi%2C%20you",
        "&utmt=tran&utmp=Disk%20Tool&utmtid=O7&utmtst=ab1&utmtto=30.00&utmtsp=0.00&utmttx=5.70",
        "&utmt=item&utmp=Disk%20Tool&utmtid=O7&utmipc=P1&utmipn=Backup%20Pack&utmipr=10.00"
        "&utmiqt=3&utmiva=de_DE"};
    for (std::size_t i = 0; i < parts.size(); ++i)
        EXPECT_EQ(first[i],
                  MakeTarget(run, static_cast<int>(i) + 1, static_cast<int>(i), parts[i]));

    const std::vector<std::string> second = Report(hits);
    ASSERT_EQ(second.size(), 7u);
    const Visit next = ReadVisit(second[0]);
    EXPECT_EQ(next.first, run.first);
    EXPECT_EQ(next.previous, run.current);
    EXPECT_GT(std::stoll(next.current), std::stoll(run.current));
    EXPECT_EQ(next.session, "2");
    EXPECT_EQ(second[2], MakeTarget(next, 3, 2, parts[2]));
    EXPECT_EQ(second[3],
              MakeTarget(next, 4, 3, "&utmt=event&utme=5(MENU*OPEN%20FILE*)(2)&utmp=P%C3%A4ge"));
    EXPECT_EQ(second[4], MakeTarget(next, 6, 5, parts[5]))
        << "the event for once only is counted, but not sent";
}

TEST_F(ClassicModuleTest, ARefusedFirstHitSilencesTheRunAndIsNotASession)
{
    PutConfig(MakeConfig("GAID=UA-1\nProductName=Disk Tool\n"));
    EXPECT_EQ(Report("pageview\n", "2600").size(), 1u);
    collector.Order(collector::EConnectionFault::UnknownCertificate, collector::CCollector::always);
    EXPECT_EQ(Report("pageview\npageview\n", "4500").size(), 0u);
    EXPECT_EQ(collector.GetConnectionCount(), 2u) << "exactly two attempts";
    collector.CancelOrders();
    const std::vector<std::string> targets = Report("pageview\n", "2600");
    ASSERT_EQ(targets.size(), 1u);
    EXPECT_EQ(ReadVisit(targets[0]).session, "2");
}

TEST_F(ClassicModuleTest, AnExitWithoutAReleaseSavesTheHistory)
{
    PutConfig(MakeConfig());
    const ProgramResult run = RunHost("use main\nevent Menu Open\nsleep 3000\nexit\n");
    EXPECT_EQ(run.status, 0) << run.output;
    EXPECT_EQ(GetTargets().size(), 2u);
    EXPECT_NE(ReadSavedHistory().find(">1</"), std::string::npos) << ReadSavedHistory();
}

} // namespace module
