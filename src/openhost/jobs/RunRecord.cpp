#include "openhost/jobs/RunRecord.h"

#include <numeric>

#include "openhost/core/Diagnostics.h"

namespace openhost {

namespace {

constexpr const char* kOutcomePhrases[] = {"saved", "copied unchanged", "incomplete", "failed", "skipped", "stopped"};

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

void CRunRecord::FileDone(std::string_view path, ASInt32 outcome, std::string_view message)
{
    m_told = true;
    const int counted = outcome >= 0 && outcome < kOutcomes ? outcome : kJobFileFailed;
    ++m_counts[static_cast<std::size_t>(counted)];
    if (silent || (counted == kJobFileSaved && !verbose)) return;
    Diagnose(WithMessage(kOutcomePhrases[counted] + std::string(": ") + OneLine(path), message));
}

void CRunRecord::RunEnds(ASInt32 end, std::string_view message)
{
    m_told = true;
    if (m_running > 0) --m_running;
    if (end != kJobRunFinished) m_broken = true;
    if (silent) return;
    if (end == kJobRunNotStarted)
        Diagnose(WithMessage("the run did not start", message));
    else if (end != kJobRunFinished)
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
        line += separator + std::to_string(m_counts[outcome]) + " " + kOutcomePhrases[outcome];
        separator = ", ";
    }
    return line;
}

}  // namespace openhost
