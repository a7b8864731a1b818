#include "tests/simulated/Registry.h"

#include "tests/simulated/UpperCase.h"

#include <algorithm>
#include <utility>

using platform::ERegistryRoot;
using platform::ERegistryView;

namespace simulated {

CState<Registry> registry;

namespace {

using KeyPath = Registry::KeyPath;

bool IsAtOrBelow(const std::wstring& path, const std::wstring& top)
{
    return path == top || path.starts_with(top + L'\\');
}

// Where a key of a view stands in the store: a separate key's 32-bit form stands below
// "Wow6432Node" beside the 64-bit one.
KeyPath PlaceOf(ERegistryRoot root, const std::wstring& subKey, ERegistryView view)
{
    std::wstring path = UpperCase(subKey);
    const std::wstring classes = root == ERegistryRoot::ClassesRoot ? L"" : L"SOFTWARE\\CLASSES\\";
    if (view == ERegistryView::View32 && IsAtOrBelow(path, classes + L"CLSID"))
        path.insert(classes.size(), L"WOW6432NODE\\");
    return {root, path};
}

// Creates a key and all that is missing above it. The caller holds `registry`, here and in what
// follows.
Registry::Values& CreateAt(const KeyPath& place)
{
    const auto& [root, path] = place;
    for (std::size_t i = 0; (i = path.find(L'\\', i)) != path.npos; ++i)
        registry->keys.try_emplace({root, path.substr(0, i)});
    return registry->keys[place];
}

const RegistryValue* FindAt(const KeyPath& place, const std::wstring& name)
{
    const auto key = registry->keys.find(place);
    if (key == registry->keys.end())
        return nullptr;
    const auto value = key->second.find(UpperCase(name));
    return value == key->second.end() ? nullptr : &value->second;
}

bool Refuses(ERegistryRoot root, ERegistryDenial denial)
{
    return registry->denials[root] == denial;
}

} // namespace

void PutRegistryValue(ERegistryRoot root, const std::wstring& subKey, ERegistryView view,
                      const std::wstring& name, const RegistryValue& value)
{
    const auto held = registry.Hold();
    CreateAt(PlaceOf(root, subKey, view))[UpperCase(name)] = value;
}

void PutRegistryText(ERegistryRoot root, const std::wstring& subKey, ERegistryView view,
                     const std::wstring& name, const std::wstring& text)
{
    PutRegistryValue(root, subKey, view, name, {platform::registrySz, TerminatedText(text)});
}

std::optional<RegistryValue> FindRegistryValue(ERegistryRoot root, const std::wstring& subKey,
                                               ERegistryView view, const std::wstring& name)
{
    const auto held = registry.Hold();
    const RegistryValue* found = FindAt(PlaceOf(root, subKey, view), name);
    return found == nullptr ? std::nullopt : std::optional(*found);
}

std::optional<std::wstring> FindRegistryText(ERegistryRoot root, const std::wstring& subKey,
                                             ERegistryView view, const std::wstring& name)
{
    const auto value = FindRegistryValue(root, subKey, view, name);
    if (!value || value->type != platform::registrySz)
        return std::nullopt;
    std::wstring text = text::DecodeUnits(value->bytes);
    text.resize(text.empty() ? 0 : text.size() - 1);
    return value->bytes == TerminatedText(text) ? std::optional(text) : std::nullopt;
}

void RemoveRegistryKey(ERegistryRoot root, const std::wstring& subKey, ERegistryView view)
{
    const KeyPath place = PlaceOf(root, subKey, view);
    std::erase_if(registry->keys, [&place](const auto& entry) {
        return entry.first.first == place.first && IsAtOrBelow(entry.first.second, place.second);
    });
}

} // namespace simulated

namespace platform {

using namespace simulated;

struct CRegistryKey::Native
{
    KeyPath place;
    ERegistryAccess access;
};

CRegistryKey::CRegistryKey() noexcept = default;
CRegistryKey::CRegistryKey(CRegistryKey&& other) noexcept = default;
CRegistryKey& CRegistryKey::operator=(CRegistryKey&& other) noexcept = default;
CRegistryKey::~CRegistryKey() = default;
CRegistryKey::CRegistryKey(std::unique_ptr<Native> opened) noexcept : native(std::move(opened)) {}
CRegistryKey::operator bool() const noexcept { return native != nullptr; }

CRegistryKey CRegistryKey::Open(ERegistryRoot root, const std::wstring& subKey,
                                ERegistryAccess access, ERegistryView view)
{
    const auto held = registry.Hold();
    const KeyPath place = PlaceOf(root, subKey, view);
    const bool refused = access == ERegistryAccess::All && Refuses(root, ERegistryDenial::Opening);
    if (refused || !held->keys.contains(place))
        return {};
    return CRegistryKey(std::make_unique<Native>(Native{place, access}));
}

CRegistryKey CRegistryKey::Create(ERegistryRoot root, const std::wstring& subKey,
                                  ERegistryView view, bool& existed)
{
    const auto held = registry.Hold();
    const KeyPath place = PlaceOf(root, subKey, view);
    const bool exists = held->keys.contains(place);
    if (Refuses(root, ERegistryDenial::Opening) ||
        (!exists && Refuses(root, ERegistryDenial::Creating)))
        return {};
    CreateAt(place);
    existed = exists;
    return CRegistryKey(std::make_unique<Native>(Native{place, ERegistryAccess::All}));
}

bool CRegistryKey::QueryType(const std::wstring& name, std::uint32_t& type) const
{
    const auto held = registry.Hold();
    const RegistryValue* value = native ? FindAt(native->place, name) : nullptr;
    if (value == nullptr)
        return false;
    type = value->type;
    return true;
}

ERegistryQuery CRegistryKey::Query(const std::wstring& name, std::vector<std::uint8_t>& buffer,
                                   std::size_t& size) const
{
    const auto held = registry.Hold();
    const RegistryValue* value = native ? FindAt(native->place, name) : nullptr;
    if (value == nullptr)
        return ERegistryQuery::Failed;
    size = value->bytes.size();
    if (size > buffer.size())
        return ERegistryQuery::MoreData;
    std::copy(value->bytes.begin(), value->bytes.end(), buffer.begin());
    return ERegistryQuery::Done;
}

bool CRegistryKey::Set(const std::wstring& name, std::uint32_t type,
                       const std::vector<std::uint8_t>& bytes)
{
    const auto held = registry.Hold();
    if (!native || native->access != ERegistryAccess::All ||
        Refuses(native->place.first, ERegistryDenial::Setting))
        return false;
    const auto key = held->keys.find(native->place);
    if (key == held->keys.end())
        return false;
    key->second[UpperCase(name)] = {type, bytes};
    return true;
}

} // namespace platform
