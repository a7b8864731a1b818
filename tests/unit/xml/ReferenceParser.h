#pragma once

#include <string>

namespace reference {

// What the writer makes of the tree that the parser makes of prepared text: the rules of both taken
// literally, by searches on copies of the text and by recursion, at any cost.
std::string ReadAndWrite(const std::string& text, const std::string& indent);

} // namespace reference
