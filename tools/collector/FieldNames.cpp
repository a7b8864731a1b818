#include "tools/collector/FieldNames.h"

namespace collector {

std::string_view NameField(std::string_view parameter, std::span<const FieldName> names)
{
    for (const FieldName& known : names)
        if (known.parameter == parameter)
            return known.name;
    return parameter;
}

std::vector<Field> NameFields(const std::vector<Field>& pieces, std::span<const FieldName> names)
{
    std::vector<Field> fields;
    for (const Field& piece : pieces)
        fields.push_back({std::string(NameField(piece.name, names)), DecodeText(piece.value)});
    return fields;
}

} // namespace collector
