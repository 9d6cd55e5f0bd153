// Finds the input files of a run.
#pragma once

#include "base/Expected.h"
#include "engine/ExecutorSettings.h"
#include "engine/InputCollector.h"
#include "engine/InputSource.h"
#include "hostcalls/Cab.h"
#include "sequence/Sequence.h"

#include <string>
#include <utility>
#include <vector>

class CLogWriter;

/// Collects the input files, in the order in which they are to be processed; none when the place is there and holds
/// none. Fails, logged, when there is no place to look at. Folders that are written to are left out, logged, of the
/// folders around them. `extensions`: the accepted ones. Throws CHostException.
[[nodiscard]] Expected<CInputCollector> CollectInputFiles(const ExecutorSettings& settings, const CSequence& sequence,
                                                          std::vector<std::string> extensions, CLogWriter& log);

/// The places of a sequence that says it takes a folder but lists places as for files, as the XML form does with the
/// folders it names; empty for any other sequence. A run from the environment does not find them. Throws
/// CHostException.
[[nodiscard]] std::vector<std::string> ListedFolders(CSequenceInput input);

/// Logs where the input files come from, as collecting them does, for a run that gets them from somebody else.
void LogInputPlaces(const ExecutorSettings& settings, CSequenceInput input, CLogWriter& log);

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
