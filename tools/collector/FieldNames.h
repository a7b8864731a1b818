#pragma once

#include "tools/collector/QueryText.h"

#include <span>
#include <string_view>
#include <vector>

namespace collector {

// The readable name of a parameter.
struct FieldName
{
    std::string_view parameter;
    std::string_view name;
};

// The readable name, or the parameter itself when the table does not know it.
std::string_view NameField(std::string_view parameter, std::span<const FieldName> names);

// The pieces with readable names and decoded values.
std::vector<Field> NameFields(const std::vector<Field>& pieces, std::span<const FieldName> names);

} // namespace collector
