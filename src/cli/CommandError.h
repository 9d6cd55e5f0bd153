// Why a command does not begin.
#pragma once

#include <stdexcept>
#include <string>

namespace cli {

enum ExitCode { kExitFine = 0, kExitBroken = 1, kExitUsage = 2, kExitNotAllFine = 3, kExitStopped = 130 };

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

}  // namespace cli
