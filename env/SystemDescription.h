#pragma once

#include <string>

// The visitor's system as the trackers describe it. Any thread.
namespace env {

// Major and minor version of Windows as it reports them to the host process, for example "6.1".
std::wstring GetOsVersionString();

// Whether the native processor is an x64; false on ARM64. Found out once per process.
bool Is64BitWindows();

// The locale code of the user's default interface language, for example "en_US".
std::wstring GetUserLanguageCode();

// "Windows NT 6.1", with "; WOW64" behind it on 64-bit Windows.
std::wstring DescribeSystem();

} // namespace env
