#include "xml/TagPairs.h"

#include "platform/Clock.h"

namespace xml {

namespace {

constexpr std::size_t none = std::string_view::npos;
constexpr std::size_t notAChild = 0; // the start of a tag that is only counted

// Differs from run to run, so that nobody can prepare names whose hashes are equal.
std::uint64_t ChooseMultiplier(const void* somewhere)
{
    const std::uint64_t chosen = reinterpret_cast<std::uintptr_t>(somewhere) ^
                                 (std::uint64_t{platform::GetTickMilliseconds()} << 32);
    return (chosen * 0x9E3779B97F4A7C15 << 3) | 5;
}

} // namespace

CTagPairs::CTagPairs(std::string_view wholeText, std::size_t begin)
    : text(wholeText),
      multiplier(ChooseMultiplier(this)),
      hasClosedClosingTags(wholeText.find("<//", begin) != none)
{
    for (std::size_t end; (end = text.find('>', begin)) != none; begin = end + 1)
        ReadStretch(begin, end);
}

std::size_t CTagPairs::FindEnd(std::size_t start)
{
    while (nextTag < tags.size() && tags[nextTag].start < start)
        ++nextTag;
    const bool isKnown = nextTag < tags.size() && tags[nextTag].start == start;
    return isKnown ? tags[nextTag].end : none;
}

// Reads the text from `begin` up to the ">" at `end`.
void CTagPairs::ReadStretch(std::size_t begin, std::size_t end)
{
    const std::string_view stretch = text.substr(begin, end - begin);
    const std::size_t first = stretch.find('<');
    if (first == none)
        return;
    const std::size_t space = stretch.find(' ', first);
    const bool isPlain = space == none;
    const std::size_t front = isPlain ? first : stretch.rfind(' ') + 1;

    Suffix suffix;
    std::uint64_t hashBehind = 0; // of the suffix without its first byte
    for (std::size_t i = stretch.size(); i-- > front;)
    {
        if (stretch[i] == '<')
        {
            suffix.text = stretch.substr(i + 1);
            ReadPlainTag(suffix, hashBehind, i == first ? begin + i : notAChild, end + 1);
        }
        hashBehind = suffix.hash;
        suffix.hash = Prepend(stretch[i], suffix.hash);
    }
    if (!isPlain)
        ReadTagWithAttributes(stretch, stretch.substr(first + 1, space - first - 1), begin + first);
}

void CTagPairs::ReadPlainTag(Suffix& tag, std::uint64_t hashBehindSlash, std::size_t start,
                             std::size_t end)
{
    const bool isClosing = tag.text.starts_with('/');
    if (isClosing)
        if (Name* closed = FindName({tag.text.substr(1), hashBehindSlash, tag.inner}))
            CloseTag(*closed, end);
    Name* opened = FindName(tag);
    if (opened == nullptr && start != notAChild && (!isClosing || hasClosedClosingTags))
        opened = &AddName(tag);
    if (opened == nullptr)
        return;
    OpenTag(*opened, start, true);
    tag.inner = opened;
}

void CTagPairs::ReadTagWithAttributes(std::string_view stretch, std::string_view name,
                                      std::size_t start)
{
    const std::size_t closing = stretch.size() - name.size();
    if (stretch.ends_with(name) && stretch.substr(0, closing).ends_with("</"))
        return;
    Suffix tag;
    for (std::size_t i = name.size(); i-- > 0;)
        tag.hash = Prepend(name[i], tag.hash);
    tag.text = name;
    Name* known = FindName(tag);
    OpenTag(known != nullptr ? *known : AddName(tag), start, false);
}

std::uint64_t CTagPairs::Prepend(char byte, std::uint64_t hash) const
{
    return (hash + static_cast<unsigned char>(byte) + 1) * multiplier;
}

CTagPairs::Name* CTagPairs::FindName(const Suffix& name)
{
    const auto [begin, end] = names.equal_range(name.hash);
    for (auto entry = begin; entry != end; ++entry)
    {
        Name& known = entry->second;
        const bool sharesInner = known.inner != nullptr && known.inner == name.inner;
        const std::size_t confirmed = sharesInner ? known.inner->text.size() : 0;
        if (known.text.size() != name.text.size() ||
            known.text.substr(0, known.text.size() - confirmed) !=
                name.text.substr(0, name.text.size() - confirmed))
            continue;
        known.inner = name.inner;
        return &known;
    }
    return nullptr;
}

CTagPairs::Name& CTagPairs::AddName(const Suffix& name)
{
    return names.emplace(name.hash, Name{name.text, name.inner, none})->second;
}

void CTagPairs::OpenTag(Name& name, std::size_t start, bool counts)
{
    tags.push_back({start, none, name.top, counts});
    name.top = tags.size() - 1;
}

// Ends the innermost counted tag, and those behind it that do not count.
void CTagPairs::CloseTag(Name& name, std::size_t end)
{
    for (bool counted = false; name.top != none && !counted;)
    {
        Tag& closed = tags[name.top];
        closed.end = end;
        counted = closed.counts;
        name.top = closed.below;
    }
}

} // namespace xml
