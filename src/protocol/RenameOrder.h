// How files are to get new names, and the names that they have on the way.
#pragma once

#include <string>
#include <string_view>

#include "base/Expected.h"
#include "protocol/JsonType.h"

/// The work, and what its file is called.
inline constexpr char kRenameWork[] = "renaming";
inline constexpr char kRenameList[] = "list of new names";

struct RenameOrder {
    /// A file that is none of the run is replaced when it has a new name already; else the new name gets a number.
    bool overwrite = false;
};

[[nodiscard]] Json RenameOrderJson(const RenameOrder& order);
/// Fails with a sentence for another version.
[[nodiscard]] Expected<RenameOrder> RenameOrderFrom(const Json& object);

/// Where a file waits, in its folder, while another one of a cycle takes its name. Always the same for a path, so
/// that a run that was interrupted finds it again; no name of an unfinished file, which would be removed.
[[nodiscard]] std::string WaitingPlaceOf(const std::string& path);
[[nodiscard]] bool IsWaitingPlace(std::string_view path);
