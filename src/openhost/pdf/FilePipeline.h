#ifndef FERRULE_OPENHOST_PDF_FILE_PIPELINE_H
#define FERRULE_OPENHOST_PDF_FILE_PIPELINE_H

#include <qpdf/Pipeline.hh>

#include "openhost/pdf/OutputFile.h"

namespace openhost {

/// Carries what the library writes into a file. Never throws: the library pops its pipelines in destructors, where an
/// exception ends the process. The caller asks the file for the failure.
class CFilePipeline final : public Pipeline {
public:
    explicit CFilePipeline(COutputFile& file) : Pipeline("file", nullptr), m_file(file) {}
    void write(unsigned char const* data, size_t length) override
    {
        m_file.Write(reinterpret_cast<const char*>(data), length);
    }
    void finish() override {}

private:
    COutputFile& m_file;
};

}  // namespace openhost

#endif
