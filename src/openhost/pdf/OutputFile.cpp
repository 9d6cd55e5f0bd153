#include "openhost/pdf/OutputFile.h"

#include <cerrno>

#include "openhost/pdf/PdfGuard.h"

namespace openhost {
namespace {

[[noreturn]] void Throw(const std::string& target, int errorNumber)
{
    const auto fallback = errorNumber == ECANCELED ? PdfProblem::Cancelled : PdfProblem::CannotWrite;
    throw SystemError(target, "cannot write", errorNumber, fallback);
}

}  // namespace

COutputFile::COutputFile(const std::string& target, platform::Existing existing)
    : m_target(target), m_file(target, existing)
{
    if (m_file.Result().errorNumber == EINVAL) {
        throw CPdfError(PdfProblem::NotAFile, target + ": cannot write: is not a regular file");
    }
    Check();
}

void COutputFile::Check() const
{
    if (const auto result = m_file.Result(); !result) Throw(m_target, result.errorNumber);
}

void COutputFile::Commit()
{
    if (const auto committed = m_file.Commit(); !committed) Throw(m_target, committed.errorNumber);
}

}  // namespace openhost
