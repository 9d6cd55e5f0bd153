// The journal of a shard: what was going to be done for good and what became of each file. See docs/runs.md.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Expected.h"
#include "platform/Files.h"
#include "platform/HeldFiles.h"
#include "protocol/Messages.h"
#include "protocol/RunReach.h"
#include "supervisor/RunObserver.h"
#include "supervisor/journal/LineReader.h"

/// Something that a worker was allowed to do for good.
using Intent = IntendedAct;

/// How a file ended, with its part of the log as bytes.
struct DoneFile {
    FileRecord record = {};
    std::vector<std::string> log = {};
    /// The lines from preflightBegin to before preflightEnd belong to the whole run; both 0: none do.
    std::size_t preflightBegin = 0, preflightEnd = 0;
};

struct JournalName {
    std::string run = {};
    std::string shard = {};  ///< "1/4"
    RunReach reach = {};     ///< what the run may have touched
};

/// The journal of the run that has this folder for itself.
[[nodiscard]] std::string JournalIn(const std::string& folder);

/// Appends lines. Each function fails with what the system says; then the line does not count.
class CJournalWriter {
public:
    /// `length`: what of an existing file counts; the rest is cut off. 0 begins a new journal.
    platform::FileResult Open(const std::string& path, const JournalName& name, std::uint64_t length);
    bool IsOpen() const { return m_file.IsOpen(); }

    /// On disk when this comes back. `order`: which it gets; those of later ones are greater.
    platform::FileResult AddIntent(const Intent& intent, std::uint64_t* order = nullptr);
    /// `offset`: where CJournalReader finds it.
    platform::FileResult AddDone(const DoneFile& done, std::uint64_t* offset);
    /// The file gets another outcome than the one that it has.
    platform::FileResult AddAgain(int number, ToDo toDo);
    /// On disk when this comes back.
    platform::FileResult AddEnd(std::string_view outcome, const std::vector<std::string>& epilogue);

private:
    platform::FileResult AddLine(std::string line, bool flush);

    platform::CAppendFile m_file;
    std::uint64_t m_length = 0;
};

/// Takes what a journal holds, in its order. A sentence as answer ends the reading with an error.
class CJournalVisitor {
public:
    virtual ~CJournalVisitor() = default;
    virtual std::string OnIntent(Intent intent) = 0;
    virtual std::string OnDone(const FileRecord& record, std::uint64_t offset) = 0;
    virtual std::string OnAgain(int number, ToDo toDo) = 0;
    virtual std::string OnEnd(const std::string& outcome, std::vector<std::string> epilogue) = 0;
};

struct JournalContent {
    std::optional<JournalName> name = {};  ///< nothing: the file is missing or even its first line is incomplete
    std::uint64_t length = 0;              ///< of the complete lines
};

/// Reads a whole journal. Fails with a sentence that names file and line. `run`: the one that it must belong to;
/// empty: any.
[[nodiscard]] Expected<JournalContent> ReadJournal(const std::string& path, const std::string& run,
                                                   CJournalVisitor& visitor);

/// Finds outcomes again.
class CJournalReader {
public:
    [[nodiscard]] bool Open(const std::string& path) { return m_reader.Open(path); }
    [[nodiscard]] std::optional<DoneFile> DoneAt(std::uint64_t offset);

private:
    CLineReader m_reader;
    std::string m_line;
};
