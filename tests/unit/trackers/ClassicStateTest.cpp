#include "tests/unit/trackers/TrackerFixture.h"
#include "trackers/classic/OldHistory.h"
#include "trackers/classic/SessionStore.h"
#include "trackers/classic/VisitHistory.h"
#include "trackers/classic/VisitorState.h"

using namespace trackers;

namespace {

const std::wstring folder = L"C:\\ProgramData\\veltrano\\Tidy Desk\\";
const std::wstring oldFile = folder + L"tallyhive.dat";
const std::wstring historyFile = folder + L"tallyhive.xml";

class ClassicStateTest : public TrackerFixture
{
protected:
    ClassicStateTest() { simulated::PutFolder(folder); }

    static void Put(ERegistryRoot root, const wchar_t* name, const wchar_t* value)
    {
        simulated::PutRegistryText(root, sessionKey, ERegistryView::View32, name, value);
    }

    const CSessionStore store{L"veltrano", L"Tidy Desk"};
};

TEST_F(ClassicStateTest, ValuesGoToTheFirstPlaceThatTakesThem)
{
    using enum ERegistryDenial;
    const wchar_t* const none = L"- - - - -";
    const wchar_t* const kept = L"- - a - -";
    const std::tuple<ERegistryDenial, ERegistryDenial, const wchar_t*, const wchar_t*, const char*>
        cases[] = {{None, None, kept, none, ""},
                   {Setting, None, none, kept, ""},
                   {Creating, Creating, none, none, "[DATA]\r\nCV=a\r\n"}};
    for (const auto& [classes, user, inClasses, inUser, inFile] : cases)
    {
        simulated::Reset();
        simulated::SetRegistryDenial(ERegistryRoot::ClassesRoot, classes);
        simulated::SetRegistryDenial(ERegistryRoot::CurrentUser, user);
        simulated::PutFolder(L"C:\\ProgramData");
        store.SetSessionValue(L"CV", L"a");
        EXPECT_EQ(FindSession(), inClasses);
        EXPECT_EQ(FindSession(ERegistryRoot::CurrentUser), inUser);
        EXPECT_EQ(simulated::ReadFileBytes(folder + L"tallyhivesession.dat").value_or(""), inFile);
        EXPECT_EQ(store.GetSessionValue(L"CV"), L"a");

        simulated::SetRegistryDenial(ERegistryRoot::ClassesRoot, None);
        EXPECT_EQ(store.GetSessionValue(L"CV"), L"a");
        EXPECT_EQ(FindSession(), kept) << "repaired";
    }
    simulated::PutRegistryText(ERegistryRoot::ClassesRoot, sessionKey, ERegistryView::View64, L"FV",
                               L"other view");
    Put(ERegistryRoot::CurrentUser, L"FV", L"user");
    EXPECT_EQ(store.GetSessionValue(L"FV"), L"user");
    Put(ERegistryRoot::ClassesRoot, L"FV", L"classes");
    EXPECT_EQ(store.GetSessionValue(L"FV"), L"classes") << "is read first";
    EXPECT_EQ(store.GetSessionValue(L"SID"), L"");

    PutConfig("UserContentPath=C:\\Own\\dir\r\n");
    simulated::PutFile(L"C:\\Own\\dirtallyhivesession.dat", "[DATA]\r\nSID=own\r\n");
    EXPECT_EQ(store.GetSessionValue(L"SID"), L"own");
}

TEST_F(ClassicStateTest, SessionsOverFourRuns)
{
    simulated::SetUnixTime(1000);
    CVisitorState first;
    first.LoadVisitorState(store, true); // there is none to continue
    EXPECT_EQ(FindSession(), L"1 1000 1000 1 ");
    simulated::SetUnixTime(2000);
    first.LoadVisitorState(store, false);
    EXPECT_EQ(FindSession(), L"1 1000 1000 1 ") << "once per run";
    first.RollBackSessionStart(store);
    EXPECT_EQ(FindSession(), L"0 1000 1000 1 ");

    Put(ERegistryRoot::ClassesRoot, L"SID", L"1");
    CVisitorState second;
    second.LoadVisitorState(store, false);
    EXPECT_EQ(FindSession(), L"2 1000 2000 1 ");
    second.CountRequest(store, 50);
    second.CountRequest(store, 70);
    EXPECT_EQ(FindSession(), L"2 1000 2000 3 2000");
    EXPECT_EQ(second.GetVisit().hitNumber, 52u) << "goes on once it has begun";

    simulated::SetUnixTime(3000);
    CVisitorState third;
    third.LoadVisitorState(store, true);
    EXPECT_EQ(FindSession(), L"2 1000 2000 3 2000") << "a continued session changes nothing";
    third.CountRequest(store, 4'294'967'295);
    third.RollBackSessionStart(store);
    EXPECT_EQ(FindSession(), L"2 1000 2000 4 3000") << "begun by an earlier run";
    const ClassicVisit& visit = third.GetVisit();
    EXPECT_EQ(visit.firstVisitTime + L" " + visit.previousVisitTime + L" " +
                  visit.currentVisitTime + L" " + visit.sessionCount + L" " +
                  visit.sessionHitNumber + L" " + std::to_wstring(visit.hitNumber),
              L"1000 1000 2000 2 3 4294967296");

    CVisitorState fourth;
    fourth.LoadVisitorState(store, false);
    EXPECT_EQ(FindSession(), L"3 2000 3000 1 ");
    fourth.RollBackSessionStart(store);
    EXPECT_EQ(FindSession(), L"2 1000 2000 1 ");
}

TEST_F(ClassicStateTest, OddValuesCountAsTheirDefaults)
{
    const wchar_t* const cases[][5] = {
        // SID and the next one; PVC, the hit's number, the next PVC
        {L"", L"2", L"", L"1", L"2"},
        {L"abc", L"1", L"abc", L"1", L"2"},
        {L"-7", L"-6", L"-7", L"1", L"2"},
        {L"1x", L"2", L"1x", L"1x", L"2"},
        {L"99999999999", L"-2147483648", L"99999999999", L"99999999999", L"-2147483648"}};
    for (const auto& [sid, nextSid, pvc, hit, nextPvc] : cases)
    {
        simulated::RemoveRegistryKey(ERegistryRoot::ClassesRoot, sessionKey, ERegistryView::View32);
        Put(ERegistryRoot::ClassesRoot, L"FV", L"7");
        Put(ERegistryRoot::ClassesRoot, L"SID", sid);
        CVisitorState continued;
        continued.LoadVisitorState(store, true);
        EXPECT_EQ(continued.GetVisit().sessionCount, *sid == L'\0' ? L"1" : sid);
        EXPECT_EQ(continued.GetVisit().previousVisitTime, L"7");
        CVisitorState state;
        state.LoadVisitorState(store, false);
        Put(ERegistryRoot::ClassesRoot, L"PVC", pvc);
        state.CountRequest(store, 0);
        EXPECT_EQ(state.GetVisit().sessionHitNumber, hit);
        EXPECT_EQ(FindSession(), nextSid + std::wstring(L" 7 1000 ") + nextPvc + L" 1000");
        state.RollBackSessionStart(store);
        EXPECT_TRUE(FindSession().ends_with(L" 7 7 1 ")) << FindSession();
    }
}

frame::TrackingHit MakeEvent(const wchar_t* label)
{
    return {frame::EHitType::Event, L"v", L"Cat", label, L"Act", L"Page", false};
}

// Of "Cat_Act_one_Page" and "Cat_Act_two_Page".
const char* const one = "96c552ba42c97d9ac724f5ad392c2567";
const char* const two = "a0c23c623d3059207ca5a154db492579";

std::string MakeFile(const std::string& children)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<SimpleXMLElement>\n" + children +
           "</SimpleXMLElement>\n";
}

std::string MakeLine(const std::string& fingerprint, const char* count)
{
    return "\t<" + fingerprint + ">" + count + "</" + fingerprint + ">\n";
}

// What a run with one occurrence of the event "one" leaves.
std::string RunOnce()
{
    CVisitHistory history(folder);
    history.LoadHistory();
    history.CountEventOccurrence(MakeEvent(L"one"));
    history.SaveHistory();
    return simulated::ReadFileBytes(historyFile).value_or("none");
}

TEST_F(ClassicStateTest, TheHistoryIsWrittenAndReadBack)
{
    CVisitHistory history(folder);
    history.LoadHistory();
    EXPECT_EQ(history.CountEventOccurrence(MakeEvent(L"one")), 1);
    EXPECT_EQ(history.CountEventOccurrence(MakeEvent(L"two")), 1);
    EXPECT_EQ(history.CountEventOccurrence(MakeEvent(L"one")), 2);
    frame::TrackingHit other = MakeEvent(L"one");
    other.type = frame::EHitType::Message;
    EXPECT_EQ(history.CountEventOccurrence(other), 0);
    history.SaveHistory();
    EXPECT_EQ(simulated::ReadFileBytes(historyFile),
              MakeFile(MakeLine(one, "2") + MakeLine(two, "1")));
    EXPECT_EQ(RunOnce(), MakeFile(MakeLine(one, "3") + MakeLine(two, "1")));
}

TEST_F(ClassicStateTest, WhatIsNoHistoryIsAnEmptyOneAndOddCountsGoOnAsNumbers)
{
    const std::string known = MakeFile(MakeLine(two, "1"));
    const std::string blanks((8 << 20) - known.size(), ' ');
    const std::pair<std::string, std::string> cases[] = {
        {"garbage", MakeLine(one, "1")},
        {"<a>5</a>", MakeLine(one, "1")},
        {known + blanks, MakeLine(two, "1") + MakeLine(one, "1")},
        {known + blanks + ' ', MakeLine(one, "1")}, // too long
        {MakeFile(MakeLine(one, "")), MakeLine(one, "1")},
        {MakeFile(MakeLine(one, "7.9")), MakeLine(one, "8")},
        {MakeFile(MakeLine(one, "2147483647")), MakeLine(one, "2147483647")}};
    for (const auto& [stored, next] : cases)
    {
        simulated::PutFile(historyFile, stored);
        EXPECT_EQ(RunOnce(), MakeFile(next)) << stored.substr(0, 99);
    }
}

TEST_F(ClassicStateTest, AnOldFileIsTakenOverOnceAndInPlaceOfTheNewOne)
{
    const std::string kept = MakeFile(MakeLine(two, "9"));
    simulated::PutFile(historyFile, kept);
    CVisitHistory history(folder);
    history.SaveHistory();
    EXPECT_EQ(simulated::ReadFileBytes(historyFile), kept) << "it has not been read";
    simulated::PutFile(oldFile, std::string("[HISTORY]\r\nCOUNT=2\r\nFP0=") + one +
                                    "\r\nC0=4\r\nFP1=x\r\nC1=1\r\nFP2=y\r\nC2=1\r\n");
    history.LoadHistory();
    EXPECT_EQ(simulated::ReadFileBytes(historyFile),
              MakeFile(MakeLine(one, "4") + MakeLine("x", "1")));
    EXPECT_FALSE(simulated::ReadFileBytes(oldFile).has_value());
    EXPECT_EQ(RunOnce(), MakeFile(MakeLine(one, "5") + MakeLine("x", "1")));
}

// Fingerprints and counts as "a=1 b=2".
std::string ReadOld(const std::string& bytes, std::uint64_t limit = 1 << 20)
{
    simulated::PutFile(oldFile, bytes);
    std::string entries;
    for (const EventCount& entry : ReadOldHistory(oldFile, limit))
        entries += std::string(entry.fingerprint.begin(), entry.fingerprint.end()) + "=" +
                   std::to_string(entry.count) + " ";
    return entries;
}

TEST_F(ClassicStateTest, OldFilesOfAnyForm)
{
    const std::pair<const char*, const char*> cases[] = {
        {"[x]\nFP0=no\n [ history ] \r\n\r\nc1 = '3'\nfp1= \"b\" \n;FP0=z\nC0=1\nFP0=a\nCount=2",
         "a=1 b=3 "},
        {"[HISTORY]\nCOUNT=1\nFP0=a\nFP0=b\nC0=5\nC0=6\nCOUNT=2\nFP1=c\nC1=1\n", "a=5 "},
        {"[HISTORY]\nCOUNT=5\nFP0=\nC0=1\nFP1=b\nFP2=c\nC2=0\nFP3=d\nC3=x\nFP4=e\nC4=-1\n", ""},
        {"[HISTORY]\nCOUNT=4\nFP3=e\nC3=2\n;..............................", "e=2 "},
        {"[HISTORY]\nCOUNT=9\nFP00=a\nC00=1\nFP+1=b\nC+1=1\nFP=c\nC=1\nFP1x=d\nC1x=1\n", ""},
        {"[HISTORY]\nCOUNT=-1\nFP0=a\nC0=1\n", ""},
        {"[HISTORY]\nCOUNT=2147483647\nFP0=a\nC0=1\nFP999999999=b\nC999999999=1\n", "a=1 "},
        {"[HISTORY]\nCOUNT=9\nFP2=a\nC2=1\n", ""}, // too high for the file
    };
    for (const auto& [bytes, entries] : cases)
        EXPECT_EQ(ReadOld(bytes), entries) << bytes;
    EXPECT_EQ(ReadOld("[HISTORY]\nCOUNT=1\nFP0=a\nC0=1\n", 10), "") << "too long";
}

} // namespace
