#pragma once

#include <string>
#include <string_view>

// The model's tables cover ASCII, Latin-1 and the basic Greek and Cyrillic letters. Its default
// code page is 1252.
namespace simulated {

// Makes every DecodeUtf8 fail, as on a system without the code page.
void SetUtf8DecodingFails(bool fails);

// UTF-16 to the default code page; what it lacks becomes '?'.
std::string EncodeAnsi(std::wstring_view text);

void ResetCodePage();

} // namespace simulated
