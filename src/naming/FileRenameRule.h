// One rule that changes the whole of a new file name.
#pragma once

#include <cstdint>
#include <string>

#include "common/SettingsRecord.h"

inline constexpr std::int32_t kFirstRenameRule = 1, kLastRenameRule = 9;
/// The predefined rules whose texts are the user's.
inline constexpr std::int32_t kReplaceCharactersRule = 8, kReplaceExpressionRule = 9;

/// Texts are UTF-8.
class CFileRenameRule {
public:
    std::string search = {};
    std::string replace = {};
    bool useExpression = false;  ///< else every occurrence of the text
    std::int32_t ruleIndex = 0;  ///< which predefined rule it is, from 1; others are none

    /// A predefined rule. `search` and `replace` are for those whose texts are the user's.
    [[nodiscard]] static CFileRenameRule Predefined(std::int32_t index, const std::string& search = {},
                                                    const std::string& replace = {});
    [[nodiscard]] static CFileRenameRule Read(const CSettingsRecord& record);
    [[nodiscard]] CSettingsRecord Write() const;
    /// The line of the rule in a list.
    [[nodiscard]] std::string Description() const;

    bool operator==(const CFileRenameRule&) const = default;
};
