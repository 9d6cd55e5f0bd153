// Reading the properties of documents, and changing entries of their information: what is asked of the plug-in, and
// what it answers.
#pragma once

#include <array>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "base/Expected.h"
#include "protocol/JsonType.h"

/// What tables show of every document, by the headings of their columns in this order. The first is the path.
inline constexpr std::array<const char*, 14> kPropertyColumns = {
    "Filename",    "Title",     "Subject",  "Author", "Keywords",    "Creator", "Producer",
    "PDF Version", "File Size", "Modified", "Pages",  "Attachments", "Fields",  "Security"};
/// The columns that are entries of the document information, under the same keys.
inline constexpr std::size_t kFirstInfoColumn = 1, kInfoColumns = 6;

/// What is read of each document besides these columns.
struct MetadataOrder {
    std::vector<std::string> keys = {};  ///< of further entries of the document information, without a slash
};
inline constexpr char kMetadataWork[] = "metadata";
/// Stands behind the path of a document that cannot be opened, in the place of its properties.
inline constexpr char kCannotOpenDocument[] = "Cannot open file";

[[nodiscard]] Json MetadataOrderJson(const MetadataOrder& order);
/// Fails with a sentence for a key that no entry can have.
[[nodiscard]] Expected<MetadataOrder> MetadataOrderFrom(const Json& object);
/// Why no entry can have this key; empty when one can.
[[nodiscard]] std::string KeyProblem(const std::string& key);

/// The texts of all columns and then of the further entries, as findings of a file.
[[nodiscard]] Json PropertiesJson(const std::vector<std::string>& texts);
/// Nothing when the findings hold none.
[[nodiscard]] std::optional<std::vector<std::string>> PropertiesFrom(const Json& findings);

/// What is to be changed in each document.
struct MetadataChangeOrder {
    std::map<std::string, std::string> entries = {};  ///< by key; UTF-8, an empty text takes the entry away
    /// Those of single documents, by their paths; they come before those of all.
    std::map<std::string, std::map<std::string, std::string>> ofDocuments = {};
    bool inPlace = false;          ///< results replace their inputs; else they go into a folder
    bool breakSignatures = false;  ///< signed documents are changed, too
    bool rewrite = false;          ///< written as a whole; it fails where an old value still stands then
};
inline constexpr char kMetadataChangeWork[] = "metadata change";

[[nodiscard]] Json MetadataChangeJson(const MetadataChangeOrder& order);
/// Fails with a sentence for an entry that cannot be written as asked. Dates come back as documents have them.
[[nodiscard]] Expected<MetadataChangeOrder> MetadataChangeFrom(const Json& object);
/// The text as it is written under the key. Fails with a sentence: a date that is none, or what no text can hold.
[[nodiscard]] Expected<std::string> EntryText(const std::string& key, const std::string& text);

struct PropertyChange {
    std::string key = {}, before = {}, after = {};  ///< UTF-8
};
/// Findings of a file.
[[nodiscard]] Json ChangesJson(const std::vector<PropertyChange>& changes);
/// Findings of another kind are left out.
[[nodiscard]] std::vector<PropertyChange> ChangesFrom(const Json& findings);
