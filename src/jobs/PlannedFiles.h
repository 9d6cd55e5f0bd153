// The input files of a planned run.
#pragma once

#include "engine/InputCollector.h"
#include "jobs/TouchedNames.h"
#include "protocol/FileRecord.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

/// Made for a million files: each costs a few dozen bytes beside its name.
class CPlannedFiles {
public:
    /// Leaves out files that were changed less than `minAgeSeconds` ago.
    CPlannedFiles(CInputCollector inputs, double minAgeSeconds);

    std::size_t Count() const { return m_files.size(); }
    std::size_t TooYoung() const { return m_tooYoung; }

    /// Visits the files in order.
    void ForEach(CTouchedNames& names, const std::function<void(const PlannedFile&)>& visit) const;

private:
    struct File {
        std::uint64_t size;
        std::int64_t modifiedNanoseconds;
        std::uint64_t identity;  // equal for all names of one file; 0 when there is no file
        std::uint32_t index;     // in the list of inputs
    };

    std::vector<std::uint32_t> Groups(CTouchedNames& names) const;

    CInputCollector m_inputs;
    std::vector<File> m_files;
    std::size_t m_tooYoung = 0;
};
