// How files are to get new names, and the names that they have on the way.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Expected.h"
#include "protocol/JsonType.h"

/// The work, and what its file is called.
inline constexpr char kRenameWork[] = "renaming";
inline constexpr char kRenameList[] = "list of new names";

inline constexpr int kScriptSeconds = 60;

struct RenameOrder {
    /// A file that is none of the run is replaced when it has a new name already; else the new name gets a number.
    bool overwrite = false;
    int scriptSeconds = kScriptSeconds;  ///< that the script of the settings may take for a file
};

[[nodiscard]] Json RenameOrderJson(const RenameOrder& order);
/// Fails with a sentence for another version.
[[nodiscard]] Expected<RenameOrder> RenameOrderFrom(const Json& object);

/// Where a file waits, in its folder, while another one of a cycle takes its name. Always the same for a path, so
/// that a run that was interrupted finds it again; no name of an unfinished file, which would be removed.
[[nodiscard]] std::string WaitingPlaceOf(const std::string& path);
[[nodiscard]] bool IsWaitingPlace(std::string_view path);

/// What new names are made of, when no file of settings says it. Texts are UTF-8.
struct NamingOrder {
    struct Rule {
        std::string search, replace;
        bool isExpression = false;
    };
    std::string name = {};  ///< with tags such as "<title>"
    std::vector<Rule> rules = {};
    std::int32_t textCase = 0;   ///< 0 as it is, 1 small letters, 2 capitals
    std::int32_t longest = 100;  ///< characters
};
inline constexpr char kNamingWork[] = "naming";
inline constexpr char kNamingSettings[] = "file of naming settings";

[[nodiscard]] Json NamingOrderJson(const NamingOrder& order);
[[nodiscard]] NamingOrder NamingOrderFrom(const Json& object);

/// What a document is to be called.
struct NewName {
    std::string name;        ///< UTF-8; a path when the file is to be moved
    bool overwrite = false;  ///< the settings want files replaced that have the name
};
/// Findings of a file.
[[nodiscard]] Json NewNameJson(const NewName& name);
/// Nothing when the findings hold none.
[[nodiscard]] std::optional<NewName> NewNameFrom(const Json& findings);
