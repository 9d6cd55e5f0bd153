// One component of a new file name.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/Expected.h"
#include "common/SettingsRecord.h"
#include "naming/LookupTable.h"
#include "search/SearchRules.h"

/// What a component contributes; the numbers are those of settings files, which may hold others.
enum class NamePartKind : std::int32_t {
    Number = 0,
    Letter = 1,
    PageRange = 2,
    PageLabel = 3,
    AreaText = 4,
    FoundText = 5,  ///< what a search finds, as it stands there
    CustomText = 6,
    OriginalName = 7,
    RuleText = 8,  ///< what a search finds, in its format
    Lookup = 9
};

/// How deep components may nest in lookups; the records of a settings file nest twice as deep.
inline constexpr int kMaxNamePartDepth = 16;

/// Texts are UTF-8. Each kind uses some of the fields; all are kept.
class CFileNamePart {
public:
    NamePartKind kind = NamePartKind::Number;
    SettingsRectangle area = {};      ///< of AreaText; in points, in the user space of the page
    std::int32_t startingNumber = 1;  ///< of Number
    std::int32_t pageNumber = 0;      ///< from 0; of AreaText, and where FoundText and RuleText begin
    std::int32_t increment = 1;       ///< of Number
    std::int32_t padWithZeroes = 0;   ///< digits of Number; less than 1: as many as it has
    bool addSpaceInFront = false;
    bool replaceMissingValues = false;
    std::string missingValueText = {};
    bool replaceBeforeLookup = false;  ///< the key of Lookup is changed by the two below first
    std::string searchBeforeLookup = {};
    std::string replacementBeforeLookup = {};
    std::string customText = {};
    LookupTable lookupTable = {};
    SearchRule searchQuery = {};
    std::vector<CFileNamePart> children = {};  ///< of Lookup: their texts, joined, are the key

    /// Fails with a sentence when components nest too deep.
    [[nodiscard]] static Expected<CFileNamePart> Read(const CSettingsRecord& record);
    [[nodiscard]] CSettingsRecord Write() const;
    /// The line of the component in a list.
    [[nodiscard]] std::string Description() const;

    bool operator==(const CFileNamePart&) const = default;

private:
    [[nodiscard]] static Expected<CFileNamePart> ReadAt(const CSettingsRecord& record, int depth);
    [[nodiscard]] static Expected<std::vector<CFileNamePart>> ReadChildren(const CSettingsRecord& record, int depth);
};
