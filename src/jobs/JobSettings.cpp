#include "jobs/JobSettings.h"

#include "base/ByteText.h"

#include <map>
#include <nlohmann/json.hpp>

namespace {

/// Null when there is no such field.
const nlohmann::json* Field(const nlohmann::json& job, const char* name)
{
    if (!job.is_object()) return nullptr;
    const auto field = job.find(name);
    return field == job.end() ? nullptr : &*field;
}

std::string Bytes(const nlohmann::json& text) { return BytesFromText(text.get_ref<const std::string&>()); }

}  // namespace

bool JobFlag(const nlohmann::json& job, const char* name, bool fallback)
{
    const nlohmann::json* const field = Field(job, name);
    return field && field->is_boolean() ? field->get<bool>() : fallback;
}

double JobNumber(const nlohmann::json& job, const char* name, double fallback)
{
    const nlohmann::json* const field = Field(job, name);
    return field && field->is_number() ? field->get<double>() : fallback;
}

std::string JobBytes(const nlohmann::json& job, const char* name)
{
    const nlohmann::json* const field = Field(job, name);
    return field && field->is_string() ? Bytes(*field) : std::string();
}

std::vector<std::string> JobBytesList(const nlohmann::json& job, const char* name)
{
    std::vector<std::string> list;
    const nlohmann::json* const field = Field(job, name);
    if (!field || !field->is_array()) return list;
    for (const nlohmann::json& item : *field)
        if (item.is_string()) list.push_back(Bytes(item));
    return list;
}

EnvironmentReader EnvironmentOf(const nlohmann::json& job)
{
    std::map<std::string, std::string> values;
    if (const nlohmann::json* const settings = Field(job, "settings"); settings && settings->is_object())
        for (const auto& [name, value] : settings->items())
            if (value.is_string()) values[name] = Bytes(value);
    return [values](const char* name) {
        const auto value = values.find(name);
        return value == values.end() ? std::string() : value->second;
    };
}
