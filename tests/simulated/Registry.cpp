#include "tests/simulated/Registry.h"

#include "tests/simulated/UpperCase.h"

#include <algorithm>
#include <array>
#include <map>
#include <mutex>
#include <utility>

using platform::ERegistryRoot;
using platform::ERegistryView;

namespace simulated {

namespace {

using Values = std::map<std::wstring, RegistryValue>; // by upper-case name
using KeyPath = std::pair<ERegistryRoot, std::wstring>;

struct RegistryState
{
    std::map<KeyPath, Values> keys; // by their place in the store, in upper case
    std::map<ERegistryRoot, ERegistryDenial> denials;
};

std::mutex mutex;
RegistryState registry; // guarded by `mutex`

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

// Creates a key and all that is missing above it.
Values& CreateAt(const KeyPath& place)
{
    const auto& [root, path] = place;
    for (std::size_t end = path.find(L'\\'); end != path.npos; end = path.find(L'\\', end + 1))
        registry.keys.try_emplace({root, path.substr(0, end)});
    return registry.keys[place];
}

const RegistryValue* FindAt(const KeyPath& place, const std::wstring& name)
{
    const auto key = registry.keys.find(place);
    if (key == registry.keys.end())
        return nullptr;
    const auto value = key->second.find(UpperCase(name));
    return value == key->second.end() ? nullptr : &value->second;
}

bool Refuses(ERegistryRoot root, ERegistryDenial denial)
{
    const auto found = registry.denials.find(root);
    return found != registry.denials.end() && found->second == denial;
}

} // namespace

std::vector<std::uint8_t> TerminatedText(const std::wstring& text)
{
    std::vector<std::uint8_t> bytes;
    for (std::size_t i = 0; i <= text.size(); ++i) // c_str() ends in the zero
    {
        bytes.push_back(static_cast<std::uint8_t>(text.c_str()[i] & 0xFF));
        bytes.push_back(static_cast<std::uint8_t>(text.c_str()[i] >> 8 & 0xFF));
    }
    return bytes;
}

void PutRegistryValue(ERegistryRoot root, const std::wstring& subKey, ERegistryView view,
                      const std::wstring& name, const RegistryValue& value)
{
    const std::scoped_lock lock(mutex);
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
    const std::scoped_lock lock(mutex);
    const RegistryValue* found = FindAt(PlaceOf(root, subKey, view), name);
    return found == nullptr ? std::nullopt : std::optional(*found);
}

std::optional<std::wstring> FindRegistryText(ERegistryRoot root, const std::wstring& subKey,
                                             ERegistryView view, const std::wstring& name)
{
    const auto value = FindRegistryValue(root, subKey, view, name);
    if (!value || value->type != platform::registrySz || value->bytes.size() % 2 != 0)
        return std::nullopt;
    std::wstring text;
    for (std::size_t i = 0; i < value->bytes.size(); i += 2)
        text += static_cast<wchar_t>(value->bytes[i] | value->bytes[i + 1] << 8);
    if (text.empty() || text.back() != 0)
        return std::nullopt;
    text.pop_back();
    return text;
}

bool RegistryKeyExists(ERegistryRoot root, const std::wstring& subKey, ERegistryView view)
{
    const std::scoped_lock lock(mutex);
    return registry.keys.contains(PlaceOf(root, subKey, view));
}

void RemoveRegistryKey(ERegistryRoot root, const std::wstring& subKey, ERegistryView view)
{
    const std::scoped_lock lock(mutex);
    const KeyPath place = PlaceOf(root, subKey, view);
    std::erase_if(registry.keys, [&place](const auto& entry) {
        const auto& [root2, path] = entry.first;
        return root2 == place.first && IsAtOrBelow(path, place.second);
    });
}

void SetRegistryDenial(ERegistryRoot root, ERegistryDenial denial)
{
    const std::scoped_lock lock(mutex);
    registry.denials[root] = denial;
}

void ResetRegistry()
{
    const std::scoped_lock lock(mutex);
    registry = {};
}

} // namespace simulated

namespace platform {

using simulated::ERegistryDenial;
using simulated::registry;
using simulated::RegistryValue;

struct CRegistryKey::Native
{
    simulated::KeyPath place;
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
    const std::scoped_lock lock(simulated::mutex);
    const simulated::KeyPath place = simulated::PlaceOf(root, subKey, view);
    const bool refused =
        access == ERegistryAccess::All && simulated::Refuses(root, ERegistryDenial::Opening);
    if (refused || !registry.keys.contains(place))
        return {};
    return CRegistryKey(std::make_unique<Native>(Native{place, access}));
}

CRegistryKey CRegistryKey::Create(ERegistryRoot root, const std::wstring& subKey,
                                  ERegistryView view, bool& existed)
{
    const std::scoped_lock lock(simulated::mutex);
    const simulated::KeyPath place = simulated::PlaceOf(root, subKey, view);
    const bool exists = registry.keys.contains(place);
    if (simulated::Refuses(root, ERegistryDenial::Opening) ||
        (!exists && simulated::Refuses(root, ERegistryDenial::Creating)))
        return {};
    simulated::CreateAt(place);
    existed = exists;
    return CRegistryKey(std::make_unique<Native>(Native{place, ERegistryAccess::All}));
}

bool CRegistryKey::QueryType(const std::wstring& name, std::uint32_t& type) const
{
    const std::scoped_lock lock(simulated::mutex);
    const RegistryValue* value = native ? simulated::FindAt(native->place, name) : nullptr;
    if (value == nullptr)
        return false;
    type = value->type;
    return true;
}

ERegistryQuery CRegistryKey::Query(const std::wstring& name, std::vector<std::uint8_t>& buffer,
                                   std::size_t& size) const
{
    const std::scoped_lock lock(simulated::mutex);
    const RegistryValue* value = native ? simulated::FindAt(native->place, name) : nullptr;
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
    const std::scoped_lock lock(simulated::mutex);
    if (!native || native->access != ERegistryAccess::All ||
        simulated::Refuses(native->place.first, ERegistryDenial::Setting))
        return false;
    const auto key = registry.keys.find(native->place);
    if (key == registry.keys.end())
        return false;
    key->second[simulated::UpperCase(name)] = {type, bytes};
    return true;
}

} // namespace platform
