// Figures as people read them, the same in every report and on the terminal. UTF-8 without markup.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "report/RunSums.h"

/// 1234567 as "1,234,567".
[[nodiscard]] std::string Grouped(std::uint64_t number);
/// "1 file", "4,711 files".
[[nodiscard]] std::string Counted(std::uint64_t number, const char* one, const char* many);
/// "512 bytes", "1.2 MB"; 1 MB is 1,000,000 bytes.
[[nodiscard]] std::string Bytes(std::uint64_t number);
/// "12 ms", "1.2 s", "3 min 5 s", "2 h 4 min".
[[nodiscard]] std::string TimeText(double milliseconds);
/// "12 %", "0.3 %", "less than 0.1 %".
[[nodiscard]] std::string ShareText(std::uint64_t part, std::uint64_t whole);

/// "saved", "copied unchanged"; with a remark for saved files that have a message.
[[nodiscard]] std::string GroupTitle(const ReasonGroup& group);
/// "not protected", "AES with 256 bits, opens with a password"; "not known".
[[nodiscard]] std::string ProtectionText(const std::optional<ProtectionState>& protection);
/// "moved", "copied or put", "deletion failed".
[[nodiscard]] std::string FinalActionText(const CRunSums::FinalActionKind& kind);
/// "12 % smaller", "as large".
[[nodiscard]] std::string GrowthText(std::uint64_t before, std::uint64_t after);
/// What the report is made of and what it comes to, in one or two sentences.
[[nodiscard]] std::string LeadText(const CRunSums& sums);
/// Of a group: its reason, or that none was given.
[[nodiscard]] std::string ReasonText(const ReasonGroup& group);
