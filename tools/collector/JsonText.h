#pragma once

#include <string>
#include <string_view>

namespace collector {

// Appends the text as a JSON string. Bytes that are no UTF-8 become U+FFFD.
void AppendJsonText(std::string& json, std::string_view text);

// Writes one JSON object, member by member, without building a tree of it. Names go in as they
// stand.
class CJsonObject
{
public:
    explicit CJsonObject(std::string& to) : json(to) { json += '{'; }
    CJsonObject(const CJsonObject&) = delete;
    CJsonObject& operator=(const CJsonObject&) = delete;
    ~CJsonObject() { json += '}'; }

    void Add(std::string_view name, std::string_view text) { AppendJsonText(Begin(name), text); }
    void Add(std::string_view name, long long number) { Begin(name) += std::to_string(number); }
    void AddNull(std::string_view name) { Begin(name) += "null"; }

    // Where the caller appends the member's value itself.
    std::string& Begin(std::string_view name)
    {
        json.append(first ? "\"" : ",\"").append(name).append("\":");
        first = false;
        return json;
    }

private:
    std::string& json;
    bool first = true;
};

// Writes `write(item)` for each item, as a JSON array.
template <class Items, class Write>
void AppendJsonArray(std::string& json, const Items& items, const Write& write)
{
    char separator = '[';
    for (const auto& item : items)
    {
        json += separator;
        separator = ',';
        write(item);
    }
    json += separator == '[' ? "[]" : "]";
}

} // namespace collector
