#include "trackers/classic/ClassicIdentity.h"
#include "trackers/classic/ClassicRequest.h"
#include "trackers/classic/PurchaseHits.h"
#include "trackers/classic/TraceBalloon.h"

#include <gtest/gtest.h>

#include <limits>

using app::EHitType;
using app::TrackingHit;
using namespace trackers;

namespace {

const ClassicClient client{L"https://host/__utm.gif?",
                           L"UA-1-2",
                           L"511024897",
                           L"4849",
                           L"1024",
                           L"768",
                           L"en_II",
                           L"",
                           L"Disk Tool 2.0"};
const ClassicVisit visit{L"100", L"200", L"300", L"7", L"5", 4'294'967'299};

TrackingHit MakeHit(EHitType type, const wchar_t* field1, const wchar_t* field2,
                    const wchar_t* field3, const wchar_t* field4, const wchar_t* field5)
{
    return {type, field1, field2, field3, field4, field5, false};
}

constexpr const wchar_t* front = L"https://host/__utm.gif?utmwv=5.4.3&utms=5&utmn=4294967299"
                                 L"&utmac=UA-1-2&utmsr=1024x768";
constexpr const wchar_t* back =
    L"&utmhn=Disk%20Tool%202%2E0&utmcs=UTF-8&utmdt=Disk%20Tool%202%2E0&utmul=en%5FII"
    L"&utmr=Disk%20Tool%202%2E0&aip=1&utmcc=__utma%3D511024897.4849.100.200.300.7%3B%2B"
    L"__utmb%3D511024897.5.10.300%3B%2B__utmc%3D511024897";

TEST(ClassicRequest, EachTypeHasItsOwnPart)
{
    const struct
    {
        const char* what;
        TrackingHit hit;
        const wchar_t* part;
    } cases[] = {
        {"pageview", MakeHit(EHitType::Pageview, L"", L"", L"", L"", L""),
         L"&utmp=Disk%20Tool%202%2E0"},
        {"event", MakeHit(EHitType::Event, L"3", L"Menu", L"", L"Open file", L"Main page"),
         L"&utmt=event&utme=5(MENU*OPEN%20FILE*)(3)&utmp=Main%20page"},
        {"escapes are capitals, too",
         MakeHit(EHitType::Event, L"1.5", L"\x00E9t\x00E9", L"a*b\n", L"\x20AC/x", L"p&q"),
         L"&utmt=event&utme=5(\x00C9T\x00C9*%20AC%2FX*A%2AB%A)(1%2E5)&utmp=p%26q"},
        {"message", MakeHit(EHitType::Message, L"", L"", L"", L"", L"Hi, you"),
         L"&utmp=Hi%2C%20you"},
        {"transaction", MakeHit(EHitType::Transaction, L"&utmtid=o r&x=1", L"", L"", L"", L""),
         L"&utmt=tran&utmp=Disk%20Tool%202%2E0&utmtid=o r&x=1"},
        {"item", MakeHit(EHitType::Item, L"&utmtid=", L"", L"", L"", L""),
         L"&utmt=item&utmp=Disk%20Tool%202%2E0&utmtid="},
        {"custom variable", MakeHit(EHitType::CustomVariable, L"ab-1", L"1", L"Phash", L"2", L""),
         L"&utmt=event&utme=8(1!PHASH)9(1!AB%2D1)11(1!2)&utmp="},
    };
    for (const auto& c : cases)
        EXPECT_EQ(BuildClassicRequest(client, visit, c.hit), std::wstring(front) + c.part + back)
            << c.what;
}

TEST(ClassicRequest, ACampaignAddsItsCookie)
{
    ClassicClient partner = client;
    partner.phash = L"ab 1";
    EXPECT_EQ(
        BuildClassicRequest(partner, visit, MakeHit(EHitType::Pageview, L"", L"", L"", L"", L"")),
        std::wstring(front) + L"&utmp=Disk%20Tool%202%2E0" + back +
            L"%3B%2B__utmz%3D511024897.300.7.1.utmcsr=(ab 1)|utmccn=(partners)"
            L"|utmcmd=(unknown)");
}

TEST(ClassicRequest, EmptyTextsStayEmptyValues)
{
    EXPECT_EQ(BuildClassicRequest({}, {}, MakeHit(EHitType::Pageview, L"", L"", L"", L"", L"")),
              L"utmwv=5.4.3&utms=&utmn=0&utmac=&utmsr=x&utmp=&utmhn=&utmcs=UTF-8&utmdt=&utmul="
              L"&utmr=&aip=1&utmcc=__utma%3D.....%3B%2B__utmb%3D..10.%3B%2B__utmc%3D");
}

TEST(Purchases, HaveTwoDecimalsAndOnlyTheNameEncoded)
{
    const struct
    {
        const char* what;
        Purchase purchase;
        const wchar_t *transaction, *item;
    } cases[] = {
        {"whole",
         {L"Backup Pack", L"P1", 10.0, L"", 3},
         L"&utmtid=id&utmtst=ab 1&utmtto=30.00&utmtsp=0.00&utmttx=5.70",
         L"&utmtid=&utmipc=P1&utmipn=Backup%20Pack&utmipr=10.00&utmiqt=3&utmiva=de_DE"},
        {"as they stand",
         {L"a&b", L"c&d", 0.995, L"o&p", 1},
         L"&utmtid=id&utmtst=ab 1&utmtto=0.99&utmtsp=0.00&utmttx=0.19",
         L"&utmtid=o&p&utmipc=c&d&utmipn=a%26b&utmipr=0.99&utmiqt=1&utmiva=de_DE"},
        {"returned",
         {L"x", L"", 2.5, L"", -2},
         L"&utmtid=id&utmtst=ab 1&utmtto=-5.00&utmtsp=0.00&utmttx=-0.95",
         L"&utmtid=&utmipc=&utmipn=x&utmipr=2.50&utmiqt=-2&utmiva=de_DE"},
        {"no number",
         {L"x", L"", std::numeric_limits<double>::infinity(), L"", 1},
         L"&utmtid=id&utmtst=ab 1&utmtto=inf&utmtsp=0.00&utmttx=inf",
         L"&utmtid=&utmipc=&utmipn=x&utmipr=inf&utmiqt=1&utmiva=de_DE"},
    };
    for (const auto& c : cases)
    {
        const TrackingHit transaction = MakeTransactionHit(c.purchase, L"id", L"ab 1");
        const TrackingHit item = MakeItemHit(c.purchase, L"de_DE");
        EXPECT_EQ(transaction.type, EHitType::Transaction);
        EXPECT_EQ(transaction.field1, c.transaction) << c.what;
        EXPECT_EQ(item.type, EHitType::Item);
        EXPECT_EQ(item.field1, c.item) << c.what;
    }
}

TEST(ClassicIdentity, IsMadeOfCharacterCodes)
{
    // The digests begin 14ad10d7ca, d41d8cd98f and 0cc175b9c0.
    EXPECT_EQ(MakeDomainHash(L"UA-73051829-04"), L"495297100");
    EXPECT_EQ(MakeDomainHash(L""), L"100524910");
    EXPECT_EQ(MakeDomainHash(L"a"), L"489999495");
    EXPECT_EQ(MakeVisitorNumber(L"09af"), L"485797102");
    EXPECT_EQ(MakeVisitorNumber(L""), L"");
}

TEST(HitDescriptions, TellATesterWhatGoesOut)
{
    const struct
    {
        TrackingHit hit;
        const wchar_t *title, *text;
    } cases[] = {
        {MakeHit(EHitType::Pageview, L"", L"", L"", L"", L""), L"GA: Pageview", L"Tool"},
        {MakeHit(EHitType::Event, L"3", L"Menu", L"File", L"Open", L"Page"), L"GA: Event",
         L"Menu: Open - File (3)"},
        {MakeHit(EHitType::Message, L"", L"", L"", L"", L"Hi"), L"GA: Message", L"Hi"},
        {MakeHit(EHitType::Transaction, L"&a", L"", L"", L"", L""), L"GA: Transaction",
         L"Tool - &a"},
        {MakeHit(EHitType::Item, L"&b", L"", L"", L"", L""), L"GA: Item", L"Tool - &b"},
        {MakeHit(EHitType::CustomVariable, L"a", L"1", L"b", L"2", L""), L"", L""},
    };
    for (const auto& c : cases)
    {
        const HitDescription description = DescribeHit(c.hit, L"Tool");
        EXPECT_EQ(description.title, c.title);
        EXPECT_EQ(description.text, c.text);
    }
}

} // namespace
