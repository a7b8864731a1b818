#include "trackers/classic/VisitorState.h"

#include "platform/Clock.h"
#include "text/Decimal.h"
#include "text/Format.h"

namespace trackers {

namespace {

std::wstring GetTimeText() { return text::FormatText(L"%I64d", platform::GetUnixTime()); }

std::wstring FormatCount(std::int64_t count) { return text::FormatText(L"%d", count); }

std::wstring OrElse(const std::wstring& value, const std::wstring& otherwise)
{
    return value.empty() ? otherwise : value;
}

} // namespace

void CVisitorState::LoadVisitorState(const CSessionStore& store, bool continueSession)
{
    if (loaded)
        return;
    loaded = true;
    visit.firstVisitTime = store.GetSessionValue(L"FV");
    if (visit.firstVisitTime.empty())
        return BeginFirstSession(store);
    visit.sessionCount = OrElse(store.GetSessionValue(L"SID"), L"1");
    if (continueSession)
        ContinueSession(store);
    else
        BeginNextSession(store);
}

void CVisitorState::BeginFirstSession(const CSessionStore& store)
{
    visit.firstVisitTime = GetTimeText();
    visit.previousVisitTime = visit.firstVisitTime;
    visit.currentVisitTime = visit.firstVisitTime;
    visit.sessionCount = L"1";
    olderPreviousVisitTime = visit.firstVisitTime;
    store.SetSessionValue(L"FV", visit.firstVisitTime);
    StoreSessionStart(store);
}

void CVisitorState::BeginNextSession(const CSessionStore& store)
{
    olderPreviousVisitTime = OrElse(store.GetSessionValue(L"LV"), visit.firstVisitTime);
    visit.previousVisitTime = OrElse(store.GetSessionValue(L"CV"), visit.firstVisitTime);
    visit.currentVisitTime = GetTimeText();
    visit.sessionCount = FormatCount(std::int64_t{text::ReadDecimal(visit.sessionCount)} + 1);
    StoreSessionStart(store);
}

void CVisitorState::ContinueSession(const CSessionStore& store)
{
    visit.previousVisitTime = OrElse(store.GetSessionValue(L"LV"), visit.firstVisitTime);
    visit.currentVisitTime = store.GetSessionValue(L"CV");
}

void CVisitorState::StoreSessionStart(const CSessionStore& store)
{
    hasBegun = true;
    store.SetSessionValue(L"LV", visit.previousVisitTime);
    store.SetSessionValue(L"CV", visit.currentVisitTime);
    store.SetSessionValue(L"SID", visit.sessionCount);
    store.SetSessionValue(L"PVC", L"1");
    store.SetSessionValue(L"LPV", L"");
}

void CVisitorState::CountRequest(const CSessionStore& store, std::uint32_t startTick)
{
    if (!hasCounted)
        visit.hitNumber = startTick;
    hasCounted = true;
    ++visit.hitNumber;

    visit.sessionHitNumber = store.GetSessionValue(L"PVC");
    std::int64_t number = text::ReadDecimal(visit.sessionHitNumber);
    if (number < 1)
    {
        number = 1;
        visit.sessionHitNumber = L"1";
    }
    store.SetSessionValue(L"PVC", FormatCount(number + 1));
    store.SetSessionValue(L"LPV", GetTimeText());
}

void CVisitorState::RollBackSessionStart(const CSessionStore& store) const
{
    if (!hasBegun)
        return;
    store.SetSessionValue(L"SID",
                          FormatCount(std::int64_t{text::ReadDecimal(visit.sessionCount)} - 1));
    store.SetSessionValue(L"LV", olderPreviousVisitTime);
    store.SetSessionValue(L"CV", visit.previousVisitTime);
    store.SetSessionValue(L"PVC", L"1");
    store.SetSessionValue(L"LPV", L"");
}

} // namespace trackers
