// Finds the input files of a run.
#pragma once

#include "base/Expected.h"
#include "engine/InputCollector.h"
#include "engine/InputSource.h"
#include "engine/Work.h"

#include <string>
#include <utility>
#include <vector>

class CLogWriter;

/// Collects the input files, in the order in which they are to be processed; none when the place is there and holds
/// none. Fails, logged, when there is no place to look at. Folders that are written to are left out, logged, of the
/// folders around them. `extensions`: the accepted ones. Throws CHostException.
[[nodiscard]] Expected<CInputCollector> CollectInputFiles(const ExecutorSettings& settings, const CWork& work,
                                                          std::vector<std::string> extensions, CLogWriter& log);

/// The accepted extensions, without dots: those that the settings allow, or else those of the work. Throws
/// CHostException.
[[nodiscard]] std::vector<std::string> InputExtensions(const ExecutorSettings& settings, const CWork& work,
                                                       CLogWriter& log);

/// The files that were collected.
class CCollectedInputs final : public CInputSource {
public:
    explicit CCollectedInputs(CInputCollector collector) : m_collector(std::move(collector)) {}
    int Total() override { return static_cast<int>(m_collector.Paths().Size()); }
    std::optional<RunInput> Next() override;

private:
    CInputCollector m_collector;
    std::size_t m_next = 0;
};
