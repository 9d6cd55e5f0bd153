#include "supervisor/results/RunLog.h"

#include <cstdio>

#include "platform/Files.h"
#include "protocol/FileRecord.h"

platform::FileResult CRecordWriter::Open(const std::string& path)
{
    platform::FileResult opened;
    m_file = platform::OpenStream(path, "wb", &opened);
    return opened;
}

void CRecordWriter::Add(const FileRecord& record)
{
    Json object = FileRecordJson(record);
    if (m_reach) {
        object["version"] = kRecordVersion;
        object["total"] = m_total;
        if (m_trial) object["dryRun"] = true;
        object["run"] = RunReachJson(*m_reach);
    }
    m_reach.reset();
    std::string line = LineOf(object);
    m_observer.RecordLine(line);
    if (!m_file || m_error != 0) return;
    line += '\n';
    const bool written = std::fwrite(line.data(), 1, line.size(), m_file.get()) == line.size();
    if (!written || std::fflush(m_file.get()) != 0) m_error = platform::StreamFailure().errorNumber;
}

platform::FileResult CRecordWriter::Close()
{
    if (m_file && std::fclose(m_file.release()) != 0 && m_error == 0) m_error = platform::StreamFailure().errorNumber;
    return {m_error};
}

void CRunLog::File(const DoneFile& done, bool written)
{
    const bool hasPreflight = done.preflightEnd != 0;
    const bool dropPreflight = hasPreflight && m_preflightSeen;
    m_preflightSeen = m_preflightSeen || hasPreflight;
    if (written) return;
    if (!dropPreflight) return Write(done.log);
    std::vector<std::string> lines(done.log.begin(), done.log.begin() + static_cast<long>(done.preflightBegin));
    lines.insert(lines.end(), done.log.begin() + static_cast<long>(done.preflightEnd), done.log.end());
    Write(lines);
}

void CRunLog::Write(const std::vector<std::string>& lines)
{
    if (!IsOpen()) return;
    for (const std::string& line : lines) m_failed = m_failed || !m_log.Line(line);
}
