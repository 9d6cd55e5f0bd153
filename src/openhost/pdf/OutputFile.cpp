#include "openhost/pdf/OutputFile.h"

#include "openhost/pdf/PdfError.h"
#include "platform/Files.h"

namespace openhost {
namespace {

[[noreturn]] void Throw(const std::string& target, int errorNumber)
{
    // The overseer's refusal costs this file; it is nobody's wish to end the run.
    if (platform::ProblemOf({errorNumber}) == platform::FileProblem::Cancelled)
        throw CPdfError(PdfProblem::CannotWrite, target, "writing was refused");
    throw SystemError(target, "cannot write", errorNumber, PdfProblem::CannotWrite);
}

}  // namespace

COutputFile::COutputFile(const std::string& target, platform::Existing existing, const std::string& source)
    : m_target(target), m_file(target, existing, source)
{
    if (platform::ProblemOf(m_file.Result()) == platform::FileProblem::NotARegularFile) {
        throw CPdfError(PdfProblem::NotAFile, target, "cannot write: is not a regular file");
    }
    Check();
}

void COutputFile::Check() const
{
    if (const auto result = m_file.Result(); !result) Throw(m_target, result.errorNumber);
}

const std::string& COutputFile::Complete()
{
    if (const auto completed = m_file.Complete(); !completed) Throw(m_target, completed.errorNumber);
    return m_file.TemporaryPath();
}

void COutputFile::Commit()
{
    if (const auto committed = m_file.Commit(); !committed) Throw(m_target, committed.errorNumber);
}

}  // namespace openhost
