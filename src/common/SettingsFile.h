#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "common/SettingsRecord.h"
#include "platform/Files.h"

/// Records may nest so deep and files be so long; more is refused on reading and on writing.
inline constexpr int kMaxSettingsDepth = 64;
inline constexpr std::size_t kMaxSettingsBytes = std::size_t{16} << 20;

enum class SettingsFileState { Ok, Missing, Unreadable, Foreign, Newer, Damaged };

struct [[nodiscard]] SettingsFileContent {
    SettingsFileState state = SettingsFileState::Missing;
    CSettingsRecord record;  ///< empty unless Ok
    std::string problem;     ///< a sentence; empty when Ok
    bool Ok() const { return state == SettingsFileState::Ok; }
};

/// Reads a settings file: a JSON object, or the lines that older versions wrote. Fails: the record is empty; a file
/// cut short or altered counts as damaged. White space between the values of the object may be altered.
SettingsFileContent ReadSettingsFile(const std::string& path);
/// Writes the complete file or leaves the old one; only its owner may read it, for it may hold passwords.
platform::FileResult WriteSettingsFile(const std::string& path, const CSettingsRecord& record);

// The same in memory.
SettingsFileContent ParseSettings(std::string_view bytes);
std::string FormatSettings(const CSettingsRecord& record);
