#include "openhost/jobs/RunRecord.h"

#include <numeric>

#include "openhost/core/Diagnostics.h"

namespace openhost {

namespace {

/// One line, whatever is in file names and messages.
std::string OneLine(std::string_view text)
{
    std::string line(text);
    for (char& character : line)
        if (static_cast<unsigned char>(character) < ' ' || character == 0x7F) character = ' ';
    return line;
}

std::string WithMessage(std::string line, std::string_view message)
{
    if (!message.empty()) line += ": " + OneLine(message);
    return line;
}

}  // namespace

void CRunRecord::RunStarts()
{
    m_told = true;
    ++m_running;
}

void CRunRecord::FileDone(std::string_view path, FileOutcome outcome, std::string_view message)
{
    m_told = true;
    ++m_counts[static_cast<std::size_t>(outcome)];
    if (silent || (outcome == FileOutcome::Saved && !verbose)) return;
    Diagnose(WithMessage(OutcomePhrase(outcome) + ": " + OneLine(path), message));
}

void CRunRecord::RunEnds(RunEnd end, std::string_view message)
{
    m_told = true;
    if (m_running > 0) --m_running;
    if (end != RunEnd::Finished) m_broken = true;
    if (silent) return;
    if (end == RunEnd::NotStarted)
        Diagnose(WithMessage("the run did not start", message));
    else if (end != RunEnd::Finished)
        Diagnose(WithMessage("the run broke off", message));
    Diagnose(Summary());
}

int CRunRecord::Files() const { return std::accumulate(m_counts.begin(), m_counts.end(), 0); }

std::string CRunRecord::Summary() const
{
    std::string line = std::to_string(Files()) + (Files() == 1 ? " file" : " files");
    const char* separator = ": ";
    for (std::size_t outcome = 0; outcome < m_counts.size(); ++outcome) {
        if (m_counts[outcome] == 0) continue;
        line += separator + std::to_string(m_counts[outcome]) + " " + OutcomePhrase(static_cast<FileOutcome>(outcome));
        separator = ", ";
    }
    return line;
}

}  // namespace openhost
