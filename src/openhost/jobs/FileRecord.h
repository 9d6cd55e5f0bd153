#ifndef FERRULE_OPENHOST_JOBS_FILE_RECORD_H
#define FERRULE_OPENHOST_JOBS_FILE_RECORD_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "hostapi/JobsTable.h"

namespace openhost {

/// What became of one input file. Paths and message in host encoding.
struct FileRecord {
    struct Output {
        std::string path;
        std::string sha256;  ///< empty when nothing was written really
    };
    struct FinalAction {
        std::string act;     ///< "put", "move", "delete", "start"; empty when it failed before it came to that
        std::string target;  ///< empty for a deletion
        bool done = false;
    };

    int number = 0;  ///< in the whole run, from 1
    std::string path;
    std::uint64_t size = 0;
    std::string sha256;  ///< of the input before anything was done to it; empty when it could not be read
    int outcome = kJobFileFailed;
    std::string message;
    std::uint64_t milliseconds = 0;
    std::vector<Output> outputs;
    std::optional<FinalAction> finalAction;
    bool signaturesBroken = false;  ///< a signed document was written as a whole
};

/// As one line of JSON without its end.
std::string RecordLine(const FileRecord& record);

}  // namespace openhost

#endif
