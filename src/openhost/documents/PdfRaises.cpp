#include "openhost/documents/Documents.h"

namespace openhost {

namespace {

constexpr int kAlways = 4;
constexpr int kPDDocSystem = 3;

/// Clients compare system and number; these two arrive with the highest severity.
constexpr ASErrorCode Always(ASErrorCode code)
{
    return HOST_ERROR_CODE(kAlways, kPDDocSystem, static_cast<unsigned>(code) & 0xFFFFu);
}

ASErrorCode CodeOf(PdfProblem problem)
{
    switch (problem) {
        case PdfProblem::NotFound:
            return fileErrFNF;
        case PdfProblem::NoAccess:
            return fileErrPerm;
        case PdfProblem::NotAFile:
            return pdErrUnableToOpenDoc;
        case PdfProblem::CannotRead:
            return pdErrUnableToRead;
        case PdfProblem::NotAPdf:
            return pdErrUnknownFileType;
        case PdfProblem::NeedsRepair:
            return pdErrNeedRebuild;
        case PdfProblem::Damaged:
            return pdErrUnableToRecover;
        case PdfProblem::NoPages:
            return pdErrZeroPageFile;
        case PdfProblem::BadPage:
            return pdErrInvalidPageNumber;
        case PdfProblem::LastPage:
            return pdErrCannotDeleteAllPages;
        case PdfProblem::NeedsPassword:
            return Always(pdErrNeedPassword);
        case PdfProblem::UnsupportedSecurity:
            return pdErrNoCryptHandler;
        case PdfProblem::NotPermitted:
            return Always(pdErrOpNotPermitted);
        case PdfProblem::PasswordNotExpressible:
            return genErrBadParm;
        case PdfProblem::BadSecuritySettings:
        case PdfProblem::BadParameter:
            return genErrBadParm;
        case PdfProblem::NoPath:
            return genErrBadParm;
        case PdfProblem::Exists:
            return fileErrExists;
        case PdfProblem::DiskFull:
            return fileErrDiskFull;
        case PdfProblem::CannotWrite:
        case PdfProblem::NotReadBack:
            return pdErrUnableToWrite;
        case PdfProblem::InputChanged:
            return fileErrWrPerm;
        case PdfProblem::UnsupportedInput:
            return pdErrUnknownFileType;
        case PdfProblem::OutOfMemory:
            return genErrNoMemory;
        case PdfProblem::Cancelled:
            return pdErrCancelSave;
        case PdfProblem::Internal:
            return genErrGeneral;
    }
    return genErrGeneral;
}

}  // namespace

void RaisePdfError(const CPdfError& error)
{
    const bool needsPassword = error.Problem() == PdfProblem::NeedsPassword;
    Raise(CodeOf(error.Problem()),
          error.ReasonFirst(needsPassword ? "; put it into a file and name that with --password-file" : ""));
}

}  // namespace openhost
