#include "openhost/pdf/PdfError.h"

#include <new>

#include <qpdf/QPDFExc.hh>
#include <qpdf/QPDFSystemError.hh>

#include "openhost/core/Raise.h"
#include "platform/Files.h"

namespace openhost {
namespace {

constexpr std::size_t kLeastForFile = 24;  // a name shorter than this tells nobody anything

}  // namespace

CPdfError::CPdfError(PdfProblem problem, const std::string& file, const std::string& reason)
    : std::runtime_error(file + ": " + reason), m_problem(problem), m_fileLength(file.size())
{
}

CPdfError CPdfError::About(const std::string& file) const
{
    const std::string message = what();
    if (m_fileLength > 0 || !message.starts_with(file + ": ")) return *this;
    return {m_problem, file, message.substr(file.size() + 2)};
}

std::string CPdfError::ReasonFirst(const std::string& advice) const
{
    const std::string message = what(), file = message.substr(0, m_fileLength);
    if (file.empty()) return message + advice;
    std::string text = message.substr(m_fileLength + 2) + advice;
    const std::size_t used = text.size() + 3;
    if (used + kLeastForFile <= kLongestErrorText || used + file.size() <= kLongestErrorText)
        text += " (" + ShortenedInMiddle(file, kLongestErrorText - used) + ")";
    return text;
}

namespace {

/// The library's message without the file name that it puts in front.
std::string Detail(const QPDFExc& error)
{
    std::string detail = error.getMessageDetail();
    if (!error.getObject().empty()) detail = error.getObject() + ": " + detail;
    return detail;
}

/// What is broken, in words for people, with the library's own behind them.
std::string Damage(const std::string& detail)
{
    constexpr struct {
        const char* word;
        const char* meaning;
    } kDamages[] = {{"trailer", "the part that leads to its content is missing"},
                    {"header", "it does not begin like a PDF document"},
                    {"xref", "the list of its objects is broken"},
                    {"page", "its list of pages is broken"},
                    {"/Root", "the root of its content is broken"},
                    {"stream", "content cannot be unpacked"},
                    {"decod", "content cannot be unpacked"},
                    {"inflate", "content cannot be unpacked"},
                    {"/Encrypt", "the record of its protection is broken"},
                    {"encrypt", "the record of its protection is broken"}};
    for (const auto& damage : kDamages)
        if (detail.find(damage.word) != std::string::npos) return std::string(damage.meaning) + " (" + detail + ")";
    return "its structure is broken (" + detail + ")";
}

CPdfError FromLibrary(const QPDFExc& error, const std::string& file, PdfProblem fallback)
{
    switch (error.getErrorCode()) {
        case qpdf_e_password:
            return {PdfProblem::NeedsPassword, file, "needs a password"};
        case qpdf_e_unsupported:
            return {PdfProblem::UnsupportedSecurity, file,
                    "is protected in a way that is not supported: " + Detail(error)};
        case qpdf_e_pages:
            return {PdfProblem::NoPages, file,
                    "is damaged: its list of pages cannot be used (" + Detail(error) + ")"};
        case qpdf_e_damaged_pdf:
            return {PdfProblem::Damaged, file, "is damaged beyond repair: " + Damage(Detail(error))};
        default:
            return {fallback, file, Detail(error)};
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
    return {ProblemOf(errorNumber, fallback), file, doing + ": " + platform::ErrorText(errorNumber)};
}

void RethrowAsPdfError(const std::string& file, PdfProblem fallback)
{
    try {
        throw;
    } catch (const CPdfError& error) {
        throw error.About(file);
    } catch (const std::bad_alloc&) {
        throw CPdfError(PdfProblem::OutOfMemory, file, "out of memory");
    } catch (const QPDFExc& error) {
        throw FromLibrary(error, file, fallback);
    } catch (const QPDFSystemError& error) {
        throw CPdfError(fallback, file, error.what());
    } catch (const std::exception& error) {
        throw CPdfError(fallback, file, error.what());
    } catch (...) {
        throw CPdfError(PdfProblem::Internal, file, "unknown failure");
    }
}

}  // namespace openhost
