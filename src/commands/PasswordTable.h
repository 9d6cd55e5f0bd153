// Tables of file names and their passwords, as people type them.
#pragma once

#include <string>
#include <string_view>

#include "base/Expected.h"
#include "common/SettingsRecord.h"

/// One line for each file: name without its folder, comma, password. The first comma outside double quotes separates,
/// blanks around it are dropped, the rest of the line is the password; quotes around the whole name are no part of
/// it. Empty lines count for nothing. Fails with a sentence that gives the number of the line: no comma, no name, no
/// password, or a file that has another password already (letter case does not count).
[[nodiscard]] Expected<TextPairs> PasswordTableFromText(std::string_view text);

/// The text of a table, with LF behind each line; reads back as the same table.
[[nodiscard]] std::string PasswordTableText(const TextPairs& table);
