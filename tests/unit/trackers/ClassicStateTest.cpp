#include "tests/simulated/Files.h"
#include "tests/simulated/Registry.h"
#include "tests/simulated/Simulated.h"
#include "tests/simulated/VirtualTime.h"
#include "trackers/classic/OldHistory.h"
#include "trackers/classic/SessionStore.h"
#include "trackers/classic/VisitHistory.h"
#include "trackers/classic/VisitorState.h"

#include <gtest/gtest.h>

#include <optional>

using namespace trackers;
using platform::ERegistryRoot;
using platform::ERegistryView;
using simulated::ERegistryDenial;

namespace {

const wchar_t* const sessionKey = L"CLSID\\{5E93C0A7-2D41-4F86-B7C9-03E8D12A6F95}\\2_Tool";
const wchar_t* const sessionFile = L"C:\\ProgramData\\veltrano\\Tool\\tallyhivesession.dat";

class SessionTest : public testing::Test
{
protected:
    SessionTest()
    {
        simulated::Reset();
        simulated::PutFolder(L"C:\\ProgramData");
    }

    static void Put(ERegistryRoot root, const wchar_t* name, const wchar_t* value)
    {
        simulated::PutRegistryText(root, sessionKey, ERegistryView::View32, name, value);
    }

    // "-" when it is not there.
    static std::wstring Find(ERegistryRoot root, const wchar_t* name)
    {
        return simulated::FindRegistryText(root, sessionKey, ERegistryView::View32, name)
            .value_or(L"-");
    }

    // SID LV CV PVC LPV of the registry.
    static std::wstring FindAll()
    {
        std::wstring all = Find(ERegistryRoot::ClassesRoot, L"SID");
        for (const wchar_t* name : {L"LV", L"CV", L"PVC", L"LPV"})
            all += L" " + Find(ERegistryRoot::ClassesRoot, name);
        return all;
    }

    const CSessionStore store{L"veltrano", L"Tool"};
};

TEST_F(SessionTest, ValuesGoToTheFirstPlaceThatTakesThem)
{
    const struct
    {
        ERegistryDenial classes, user;
        const wchar_t *inClasses, *inUser;
        const char* inFile;
    } cases[] = {
        {ERegistryDenial::None, ERegistryDenial::None, L"a", L"-", ""},
        {ERegistryDenial::Setting, ERegistryDenial::None, L"-", L"a", ""},
        {ERegistryDenial::Creating, ERegistryDenial::Creating, L"-", L"-", "[DATA]\r\nCV=a\r\n"},
    };
    for (const auto& c : cases)
    {
        simulated::Reset();
        simulated::SetRegistryDenial(ERegistryRoot::ClassesRoot, c.classes);
        simulated::SetRegistryDenial(ERegistryRoot::CurrentUser, c.user);
        simulated::PutFolder(L"C:\\ProgramData");
        store.SetSessionValue(L"CV", L"a");
        EXPECT_EQ(Find(ERegistryRoot::ClassesRoot, L"CV"), c.inClasses);
        EXPECT_EQ(Find(ERegistryRoot::CurrentUser, L"CV"), c.inUser);
        EXPECT_EQ(simulated::ReadFileBytes(sessionFile).value_or(""), c.inFile);
        EXPECT_EQ(store.GetSessionValue(L"CV"), L"a");

        simulated::SetRegistryDenial(ERegistryRoot::ClassesRoot, ERegistryDenial::None);
        EXPECT_EQ(store.GetSessionValue(L"CV"), L"a");
        EXPECT_EQ(Find(ERegistryRoot::ClassesRoot, L"CV"), L"a") << "repaired";
    }
}

TEST_F(SessionTest, TheClassesRootIsReadFirstAndOnlyIn32Bits)
{
    simulated::PutRegistryText(ERegistryRoot::ClassesRoot, sessionKey, ERegistryView::View64, L"CV",
                               L"other view");
    simulated::PutFile(sessionFile, "[DATA]\r\nCV=file\r\n");
    EXPECT_EQ(store.GetSessionValue(L"CV"), L"file");
    simulated::RemoveRegistryKey(ERegistryRoot::ClassesRoot, sessionKey, ERegistryView::View32);
    Put(ERegistryRoot::CurrentUser, L"CV", L"user");
    EXPECT_EQ(store.GetSessionValue(L"CV"), L"user");
    Put(ERegistryRoot::ClassesRoot, L"CV", L"classes");
    EXPECT_EQ(store.GetSessionValue(L"CV"), L"classes");
    EXPECT_EQ(store.GetSessionValue(L"SID"), L"");
}

TEST_F(SessionTest, TheContentFolderCanBeConfigured)
{
    for (const auto root : {ERegistryRoot::ClassesRoot, ERegistryRoot::CurrentUser})
        simulated::SetRegistryDenial(root, ERegistryDenial::Opening);
    simulated::PutFile(L"C:\\Host\\install.cfg", "[install]\r\nUserContentPath=C:\\Own\\dir\r\n");
    simulated::PutFolder(L"C:\\Own");
    store.SetSessionValue(L"FV", L"1");
    EXPECT_TRUE(simulated::ReadFileBytes(L"C:\\Own\\dirtallyhivesession.dat").has_value());
    EXPECT_FALSE(simulated::disk->items.contains(L"C:\\ProgramData\\veltrano"));
}

TEST_F(SessionTest, SessionsOverFourRuns)
{
    simulated::SetUnixTime(1000);
    CVisitorState first;
    first.LoadVisitorState(store, false);
    EXPECT_EQ(FindAll(), L"1 1000 1000 1 ");
    simulated::SetUnixTime(2000);
    first.LoadVisitorState(store, false);
    EXPECT_EQ(FindAll(), L"1 1000 1000 1 ") << "once per run";

    CVisitorState second;
    second.LoadVisitorState(store, false);
    EXPECT_EQ(FindAll(), L"2 1000 2000 1 ");
    second.CountRequest(store, 50);
    second.CountRequest(store, 70);
    EXPECT_EQ(FindAll(), L"2 1000 2000 3 2000");
    EXPECT_EQ(second.GetVisit().hitNumber, 52u) << "goes on once it has begun";

    simulated::SetUnixTime(3000);
    CVisitorState third;
    third.LoadVisitorState(store, true);
    EXPECT_EQ(FindAll(), L"2 1000 2000 3 2000") << "a continued session changes nothing";
    third.CountRequest(store, 4'294'967'295);
    EXPECT_EQ(FindAll(), L"2 1000 2000 4 3000");
    const ClassicVisit& visit = third.GetVisit();
    EXPECT_EQ(visit.firstVisitTime + L" " + visit.previousVisitTime + L" " +
                  visit.currentVisitTime + L" " + visit.sessionCount + L" " +
                  visit.sessionHitNumber + L" " + std::to_wstring(visit.hitNumber),
              L"1000 1000 2000 2 3 4294967296");

    CVisitorState fourth;
    fourth.LoadVisitorState(store, false);
    EXPECT_EQ(FindAll(), L"3 2000 3000 1 ");
    fourth.RollBackSessionStart(store);
    EXPECT_EQ(FindAll(), L"2 1000 2000 1 ");
    CVisitorState().RollBackSessionStart(store);
    EXPECT_EQ(FindAll(), L"2 1000 2000 1 ") << "nothing was loaded";
}

TEST_F(SessionTest, RollBackOfAFirstVisitAndOfAContinuedOne)
{
    simulated::SetUnixTime(1000);
    CVisitorState first;
    first.LoadVisitorState(store, true); // there is none to continue
    EXPECT_EQ(FindAll(), L"1 1000 1000 1 ");
    first.RollBackSessionStart(store);
    EXPECT_EQ(FindAll(), L"0 1000 1000 1 ");

    Put(ERegistryRoot::ClassesRoot, L"SID", L"5");
    Put(ERegistryRoot::ClassesRoot, L"LV", L"500");
    CVisitorState continued;
    continued.LoadVisitorState(store, true);
    continued.RollBackSessionStart(store);
    EXPECT_EQ(FindAll(), L"5 500 1000 1 ") << "begun by an earlier run";
}

TEST_F(SessionTest, OddValuesCountAsTheirDefaults)
{
    const struct
    {
        const wchar_t *sid, *nextSid, *pvc, *hit, *nextPvc;
    } cases[] = {
        {L"", L"2", L"", L"1", L"2"},
        {L"abc", L"1", L"abc", L"1", L"2"},
        {L"-7", L"-6", L"-7", L"1", L"2"},
        {L"9x", L"10", L"9x", L"9x", L"10"},
        {L"2147483647", L"-2147483648", L"2147483647", L"2147483647", L"-2147483648"},
        {L"99999999999", L"-2147483648", L"99999999999", L"99999999999", L"-2147483648"},
    };
    simulated::SetUnixTime(9);
    for (const auto& c : cases)
    {
        simulated::RemoveRegistryKey(ERegistryRoot::ClassesRoot, sessionKey, ERegistryView::View32);
        Put(ERegistryRoot::ClassesRoot, L"FV", L"7");
        Put(ERegistryRoot::ClassesRoot, L"SID", c.sid);
        CVisitorState continued;
        continued.LoadVisitorState(store, true);
        EXPECT_EQ(continued.GetVisit().sessionCount, *c.sid == L'\0' ? L"1" : c.sid);
        EXPECT_EQ(continued.GetVisit().previousVisitTime, L"7");
        CVisitorState state;
        state.LoadVisitorState(store, false);
        EXPECT_EQ(state.GetVisit().sessionCount, c.nextSid);
        Put(ERegistryRoot::ClassesRoot, L"PVC", c.pvc);
        state.CountRequest(store, 0);
        EXPECT_EQ(state.GetVisit().sessionHitNumber, c.hit);
        EXPECT_EQ(Find(ERegistryRoot::ClassesRoot, L"PVC"), c.nextPvc);
        EXPECT_EQ(state.GetVisit().previousVisitTime, L"7") << "there is no later one";
        state.RollBackSessionStart(store);
        EXPECT_EQ(Find(ERegistryRoot::ClassesRoot, L"LV"), L"7");
    }
}

// --- history -------------------------------------------------------------------------------------

const std::wstring folder = L"C:\\Content\\";
const std::wstring oldFile = folder + L"tallyhive.dat";
const std::wstring historyFile = folder + L"tallyhive.xml";

frame::TrackingHit MakeEvent(const wchar_t* label)
{
    return {frame::EHitType::Event, L"v", L"Cat", label, L"Act", L"Page", false};
}

// Of "Cat_Act_one_Page" and "Cat_Act_two_Page".
const char* const one = "96c552ba42c97d9ac724f5ad392c2567";
const char* const two = "a0c23c623d3059207ca5a154db492579";

std::string MakeFile(const std::string& children)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<SimpleXMLElement>" + children +
           "</SimpleXMLElement>\n";
}

std::string MakeLine(const std::string& fingerprint, const char* count)
{
    return "\t<" + fingerprint + ">" + count + "</" + fingerprint + ">\n";
}

class HistoryTest : public testing::Test
{
protected:
    HistoryTest()
    {
        simulated::Reset();
        simulated::PutFolder(folder);
        history.emplace(folder);
    }

    // What a run with one occurrence of the event "one" leaves.
    std::string Run()
    {
        history.emplace(folder);
        history->LoadHistory();
        history->CountEventOccurrence(MakeEvent(L"one"));
        history->SaveHistory();
        return simulated::ReadFileBytes(historyFile).value_or("none");
    }

    std::optional<CVisitHistory> history;
};

TEST_F(HistoryTest, IsWrittenAndReadBack)
{
    history->LoadHistory();
    history->SaveHistory();
    EXPECT_EQ(simulated::ReadFileBytes(historyFile), MakeFile(""));
    EXPECT_EQ(history->CountEventOccurrence(MakeEvent(L"one")), 1);
    EXPECT_EQ(history->CountEventOccurrence(MakeEvent(L"two")), 1);
    EXPECT_EQ(history->CountEventOccurrence(MakeEvent(L"one")), 2);
    frame::TrackingHit other = MakeEvent(L"one");
    other.type = frame::EHitType::Message;
    EXPECT_EQ(history->CountEventOccurrence(other), 0);
    history->SaveHistory();
    EXPECT_EQ(simulated::ReadFileBytes(historyFile),
              MakeFile("\n" + MakeLine(one, "2") + MakeLine(two, "1")));
    EXPECT_EQ(Run(), MakeFile("\n" + MakeLine(one, "3") + MakeLine(two, "1")));
}

TEST_F(HistoryTest, FilesThatAreNoHistoryAreAnEmptyOne)
{
    for (const std::string& text :
         {std::string("garbage"), std::string("<a>5</a>"), std::string("<a><b></b></c>"),
          MakeFile("\n" + MakeLine(two, "1") + std::string(8 << 20, ' '))})
    {
        simulated::PutFile(historyFile, text);
        EXPECT_EQ(Run(), MakeFile("\n" + MakeLine(one, "1"))) << text.substr(0, 20);
    }
}

TEST_F(HistoryTest, ALongOneStaysWhole)
{
    std::string lines = "\n";
    for (int i = 10'000; i < 20'000; ++i)
        lines += MakeLine("abcdefabcdefabcdefabcdefabc" + std::to_string(i), "1");
    simulated::PutFile(historyFile, MakeFile(lines));
    EXPECT_EQ(Run(), MakeFile(lines + MakeLine(one, "1")));
}

TEST_F(HistoryTest, OddCountsGoOnAsNumbers)
{
    const struct
    {
        const char *stored, *next;
    } cases[] = {{"7", "8"}, {"", "1"}, {"7.9", "8"}, {"2147483647", "2147483647"}};
    for (const auto& c : cases)
    {
        simulated::PutFile(historyFile, MakeFile("\n" + MakeLine(one, c.stored)));
        EXPECT_EQ(Run(), MakeFile("\n" + MakeLine(one, c.next))) << c.stored;
    }
}

TEST_F(HistoryTest, AnOldFileIsTakenOverOnceAndInPlaceOfTheNewOne)
{
    const std::string kept = MakeFile("\n" + MakeLine(two, "9"));
    simulated::PutFile(historyFile, kept);
    history->SaveHistory();
    EXPECT_EQ(simulated::ReadFileBytes(historyFile), kept) << "it has not been read";
    simulated::PutFile(oldFile, std::string("[HISTORY]\r\nCOUNT=2\r\nFP0=") + one +
                                    "\r\nC0=4\r\nFP1=x\r\nC1=1\r\nFP2=y\r\nC2=1\r\n");
    history->LoadHistory();
    EXPECT_EQ(simulated::ReadFileBytes(historyFile),
              MakeFile("\n" + MakeLine(one, "4") + MakeLine("x", "1")));
    EXPECT_FALSE(simulated::ReadFileBytes(oldFile).has_value());
    EXPECT_EQ(Run(), MakeFile("\n" + MakeLine(one, "5") + MakeLine("x", "1")));
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

TEST_F(HistoryTest, OldFilesOfAnyForm)
{
    const struct
    {
        const char *what, *lines, *entries;
    } cases[] = {
        {"any order, blanks, quotes, case, comments",
         "[x]\nFP0=no\n [ history ] \r\n\r\nc1 = '3'\nfp1= \"b\" \n;FP0=z\nC0=1\nFP0=a\nCount=2",
         "a=1 b=3 "},
        {"first of two", "[HISTORY]\nCOUNT=1\nFP0=a\nFP0=b\nC0=5\nC0=6\nCOUNT=2\nFP1=c\nC1=1\n",
         "a=5 "},
        {"first section only", "[HISTORY]\nCOUNT=1\nC0=1\n[y]\n[HISTORY]\nFP0=a\n", ""},
        {"gaps", "[HISTORY]\nCOUNT=5\nFP0=\nC0=1\nFP1=b\nFP2=c\nC2=0\nFP3=d\nC3=x\nFP4=e\nC4=-1\n",
         ""},
        {"behind a gap", "[HISTORY]\nCOUNT=4\nFP3=e\nC3=2\n;..............................",
         "e=2 "},
        {"numbers in other forms",
         "[HISTORY]\nCOUNT=9\nFP00=a\nC00=1\nFP+1=b\nC+1=1\nFP=c\nC=1\nFP1x=d\nC1=1\n", ""},
        {"no count", "[HISTORY]\nFP0=a\nC0=1\n", ""},
        {"negative", "[HISTORY]\nCOUNT=-1\nFP0=a\nC0=1\n", ""},
        {"lying", "[HISTORY]\nCOUNT=2147483647\nFP0=a\nC0=1\nFP999999999=b\nC999999999=1\n",
         "a=1 "},
        {"number too high for the file", "[HISTORY]\nCOUNT=9\nFP2=a\nC2=1\n", ""},
        {"no header", "COUNT=1\nFP0=a\nC0=1\n", ""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(ReadOld(c.lines), c.entries) << c.what;
    std::string units = "\xFF\xFE";
    for (const char unit : std::string("[HISTORY]\nCOUNT=1\nFP0=a\nC0=7"))
        units.append({unit, '\0'});
    EXPECT_EQ(ReadOld(units), "a=7 ");
    EXPECT_EQ(ReadOld("[HISTORY]\nCOUNT=1\nFP0=a\nC0=1\n", 10), "") << "too long";
}

} // namespace
