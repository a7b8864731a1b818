#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace xml {

// Where the child elements of a document end.
//
// A tag reaches from a "<" to the first space or ">" behind it; between them stands its name,
// which may hold any other byte. "<name>" opens, "</name>" closes, "<name " opens without being
// counted by the elements around it. The tag at the first "<" of each stretch of text up to a ">"
// may start a child. The child ends at the first closing tag of its name that closes more than was
// opened behind its start tag. A closing tag inside the start tag ends it, too, and makes it none.
//
//   <a><a>1</a>2</a>       the first <a> ends at the second </a>, for another one was opened
//   <a><a x="1">2</a>3</a> the first <a> ends at the first </a>: "<a " is not counted
//
// All are found in one pass. Names ending at the same ">" are suffixes of each other; they are told
// apart by hashes that grow from the right and confirmed byte by byte, so that each byte is
// compared a bounded number of times.
//
// Threads: one at a time.
class CTagPairs
{
public:
    // Reads the tags of `wholeText` from `begin` on. The text must outlive this object.
    CTagPairs(std::string_view wholeText, std::size_t begin);

    // The position behind the closing tag of the child whose "<" stands at `start`; npos when it
    // has none. To be asked for ever higher positions.
    std::size_t FindEnd(std::size_t start);

private:
    struct Tag
    {
        std::size_t start;
        std::size_t end;   // behind the closing tag; npos until it is found
        std::size_t below; // the tag of the same name that was open before
        bool counts;
    };

    struct Name
    {
        std::string_view text;
        const Name* inner; // the longest known name that ends this one behind a "<"
        std::size_t top;   // the last open tag
    };

    // What is read of a stretch of text, from its end to its front.
    struct Suffix
    {
        std::string_view text;
        std::uint64_t hash = 0;
        const Name* inner = nullptr; // the longest known name read on the way
    };

    void ReadStretch(std::size_t begin, std::size_t end);
    void ReadPlainTag(Suffix& tag, std::uint64_t hashBehindSlash, std::size_t start,
                      std::size_t end);
    void ReadTagWithAttributes(std::string_view stretch, std::string_view name, std::size_t start);
    std::uint64_t Prepend(char byte, std::uint64_t hash) const;
    Name* FindName(const Suffix& name);
    Name& AddName(const Suffix& name);
    void OpenTag(Name& name, std::size_t start, bool counts);
    void CloseTag(Name& name, std::size_t end);

    const std::string_view text;
    const std::uint64_t multiplier;
    const bool hasClosedClosingTags;
    std::unordered_multimap<std::uint64_t, Name> names; // by hash
    std::vector<Tag> tags;                              // by position
    std::size_t nextTag = 0;
};

} // namespace xml
