#include "openhost/jobs/RecordFile.h"

#include "openhost/core/Diagnostics.h"
#include "platform/FileProblem.h"

namespace openhost {

std::shared_ptr<CRecordFile> CRecordFile::Create(const std::string& path, platform::FileResult* result)
{
    platform::Stream stream = platform::OpenStream(path, "w", result);
    if (!stream) return nullptr;
    return std::shared_ptr<CRecordFile>(new CRecordFile(path, std::move(stream)));
}

void CRecordFile::FileDone(const FileRecord& record)
{
    if (m_failed) return;
    const std::string line = RecordLine(record) + "\n";
    const bool written = std::fwrite(line.data(), 1, line.size(), m_stream.get()) == line.size();
    if (written && std::fflush(m_stream.get()) == 0) return;
    m_failed = true;
    Diagnose("the record " + m_path +
             " cannot be written: " + platform::ErrorText(platform::StreamFailure().errorNumber));
}

}  // namespace openhost
