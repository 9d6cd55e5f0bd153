#include "common/RenameReport.h"

namespace {

constexpr std::string_view kErrorCode = " (error code: ";

/// The line of a file whose message is a sentence about it. What follows the error code is in the record.
std::string ProblemLine(const std::string& path, std::string_view message)
{
    if (!message.starts_with("It ")) return path + ": " + std::string(message);
    message.remove_prefix(2);
    if (const auto code = message.rfind(kErrorCode); code != message.npos)
        message = message.substr(0, message.find(')', code) + 1);
    while (message.ends_with('.')) message.remove_suffix(1);
    return path + std::string(message);
}

std::string CountLine(const char* what, std::size_t count) { return what + std::to_string(count) + "\r\n"; }

}  // namespace

std::string RenameFailure(const std::string& target, int errorNumber)
{
    return " failed to be renamed to " + target + std::string(kErrorCode) + std::to_string(errorNumber) + ')';
}

void CRenameReport::Numbered::Add(std::string_view line)
{
    text += std::to_string(++lines) + ". ";
    text += line;
    text += "\r\n";
}

void CRenameReport::Renamed(const std::string& from, const std::string& to, std::string_view remark)
{
    std::string line = from + " has been renamed to " + to;
    if (!remark.empty()) (line += ": ") += remark;
    m_renamed.Add(line);
}

void CRenameReport::Skipped(const std::string& path, const std::string& message)
{
    ++m_skipped;
    m_problems.Add(ProblemLine(path, message));
}

void CRenameReport::Failed(const std::string& path, const std::string& message)
{
    ++m_failed;
    m_problems.Add(ProblemLine(path, message));
}

std::string CRenameReport::Text(const std::string& buildDate, const std::string& date) const
{
    std::string text = "FILE PROCESSING REPORT\r\n\r\n";
    text += "Software Build Date: " + buildDate + "\r\n";
    text += "Processing Date: " + date + "\r\n";
    text += CountLine("Total number of input files selected: ", m_renamed.lines + m_skipped + m_failed);
    text += CountLine("Number of files renamed: ", m_renamed.lines);
    text += CountLine("Number of files skipped (no valid filename generated): ", m_skipped);
    text += CountLine("Number of files failed (files may be locked by another application): ", m_failed) + "\r\n";
    if (m_problems.lines > 0)
        text += "List of files that were skipped or failed to be renamed:\r\n\r\n" + m_problems.text + "\r\n\r\n";
    if (m_renamed.lines > 0) text += "List of files that have been renamed:\r\n\r\n" + m_renamed.text;
    return text;
}
