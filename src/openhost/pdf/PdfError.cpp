#include "openhost/pdf/PdfError.h"

#include "openhost/core/ShortText.h"

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

}  // namespace openhost
