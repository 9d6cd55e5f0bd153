// How documents are to be protected, as it goes from the command line to the plug-in. Passwords are no part of it:
// they stand in files of the work, which only the plug-in reads.
#pragma once

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "base/Expected.h"
#include "protocol/JsonType.h"

/// What may stay allowed in a protected document.
enum class DocumentRight { Print, PrintHigh, Copy, Edit, Annotate, FillForms, Assemble, Templates, Extract };
using DocumentRights = std::set<DocumentRight>;

enum class ProtectMethod { Rc4, Aes128, Aes256 };

struct ProtectOrder {
    ProtectMethod method = ProtectMethod::Aes256;
    DocumentRights allowed = {};
    bool inPlace = false;          ///< results replace their inputs; else they go into the output folder
    bool breakSignatures = false;  ///< signed documents are protected, too
};

/// The work, and what its files are called, all of them optional.
inline constexpr char kProtectWork[] = "protection";
inline constexpr char kOwnerPasswordFile[] = "owner password file";
inline constexpr char kOpenPasswordFile[] = "open password file";
inline constexpr char kPasswordTable[] = "table of passwords";

[[nodiscard]] DocumentRights AllDocumentRights();
/// High resolution includes the low one. Fails for a word that is no right, with those that are.
[[nodiscard]] Expected<DocumentRights> DocumentRightsFrom(const std::vector<std::string>& words);
/// Of words separated by commas, or "all", or "none".
[[nodiscard]] Expected<DocumentRights> ParseDocumentRights(std::string_view list);
[[nodiscard]] std::optional<ProtectMethod> FindProtectMethod(std::string_view word);

[[nodiscard]] Json ProtectOrderJson(const ProtectOrder& order);
/// Fails with a sentence for another version, and for words that it does not know.
[[nodiscard]] Expected<ProtectOrder> ProtectOrderFrom(const Json& object);
