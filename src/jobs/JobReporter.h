// Hands the events of a run to the host's jobs table, when the host has one.
#pragma once

#include "batchrun/RunEvents.h"

class CJobReporter final : public CRunEvents {
public:
    void RunStarts(int inputs) override;
    void InputsCounted() override;
    void SequencePreflight(bool begins) override;
    void FinalActionBegins() override;
    void FileDone(const ProcessedFile& file) override;
    void RunEnds(RunEnd end, const std::string& message) override;
};
