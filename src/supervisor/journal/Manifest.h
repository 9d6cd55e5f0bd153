// The manifest: what a plan has decided, one line for each file. See docs/runs.md.
#pragma once

#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "base/Expected.h"
#include "platform/AtomicFile.h"
#include "platform/Files.h"
#include "protocol/RunDescription.h"
#include "protocol/RunReach.h"
#include "supervisor/RunObserver.h"
#include "supervisor/journal/LineReader.h"

struct ManifestHeader {
    RunOrder order = {};  ///< what workers get to do
    int total = 0;
    std::uint64_t bytes = 0;
    bool oneWorker = false;
    std::string oneWorkerReason = {};
    int unreadableFolders = 0;                              ///< whose files the plan had to leave out
    bool reports = false;                                   ///< a step reports what it finds in the files
    bool startsPrograms = false;                            ///< a step may start programs
    bool movesInputs = false;                               ///< inputs get other names, also those of each other
    RunReach reach = {};                                    ///< complete
    int outputsPerFile = 1;                                 ///< how many results the work writes for a file
    std::vector<std::string> workHashes = {};               ///< SHA-256 of each file of the work; empty where unknown
    std::vector<std::string> preamble = {}, epilogue = {};  ///< lines of the log, as bytes
};

/// The manifest of the run that has this folder for itself.
[[nodiscard]] std::string ManifestIn(const std::string& folder);

/// Writes a manifest while it is being planned. The file appears under its name complete or not at all.
class CManifestWriter {
public:
    explicit CManifestWriter(std::string path);

    /// The first failure of opening or writing so far.
    platform::FileResult Result() const { return m_lines.Result(); }
    /// In the order of their numbers.
    void Add(const PlannedFile& file);
    /// The header stands first but is known last. Afterwards the object is of no more use.
    platform::FileResult Finish(const ManifestHeader& header);

private:
    std::string m_path;
    platform::CAtomicFile m_lines;  // the files, without the header; never committed
};

/// Reads a manifest as a stream.
class CManifestReader {
public:
    /// The header; the next lines are those of the files. Fails with a sentence that names the file.
    [[nodiscard]] Expected<ManifestHeader> Open(const std::string& path);
    /// The next file; nothing at the end or when a line is no good, which Problem tells.
    [[nodiscard]] std::optional<PlannedFile> Next();
    /// Empty as long as all is well. At the end it is a problem when files are missing.
    const std::string& Problem() const { return m_problem; }

private:
    std::string m_path;
    CLineReader m_reader;
    std::string m_line;
    int m_total = 0, m_last = 0;
    std::string m_problem;
};
