// How documents are protected before and after something is done to them, in the words of journal and record.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "protocol/JsonType.h"

struct ProtectionState {
    enum class Method { None, Rc4, Aes128, Aes256, Other };
    Method method = Method::None;
    bool password = false;  ///< opening the document needs one

    bool operator==(const ProtectionState&) const = default;
};
inline constexpr std::size_t kProtectionMethods = 5;

/// "none", "rc4", "aes128", "aes256", "other".
[[nodiscard]] std::string_view ProtectionWord(ProtectionState::Method method);

/// Nothing where nobody has looked.
struct ProtectionChange {
    std::optional<ProtectionState> before = {}, after = {};

    bool Known() const { return before || after; }
};

[[nodiscard]] Json ProtectionChangeJson(const ProtectionChange& change);
/// Of a word that it does not know the method is Other.
[[nodiscard]] ProtectionChange ProtectionChangeFrom(const Json& object);
