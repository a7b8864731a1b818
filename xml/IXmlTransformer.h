#pragma once

#include <string>

namespace xml {

// Changes a document's bytes on their way to a file and back. Belongs to whoever saves and loads;
// `key` is what that caller passed along.
class IXmlTransformer
{
public:
    virtual std::string Encode(const std::string& key, const std::string& text) = 0;
    virtual std::string Decode(const std::string& key, const std::string& text) = 0;

protected:
    ~IXmlTransformer() = default; // never deleted through this interface
};

} // namespace xml
