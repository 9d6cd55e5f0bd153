// What new file names are made of, and what is done with the files: one setting of the rename tool.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/Expected.h"
#include "common/SettingsRecord.h"
#include "naming/FileNamePart.h"
#include "naming/FileRenameRule.h"

enum class NameCase : std::int32_t { Original = 0, Lower = 1, Upper = 2 };

/// The lengths that can be chosen, in characters; files may hold others.
inline constexpr std::int32_t kShortestMaxFilename = 1, kLongestMaxFilename = 256;

/// The extension of files that users keep settings in.
inline constexpr char kRenameSettingsExtension[] = "docren";

/// Texts are UTF-8.
struct RenameSettings {
    std::vector<CFileNamePart> components = {};  ///< joined in this order
    std::vector<CFileRenameRule> rules = {};     ///< applied in this order, when useReplaceRules
    bool moveOnSuccess = false;
    std::string outputFolder = {};  ///< where files are moved to
    NameCase textCase = NameCase::Original;
    bool overwriteExisting = false;
    std::int32_t maxFilename = 100;  ///< characters
    bool useReplaceRules = false;
    bool executeScript = false;
    std::string script = {};

    /// Fails with a sentence when no component is there, or components nest too deep.
    [[nodiscard]] static Expected<RenameSettings> Read(const CSettingsRecord& record);
    [[nodiscard]] CSettingsRecord Write() const;
    /// The lines that tell people what the names are made of.
    [[nodiscard]] std::string Description() const;

    bool operator==(const RenameSettings&) const = default;
};

/// Fails with a sentence that names the file: missing, unreadable, damaged, without components, of a newer version.
[[nodiscard]] Expected<RenameSettings> ReadRenameSettings(const std::string& path);
/// Writes the complete file or leaves the old one. Answers why it could not be written; empty when it was.
[[nodiscard]] std::string WriteRenameSettings(const std::string& path, const RenameSettings& settings);
