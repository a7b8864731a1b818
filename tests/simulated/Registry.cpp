#include "tests/simulated/Registry.h"

#include <algorithm>
#include <utility>

namespace simulated {

CState<Registry> registry;

namespace {

// Where a key of a view stands in the store: a separate key's 32-bit form stands below
// "Wow6432Node" beside the 64-bit one.
std::wstring PlaceOf(ERegistryRoot root, const std::wstring& subKey, ERegistryView view)
{
    const bool isUser = root == ERegistryRoot::CurrentUser;
    const std::wstring classes = isUser ? L"HKCU\\SOFTWARE\\Classes\\" : L"HKCR\\";
    std::wstring place = (isUser ? L"HKCU\\" : L"HKCR\\") + subKey;
    if (view == ERegistryView::View32 && IsAtOrBelow(place, classes + L"CLSID"))
        place.insert(classes.size(), L"Wow6432Node\\");
    return place;
}

std::optional<RegistryValue> FindAt(const std::wstring& place, const std::wstring& name)
{
    const auto held = registry.Hold();
    const auto key = held->keys.find(place);
    if (key == held->keys.end() || !key->second.contains(name))
        return std::nullopt;
    return key->second.at(name);
}

} // namespace

void PutRegistryValue(ERegistryRoot root, const std::wstring& subKey, ERegistryView view,
                      const std::wstring& name, const RegistryValue& value)
{
    registry->keys[PlaceOf(root, subKey, view)][name] = value;
}

std::optional<RegistryValue> FindRegistryValue(ERegistryRoot root, const std::wstring& subKey,
                                               ERegistryView view, const std::wstring& name)
{
    return FindAt(PlaceOf(root, subKey, view), name);
}

std::optional<std::wstring> FindRegistryText(ERegistryRoot root, const std::wstring& subKey,
                                             ERegistryView view, const std::wstring& name)
{
    const auto value = FindRegistryValue(root, subKey, view, name);
    const std::wstring text = value ? text::DecodeUnits(value->bytes) : L"";
    if (!text.ends_with(L'\0') || value->type != platform::registrySz)
        return std::nullopt;
    return text.substr(0, text.size() - 1);
}

void RemoveRegistryKey(ERegistryRoot root, const std::wstring& subKey, ERegistryView view)
{
    std::erase_if(registry->keys, [place = PlaceOf(root, subKey, view)](const auto& entry) {
        return IsAtOrBelow(entry.first, place);
    });
}

} // namespace simulated

namespace platform {

using namespace simulated;

struct CRegistryKey::Native
{
    ERegistryRoot root;
    std::wstring place;
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
    const std::wstring place = PlaceOf(root, subKey, view);
    const bool isDenied = held->denials[root] == ERegistryDenial::Opening;
    if (!held->keys.contains(place) || (access == ERegistryAccess::All && isDenied))
        return {};
    return CRegistryKey(std::make_unique<Native>(Native{root, place, access}));
}

CRegistryKey CRegistryKey::Create(ERegistryRoot root, const std::wstring& subKey,
                                  ERegistryView view, bool& existed)
{
    const auto held = registry.Hold();
    const std::wstring place = PlaceOf(root, subKey, view);
    const bool exists = held->keys.contains(place);
    const ERegistryDenial denial = held->denials[root];
    if (denial == ERegistryDenial::Opening || (!exists && denial == ERegistryDenial::Creating))
        return {};
    held->keys.try_emplace(place);
    existed = exists;
    return CRegistryKey(std::make_unique<Native>(Native{root, place, ERegistryAccess::All}));
}

bool CRegistryKey::QueryType(const std::wstring& name, std::uint32_t& type) const
{
    const auto value = native ? FindAt(native->place, name) : std::nullopt;
    type = value ? value->type : type;
    return value.has_value();
}

ERegistryQuery CRegistryKey::Query(const std::wstring& name, std::vector<std::uint8_t>& buffer,
                                   std::size_t& size) const
{
    const auto value = native ? FindAt(native->place, name) : std::nullopt;
    if (!value)
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
    const bool sets = native && native->access == ERegistryAccess::All &&
                      held->denials[native->root] != ERegistryDenial::Setting;
    if (sets)
        held->keys[native->place][name] = {type, bytes};
    return sets;
}

} // namespace platform
