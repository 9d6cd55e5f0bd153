#ifndef FERRULE_OPENHOST_PDF_PDF_GUARD_H
#define FERRULE_OPENHOST_PDF_PDF_GUARD_H

#include <string>

#include "openhost/pdf/PdfError.h"

namespace openhost {

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

#endif
