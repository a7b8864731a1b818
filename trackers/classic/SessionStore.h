#pragma once

#include <string>

namespace trackers {

// The named values that describe the visitor's sessions with one product, kept from run to run:
//
//   FV    first visit          LV    start of the session before the current one
//   SID   number of sessions   CV    start of the current session
//   PVC   next pageview        LPV   latest request
//
// Times are decimal seconds since 1970. A value is a text of the registry's key
// "CLSID\{5E93...}\2_" with the product's name behind it, in the classes root or, where that
// cannot be written, the current user's hive; where neither can, it is a key of the section "DATA"
// of "tallyhivesession.dat" in the product's folder.
//
// Threads: one at a time.
class CSessionStore
{
public:
    CSessionStore(std::wstring companyFolderWord, std::wstring hostProductName);

    // The value; empty when no place has it. One that is not found in the classes root is copied
    // there.
    std::wstring GetSessionValue(const std::wstring& name) const;

    // Stores in the first place that takes it; failure is not reported.
    void SetSessionValue(const std::wstring& name, const std::wstring& value) const;

private:
    std::wstring GetFilePath() const;

    const std::wstring companyWord;
    const std::wstring productName;
    const std::wstring keyPath;
};

} // namespace trackers
