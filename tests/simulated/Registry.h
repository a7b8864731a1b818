#pragma once

#include "platform/Registry.h"
#include "tests/simulated/Simulated.h"
#include "text/Units.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

// The model's registry: the two roots that the module uses, with their two views. "CLSID" of the
// classes root and "SOFTWARE\Classes\CLSID" of the current user are separate for 32-bit and 64-bit
// programs; all other keys, "CLSID" directly under the current user too, are one for both. That the
// real classes root also shows the current user's classes is not modelled.
namespace simulated {

using platform::ERegistryRoot;
using platform::ERegistryView;

struct RegistryValue
{
    std::uint32_t type;
    std::vector<std::uint8_t> bytes;
};

// What a root refuses, in all its keys and both views. Reading always works.
enum class ERegistryDenial
{
    None,
    Creating, // of keys that do not exist yet
    Opening,  // with all access, which creating asks for too
    Setting   // of values, in keys that open with all access
};

struct Registry
{
    using Values = std::map<std::wstring, RegistryValue, IgnoringCase>; // by name
    std::map<std::wstring, Values, IgnoringCase> keys;                  // by place in the store
    std::map<ERegistryRoot, ERegistryDenial> denials;
};
extern CState<Registry> registry;

inline void SetRegistryDenial(ERegistryRoot root, ERegistryDenial denial)
{
    registry->denials[root] = denial;
}

// The text's bytes with a terminating zero.
inline std::vector<std::uint8_t> TerminatedText(const std::wstring& text)
{
    return text::EncodeUnits(text + L'\0');
}

void PutRegistryValue(ERegistryRoot root, const std::wstring& subKey, ERegistryView view,
                      const std::wstring& name, const RegistryValue& value);

// The same for a terminated text of type registrySz.
inline void PutRegistryText(ERegistryRoot root, const std::wstring& subKey, ERegistryView view,
                            const std::wstring& name, const std::wstring& text)
{
    PutRegistryValue(root, subKey, view, name, {platform::registrySz, TerminatedText(text)});
}

// Nothing where there is no such value.
std::optional<RegistryValue> FindRegistryValue(ERegistryRoot root, const std::wstring& subKey,
                                               ERegistryView view, const std::wstring& name);

// The text of a terminated value of type registrySz.
std::optional<std::wstring> FindRegistryText(ERegistryRoot root, const std::wstring& subKey,
                                             ERegistryView view, const std::wstring& name);

// Removes a key with all keys below it.
void RemoveRegistryKey(ERegistryRoot root, const std::wstring& subKey, ERegistryView view);

} // namespace simulated
