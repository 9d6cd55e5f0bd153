#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/Expected.h"
#include "engine/InputCollector.h"
#include "engine/Work.h"

// Where a run takes its input files from.

struct RunInput {
    std::string path;
    int number = 0;                // in the whole run, from 1
    bool finalActionOnly = false;  // its result is there already
};

/// Hands out the input files of one run, one by one. May throw CHostException.
class CInputSource {
public:
    virtual ~CInputSource() = default;

    /// The number of files of the whole run, also of those that somebody else processes. Asked once, before Next.
    virtual int Total() = 0;

    /// The next file to process; nothing when there is none left or the run is to end.
    virtual std::optional<RunInput> Next() = 0;
};

// Finds the input files of a run.

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
