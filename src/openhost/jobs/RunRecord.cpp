#include "openhost/jobs/RunRecord.h"

#include <filesystem>
#include <numeric>
#include <string_view>
#include <system_error>

#include "openhost/core/Host.h"
#include "platform/NarrowText.h"

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
        line +=
            separator + std::to_string(m_counts[outcome]) + " " + OutcomePhrase(static_cast<FileOutcome>(outcome));
        separator = ", ";
    }
    return line;
}

namespace {

constexpr std::size_t kHeadLength = 1 << 16;
constexpr std::string_view kRecordBegin = R"({"number":)", kOutcomeKey = R"("outcome":)";

/// Also when only a part of the first line was written before the power went.
bool IsRecord(std::string_view head)
{
    const std::size_t lineEnd = head.find('\n');
    const std::string_view line = head.substr(0, lineEnd);
    if (lineEnd == std::string_view::npos && line.size() < kRecordBegin.size()) return kRecordBegin.starts_with(line);
    return line.starts_with(kRecordBegin) &&
           (lineEnd == std::string_view::npos || line.find(kOutcomeKey) != std::string_view::npos);
}

/// Why a record must not take the place of what stands there.
std::string PlaceProblem(const std::string& path)
{
    using std::filesystem::file_type;
    std::error_code unknown;
    const file_type type = std::filesystem::status(platform::StandardPath(path), unknown).type();
    if (type == file_type::directory) return "is a folder; name a file for the record";
    if (type == file_type::block || type == file_type::socket)
        return "is a device; name a regular file for the record";
    if (type != file_type::regular) return {};
    std::string head;
    const auto read = platform::ReadPieces(path, [&](std::string_view bytes) {
        head += bytes;
        return head.size() < kHeadLength;
    });
    if (!read) return "cannot be read, and is kept: " + platform::ErrorText(read.errorNumber);
    if (head.empty() || IsRecord(head)) return {};
    return "is no record and would be lost; name another file for the record, or move this one away";
}

bool IsSameFile(const std::string& one, const std::string& other)
{
    const auto first = platform::StampOf(one), second = platform::StampOf(other);
    return first && second && first->IsSameFile(*second);
}

}  // namespace

std::shared_ptr<CRecordFile> CRecordFile::Create(const std::string& path, std::string& problem)
{
    problem = PlaceProblem(path);
    if (!problem.empty()) return nullptr;
    platform::FileResult opened;
    platform::Stream stream = platform::OpenStream(path, "w", &opened);
    if (stream) return std::shared_ptr<CRecordFile>(new CRecordFile(path, std::move(stream)));
    problem = "cannot be written: " + platform::ErrorText(opened.errorNumber);
    return nullptr;
}

CJobSource::Answer CRecordFile::MayAct(const IntendedAct& intended)
{
    for (const std::string& path : {intended.file, intended.target})
        if (!path.empty() && intended.act != COverseer::Act::Start && IsSameFile(path, m_path)) return Answer::Refuse;
    return Answer::Go;
}

void CRecordFile::FileDone(const FileRecord& record)
{
    if (m_failed) return;
    const std::string line = LineOf(FileRecordJson(record)) + "\n";
    const bool written = std::fwrite(line.data(), 1, line.size(), m_stream.get()) == line.size();
    if (written && std::fflush(m_stream.get()) == 0) return;
    m_failed = true;
    Diagnose("the record " + m_path +
             " cannot be written: " + platform::ErrorText(platform::StreamFailure().errorNumber));
}

}  // namespace openhost
