#include "supervisor/RecordWriter.h"

#include "platform/FileProblem.h"
#include "protocol/FileRecord.h"

#include <cstdio>

platform::FileResult CRecordWriter::Open(const std::string& path)
{
    platform::FileResult opened;
    m_file = platform::OpenStream(path, "wb", &opened);
    return opened;
}

void CRecordWriter::Add(const FileRecord& record)
{
    std::string line = LineOf(FileRecordJson(record));
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
