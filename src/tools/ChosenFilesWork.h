// What all work has in common whose documents somebody has chosen, file by file or by folders.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "engine/Work.h"

/// Has no inputs of its own, takes PDF files, and does what any host can.
class CChosenFilesWork : public CWork {
public:
    [[nodiscard]] std::string Refusal(CLogWriter&) override { return {}; }
    [[nodiscard]] std::vector<std::string> Extensions(CLogWriter&) const override { return {"pdf"}; }
    [[nodiscard]] std::string InputPlaces(const ExecutorSettings& settings,
                                          const std::vector<std::string>& extensions, Asking asking, CLogWriter& log,
                                          const TakePlace& take) const override;
    [[nodiscard]] bool TakesEachFileOnce() const override { return true; }
    void Begin(const WorkServices& services) override { m_run.emplace(services); }

protected:
    /// Between Begin and the end of the work.
    [[nodiscard]] const WorkServices& Run() const { return *m_run; }

private:
    std::optional<WorkServices> m_run;
};
