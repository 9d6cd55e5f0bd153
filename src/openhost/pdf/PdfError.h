#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>

namespace openhost {

/// Why an operation on a document failed; the slot layer turns each into the host's own error code.
enum class PdfProblem {
    NotFound,
    NoAccess,
    NotAFile,    ///< a folder, a pipe, a device
    CannotRead,  ///< the system failed to read, or the file changed under the reader
    NotAPdf,
    NeedsRepair,  ///< damaged, and the caller did not ask for repair
    Damaged,      ///< damaged beyond repair
    NoPages,
    BadPage,
    LastPage,  ///< no page would be left
    NeedsPassword,
    UnsupportedSecurity,  ///< encrypted by a handler other than "Standard", or in an unknown way
    NotPermitted,
    PasswordNotExpressible,  ///< holds characters that the asked encryption cannot express
    BadSecuritySettings,
    BadParameter,  ///< a step cannot take what it was given
    NoPath,        ///< a document that never had a file was saved without naming one
    Exists,
    DiskFull,
    CannotWrite,
    NotReadBack,       ///< the library wrote a file that it cannot read as it should be
    InputChanged,      ///< the document's own file is not the one that was opened any more
    UnsupportedInput,  ///< a converter cannot read its source
    OutOfMemory,
    Cancelled,
    Internal,
};

/// The only exception that leaves this folder. what() is one line that names the file and the reason, in UTF-8 as
/// far as the file's name is; it never holds a password.
class CPdfError : public std::runtime_error {
public:
    /// `message` is "FILE: reason".
    CPdfError(PdfProblem problem, const std::string& message) : std::runtime_error(message), m_problem(problem) {}
    CPdfError(PdfProblem problem, const std::string& file, const std::string& reason);

    /// The same error, knowing its file when that is what the message begins with.
    CPdfError About(const std::string& file) const;

    PdfProblem Problem() const noexcept { return m_problem; }
    std::string Message() const { return what(); }
    /// For texts of little room: the reason and the advice, then the file, shortened in its middle or left out where
    /// it does not fit. The whole message when the file is not known.
    std::string ReasonFirst(const std::string& advice = {}) const;

private:
    PdfProblem m_problem;
    std::size_t m_fileLength = 0;  // of the file's name at the beginning; 0 when it is not known
};

/// Inside a catch clause: throws what is being handled as a CPdfError. Library errors that say nothing about their
/// kind become `fallback`.
[[noreturn]] void RethrowAsPdfError(const std::string& file, PdfProblem fallback);

/// The error that a failed system call on `file` stands for. `doing` is "cannot read" or the like.
CPdfError SystemError(const std::string& file, const std::string& doing, int errorNumber, PdfProblem fallback);

/// Runs `body`; whatever it throws leaves as a CPdfError about `file`.
template <class Body>
auto Guarded(const std::string& file, PdfProblem fallback, Body body) -> decltype(body())
{
    try {
        return body();
    } catch (...) {
        RethrowAsPdfError(file, fallback);
    }
}

}  // namespace openhost
