#include "openhost/pdf/PdfGuard.h"

#include "platform/FileProblem.h"

#include <new>
#include <qpdf/QPDFExc.hh>
#include <qpdf/QPDFSystemError.hh>

namespace openhost {
namespace {

std::string Reason(const std::string& file, const std::string& reason) { return file + ": " + reason; }

/// The library's message without the file name that it puts in front.
std::string Detail(const QPDFExc& error)
{
    std::string detail = error.getMessageDetail();
    if (!error.getObject().empty()) detail = error.getObject() + ": " + detail;
    return detail;
}

CPdfError FromLibrary(const QPDFExc& error, const std::string& file, PdfProblem fallback)
{
    switch (error.getErrorCode()) {
        case qpdf_e_password:
            return {PdfProblem::NeedsPassword, Reason(file, "needs a password")};
        case qpdf_e_unsupported:
            return {PdfProblem::UnsupportedSecurity, Reason(file, "unsupported security handler: " + Detail(error))};
        case qpdf_e_pages:
            return {PdfProblem::NoPages, Reason(file, "unusable page tree: " + Detail(error))};
        case qpdf_e_damaged_pdf:
            return {PdfProblem::Damaged, Reason(file, "damaged: " + Detail(error))};
        default:
            return {fallback, Reason(file, Detail(error))};
    }
}

PdfProblem ProblemOf(int errorNumber, PdfProblem fallback)
{
    using platform::FileProblem;
    switch (platform::ProblemOf({errorNumber})) {
        case FileProblem::NoAccess:
            return PdfProblem::NoAccess;
        case FileProblem::Exists:
            return PdfProblem::Exists;
        case FileProblem::DiskFull:
        case FileProblem::TooLarge:
            return PdfProblem::DiskFull;
        case FileProblem::OutOfMemory:
            return PdfProblem::OutOfMemory;
        default:
            return fallback;
    }
}

}  // namespace

CPdfError SystemError(const std::string& file, const std::string& doing, int errorNumber, PdfProblem fallback)
{
    return {ProblemOf(errorNumber, fallback),
            Reason(file, doing + ": " + platform::ErrorText(errorNumber))};
}

void RethrowAsPdfError(const std::string& file, PdfProblem fallback)
{
    try {
        throw;
    } catch (const CPdfError&) {
        throw;
    } catch (const std::bad_alloc&) {
        throw CPdfError(PdfProblem::OutOfMemory, Reason(file, "out of memory"));
    } catch (const QPDFExc& error) {
        throw FromLibrary(error, file, fallback);
    } catch (const QPDFSystemError& error) {
        throw CPdfError(fallback, Reason(file, error.what()));
    } catch (const std::exception& error) {
        throw CPdfError(fallback, Reason(file, error.what()));
    } catch (...) {
        throw CPdfError(PdfProblem::Internal, Reason(file, "unknown failure"));
    }
}

}  // namespace openhost
