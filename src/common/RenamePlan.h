// The list of new names of files, as it is written for people and read again when they have edited it.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

// A table with a heading: values between commas, RFC 4180, UTF-8 with or without its mark.
inline constexpr char kRenamePlanInput[] = "Input File";
inline constexpr char kRenamePlanName[] = "Output Filename";

/// A line of the list.
struct RenameLine {
    std::string path;     ///< UTF-8
    std::string newName;  ///< a name without folder, or an absolute path; empty: the file is to be left alone
    std::size_t line = 0;
};

/// The heading, with the mark of UTF-8 in front, as spreadsheets want it; lines end with CR and LF.
[[nodiscard]] std::string RenamePlanHeading();
[[nodiscard]] std::string RenamePlanLine(std::string_view path, std::string_view newName);

/// Hands out the lines of a list without its mark. Further columns and empty lines do not count, and where the
/// heading says so, values may stand between semicolons or tabs. Answers a sentence that tells the line which is
/// wrong; else empty.
[[nodiscard]] std::string ForEachRename(std::string_view utf8, const std::function<void(const RenameLine&)>& take);
