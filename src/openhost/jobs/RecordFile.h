#ifndef FERRULE_OPENHOST_JOBS_RECORD_FILE_H
#define FERRULE_OPENHOST_JOBS_RECORD_FILE_H

#include <memory>
#include <string>

#include "openhost/jobs/JobSource.h"
#include "platform/Files.h"

namespace openhost {

/// The run without a job whose records somebody wants in a file, each a line that is there as soon as its input file
/// is done.
class CRecordFile final : public CJobSource {
public:
    /// Creates the file. One that is there is replaced when it is empty or a record itself, or no file at all but a
    /// pipe or a device. Null, with a sentence in `problem`, when that fails.
    static std::shared_ptr<CRecordFile> Create(const std::string& path, std::string& problem);

    bool WantsRecords() const override { return true; }
    /// Nothing is put in the place of the record, and the record is nobody's input that could be taken away.
    Answer MayAct(const IntendedAct& intended) override;
    void FileDone(const FileRecord& record) override;
    bool Broken() const override { return m_failed; }

private:
    CRecordFile(std::string path, platform::Stream stream) : m_path(std::move(path)), m_stream(std::move(stream)) {}

    std::string m_path;
    platform::Stream m_stream;
    bool m_failed = false;
};

}  // namespace openhost

#endif
