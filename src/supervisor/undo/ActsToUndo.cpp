#include "supervisor/undo/ActsToUndo.h"

#include <algorithm>
#include <cctype>
#include <limits>
#include <utility>

#include "base/Names.h"
#include "platform/Files.h"
#include "protocol/Json.h"
#include "supervisor/journal/Journal.h"

namespace {

constexpr std::size_t kMostActs = std::numeric_limits<std::uint16_t>::max() - 1;
/// Instead of the place in a record: the line is the act.
constexpr std::size_t kOwnLine = std::numeric_limits<std::uint16_t>::max();

constexpr int kPlaceBits = 16;

constexpr char kOldRecord[] =
    "it does not say what is needed to take the run back; only records of this version of Ferrule do.";

/// Whether the file's outcome does not name the act among what was done.
bool IsMissingIn(const FileRecord& record, const IntendedAct& act)
{
    if (record.outcome == FileOutcome::Stopped) return true;
    if (act.finalAction) return !record.finalAction || record.finalAction->target != act.target;
    return act.act == Act::Put &&
           std::ranges::none_of(record.outputs, [&](const FileOutput& output) { return output.path == act.target; });
}

}  // namespace

/// The acts of a journal: those of outcomes, and what was begun without one.
class CActsToUndo::CJournalActs final : public CJournalVisitor {
public:
    explicit CJournalActs(CActsToUndo& acts) : m_acts(acts) {}

    std::string OnIntent(Intent intent) override { return m_acts.Add(intent, {}, intent.order, kOwnLine); }
    std::string OnDone(const FileRecord& record, std::uint64_t offset) override
    {
        return m_acts.AddRecord(record, offset);
    }
    std::string OnAgain(int, ToDo) override { return {}; }
    std::string OnEnd(const std::string&, std::vector<std::string>) override { return {}; }

private:
    CActsToUndo& m_acts;
};

namespace {

/// The first line, which tells what kind of file it is.
Expected<Json> FirstLine(const std::string& path)
{
    CLineReader reader;
    std::string line;
    if (!reader.Open(path)) return Failure("The record " + path + " cannot be opened.");
    const auto first = reader.Next(line) ? ParseObject(line) : std::nullopt;
    if (!first) return Failure(path + " is neither a record nor a journal of a run.");
    return *first;
}

bool IsJournal(const Json& first) { return first.contains("ferrule"); }

RunReach ReachOf(const Json& first) { return RunReachFrom(ObjectAt(first, IsJournal(first) ? "reach" : "run")); }

}  // namespace

Expected<std::string> CActsToUndo::RunOf(const std::string& path)
{
    const auto first = FirstLine(path);
    if (!first) return Failure(first.Error());
    const std::string run = ReachOf(*first).run;
    const bool plain = std::ranges::all_of(run, [](unsigned char letter) { return std::isalnum(letter) != 0; });
    if (run.empty() || !plain) return Failure(path + ": " + kOldRecord);
    return run;
}

Expected<CActsToUndo> CActsToUndo::Open(const std::string& path)
{
    const auto first = FirstLine(path);
    if (!first) return Failure(first.Error());
    CActsToUndo acts;
    acts.m_path = path;
    acts.m_reach = ReachOf(*first);
    std::string problem = IsJournal(*first) ? acts.ReadJournalFile() : acts.ReadRecord();
    if (!problem.empty()) return Failure(std::move(problem));
    return acts;
}

std::string CActsToUndo::ReadJournalFile()
{
    CJournalActs visitor(*this);
    const auto read = ReadJournal(m_path, m_reach.run, visitor);
    if (!read) return read.Error() + " Nothing was touched.";
    Sort(true);
    return {};
}

std::string CActsToUndo::ReadRecord()
{
    CLineReader reader;
    std::string line;
    if (!reader.Open(m_path)) return "The record " + m_path + " cannot be opened.";
    while (reader.Next(line)) {
        const std::string where = "Line " + std::to_string(reader.LineNumber()) + " of the record " + m_path + ": ";
        const auto object = ParseObject(line);
        const auto record = object ? FileRecordFrom(*object) : std::nullopt;
        if (!record || record->number < 1) return where + "this is no line of a record. Nothing was touched.";
        if (reader.LineNumber() > 1 && object->contains("run"))
            return where + "another run begins here; take runs back one by one. Nothing was touched.";
        if (const std::string problem = AddRecord(*record, reader.Offset()); !problem.empty())
            return where + problem + ". Nothing was touched.";
    }
    if (reader.Failed()) return "The record " + m_path + " cannot be read.";
    Sort(false);
    return {};
}

std::string CActsToUndo::AddRecord(const FileRecord& record, std::uint64_t offset)
{
    if (!m_reach.CoversInput(record.path)) return record.path + " is none of the files that the run could read";
    if (record.acts.size() > kMostActs) return "too many acts for one file";
    for (std::size_t place = 0; place < record.acts.size(); ++place)
        if (std::string problem = Add(record.acts[place], record.path, offset, place); !problem.empty())
            return problem;
    return {};
}

std::string CActsToUndo::Add(const IntendedAct& act, const std::string& input, std::uint64_t offset,
                             std::size_t place)
{
    std::string problem = ProblemWith(act, input);
    if (!problem.empty()) return problem;
    m_entries.push_back({act.order, offset << kPlaceBits | place});
    for (const std::string& path : {input, act.target})
        if (const std::string folder = FolderOf(path); !folder.empty() && act.act != Act::Start)
            m_folders.insert(folder);
    return {};
}

/// Why the run cannot have done this: whoever changed the record might make us remove anything.
std::string CActsToUndo::ProblemWith(const IntendedAct& act, const std::string& input) const
{
    if (act.act == Act::Start) return {};
    const std::string& written = act.act == Act::Delete ? act.file : act.target;
    for (const std::string& path : {written, act.act == Act::Move ? act.file : written})
        if (!Covers(path, input)) return path + " is no file that the run could have touched";
    if (act.former && !act.former->kept.empty() && !m_reach.CoversKept(act.former->kept))
        return act.former->kept + " lies outside of the folder of kept originals";
    return {};
}

bool CActsToUndo::Covers(const std::string& path, const std::string& input) const
{
    // A begun act of a journal does not name its input.
    if (input.empty())
        return m_reach.CoversInput(path) || std::ranges::any_of(m_reach.inputs, [&](const std::string& place) {
                   return m_reach.Covers(path, place);
               });
    // What is saved for a link goes where the link leads.
    return m_reach.Covers(path, input) || FolderOf(path) == FolderOf(platform::ResolvedPath(input));
}

void CActsToUndo::Sort(bool oneJournal)
{
    // The latest line that tells of an act knows most about it.
    std::ranges::sort(m_entries, [](const Entry& one, const Entry& other) {
        return std::pair(one.order, one.line) > std::pair(other.order, other.line);
    });
    if (oneJournal) {
        const auto rest = std::ranges::unique(m_entries, {}, [](const Entry& entry) { return entry.order; });
        m_entries.erase(rest.begin(), rest.end());
    }
}

std::string CActsToUndo::ForEach(const std::function<bool(const ActToUndo& act)>& visit) const
{
    CLineReader reader;
    std::string line;
    if (!reader.Open(m_path)) return m_path + " cannot be opened again.";
    const std::string changed = m_path + " was changed while it was read.";
    std::optional<FileRecord> record;  // of the line that was read last: the acts of a file mostly follow each other
    std::optional<std::uint64_t> offsetOfRecord;
    for (const Entry& entry : m_entries) {
        const std::size_t place = entry.line & kOwnLine;
        const std::uint64_t offset = entry.line >> kPlaceBits;
        std::optional<Json> object;
        if (offsetOfRecord != offset) {
            offsetOfRecord.reset();
            reader.Seek(offset);
            object = reader.Next(line) ? ParseObject(line) : std::nullopt;
            if (!object) return changed;
        }
        ActToUndo found;
        if (place == kOwnLine) {
            auto act = object ? IntendedActFrom(ObjectAt(*object, "intent")) : std::nullopt;
            if (!act) return changed;
            found.act = std::move(*act);
            found.act.order = entry.order;
            found.mayNotHave = true;
        } else {
            if (object)
                record = FileRecordFrom(object->contains("done") ? ObjectAt(ObjectAt(*object, "done"), "record")
                                                                 : *object);
            offsetOfRecord = offset;
            if (!record || record->acts.size() <= place) return changed;
            found = {.act = record->acts[place], .input = record->path};
            found.mayNotHave = IsMissingIn(*record, found.act);
        }
        if (!visit(found)) return {};
    }
    return {};
}
