// The input files that the host hands out.
#pragma once

#include "engine/InputSource.h"
#include "hostcalls/Jobs.h"

#include <optional>

class CJobInputs final : public CInputSource {
public:
    /// Takes the first input: the host tells the number of files with it. 0 when there is none at all.
    int Total() override;
    std::optional<RunInput> Next() override;

private:
    std::optional<HostJobInput> m_first;
    bool m_ended = false;
};
