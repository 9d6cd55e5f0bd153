// What somebody typed, read by the rows of the command table, and why a command does not begin.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "cli/CommandTable.h"

namespace cli {

enum ExitCode { kExitFine = 0, kExitBroken = 1, kExitUsage = 2, kExitNotAllFine = 3, kExitStopped = 130 };

/// Of commands that look for something, as grep has them.
enum SearchExit { kFound = 0, kNothingFound = 1, kTrouble = 2 };

/// Ends the command with one sentence for the person who typed it. Caught in the main program only.
class CCommandError : public std::runtime_error {
public:
    CCommandError(int exitCode, const std::string& sentence) : std::runtime_error(sentence), m_exitCode(exitCode) {}
    int ExitCode() const { return m_exitCode; }

private:
    int m_exitCode;
};

/// The arguments do not fit together; nothing was done.
[[noreturn]] inline void FailUsage(const std::string& sentence) { throw CCommandError(kExitUsage, sentence); }
/// Something that is needed is not there.
[[noreturn]] inline void FailStart(const std::string& sentence) { throw CCommandError(kExitBroken, sentence); }

/// The arguments of one command; every value fits its row. Asking for an option that the command does not have
/// throws.
class CArguments {
public:
    explicit CArguments(const CommandRow& command) : m_command(&command) {}

    const CommandRow& Command() const { return *m_command; }
    /// Whether it was typed.
    bool Has(std::string_view option) const;
    /// The last value typed, or what counts without one.
    std::string Text(std::string_view option) const;
    std::vector<std::string> All(std::string_view option) const;
    long long Number(std::string_view option) const;
    std::uint64_t Size(std::string_view option) const;
    const std::vector<std::string>& Operands() const { return m_operands; }

private:
    friend class CArgumentParser;
    const OptionRow& Row(std::string_view option) const;

    const CommandRow* m_command;
    std::map<std::string, std::vector<std::string>, std::less<>> m_values;
    std::vector<std::string> m_operands;
};

struct ParsedArguments {
    std::optional<CArguments> arguments;  ///< absent: help was asked for, or the message says what is wrong
    bool helpWanted = false;
    std::string problem;
};

ParsedArguments ParseArguments(const CommandRow& command, const std::vector<std::string>& words);

/// Bytes in "1048576", "512K", "1.5G" or "2GiB"; nothing when it is no such text.
std::optional<std::uint64_t> ParseSize(std::string_view text);

}  // namespace cli
