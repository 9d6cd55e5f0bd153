#include "jobs/RunJob.h"

#include <optional>
#include <utility>

#include "batchrun/RunDriver.h"
#include "engine/InputFiles.h"
#include "hostcalls/Jobs.h"

class CJobInputs final : public CInputSource {
public:
    /// Takes the first input: the host tells the number of files with it. 0 when there is none at all.
    int Total() override;
    std::optional<RunInput> Next() override;

private:
    std::optional<HostJobInput> m_first;
    bool m_ended = false;
};

int CJobInputs::Total()
{
    m_first = NextJobInput();
    m_ended = !m_first;
    return m_first ? m_first->total : 0;
}

std::optional<RunInput> CJobInputs::Next()
{
    if (m_ended) return std::nullopt;
    const auto next = m_first ? std::exchange(m_first, std::nullopt) : NextJobInput();
    m_ended = !next;
    if (!next) return std::nullopt;
    return RunInput{next->path, next->number, next->finalActionOnly};
}

void DoRunJob(const RunOrder& order, const JobServices& services) noexcept
{
    CJobInputs inputs;
    CRunDriver driver({.settings = [&] { return DescribedSettings(order.description, order.dryRun, services.log); },
                       .log = services.log,
                       .events = services.events,
                       .host = services.host,
                       .inputs = &inputs});
    driver.Idle();
}
