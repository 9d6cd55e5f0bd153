#include "protocol/Protection.h"

#include "protocol/Json.h"
#include "protocol/Words.h"

namespace {

constexpr WordTable<kProtectionMethods> kMethods = {"none", "rc4", "aes128", "aes256", "other"};

void AddProtection(Json& object, const char* key, const std::optional<ProtectionState>& protection)
{
    if (!protection) return;
    Json each = {{"method", ProtectionWord(protection->method)}};
    if (protection->password) each["password"] = true;
    object[key] = std::move(each);
}

std::optional<ProtectionState> ProtectionAt(const Json& object, const char* key)
{
    const Json& each = ObjectAt(object, key);
    if (each.empty()) return std::nullopt;
    const auto method = FromWord<ProtectionState::Method>(kMethods, TextAt(each, "method"));
    return ProtectionState{method.value_or(ProtectionState::Method::Other), FlagAt(each, "password")};
}

}  // namespace

std::string_view ProtectionWord(ProtectionState::Method method) { return WordOf(kMethods, method); }

Json ProtectionChangeJson(const ProtectionChange& change)
{
    Json object = Json::object();
    AddProtection(object, "before", change.before);
    AddProtection(object, "after", change.after);
    return object;
}

ProtectionChange ProtectionChangeFrom(const Json& object)
{
    return {ProtectionAt(object, "before"), ProtectionAt(object, "after")};
}
