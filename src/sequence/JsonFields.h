// Reads fields of a JSON object. What is missing or of another type counts as not given.
#pragma once

#include "base/ByteText.h"

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

/// Null when there is no such field.
[[nodiscard]] inline const nlohmann::json* FieldIn(const nlohmann::json& object, const char* name)
{
    if (!object.is_object()) return nullptr;
    const auto field = object.find(name);
    return field == object.end() ? nullptr : &*field;
}

[[nodiscard]] inline bool FlagIn(const nlohmann::json& object, const char* name, bool fallback)
{
    const nlohmann::json* const field = FieldIn(object, name);
    return field && field->is_boolean() ? field->get<bool>() : fallback;
}

/// As bytes, also when the text stands for some that are no valid text.
[[nodiscard]] inline std::string BytesIn(const nlohmann::json& object, const char* name)
{
    const nlohmann::json* const field = FieldIn(object, name);
    return field && field->is_string() ? BytesFromText(field->get_ref<const std::string&>()) : std::string();
}

[[nodiscard]] inline std::vector<std::string> BytesListIn(const nlohmann::json& object, const char* name)
{
    std::vector<std::string> list;
    const nlohmann::json* const field = FieldIn(object, name);
    if (!field || !field->is_array()) return list;
    for (const nlohmann::json& item : *field)
        if (item.is_string()) list.push_back(BytesFromText(item.get_ref<const std::string&>()));
    return list;
}
