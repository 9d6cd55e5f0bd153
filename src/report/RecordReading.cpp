#include "report/RecordReading.h"

#include <algorithm>
#include <array>
#include <optional>
#include <set>
#include <utility>

#include "base/Text.h"
#include "platform/Files.h"
#include "protocol/Json.h"
#include "supervisor/RunArchive.h"
#include "supervisor/RunFolder.h"
#include "supervisor/journal/Journal.h"
#include "supervisor/journal/LineReader.h"

namespace {

std::string Quantity(std::uint64_t number, const char* one, const char* many)
{
    return std::to_string(number) + ' ' + (number == 1 ? one : many);
}

/// The line of a file, for messages.
std::string Where(const CLineReader& reader, const std::string& path)
{
    return "Line " + std::to_string(reader.LineNumber()) + " of " + path + ": ";
}

bool IsSameRecord(const std::string& one, const std::string& other)
{
    const auto first = platform::StampOf(one), second = platform::StampOf(other);
    return first && second && first->IsSameFile(*second);
}

}  // namespace

bool CNumberSet::Add(int number)
{
    constexpr int chunkSize = kBits * kWords;
    const int inChunk = number % chunkSize;
    std::uint64_t& word = m_chunks[number / chunkSize][static_cast<std::size_t>(inChunk / kBits)];
    const std::uint64_t bit = std::uint64_t{1} << (inChunk % kBits);
    if ((word & bit) != 0) return false;
    word |= bit;
    ++m_size;
    return true;
}

/// Where the last outcome of each file stands in a journal, and what was begun without one.
class CRecordReading::CJournalOutcomes final : public CJournalVisitor {
public:
    std::string OnIntent(Intent intent) override
    {
        if (intent.number > 0) m_begun.insert(intent.number);
        return {};
    }
    std::string OnDone(const FileRecord& record, std::uint64_t offset) override
    {
        m_begun.erase(record.number);
        m_places.emplace_back(record.number, offset);
        m_ended = false;
        return {};
    }
    std::string OnAgain(int number, ToDo) override
    {
        m_begun.insert(number);
        m_ended = false;
        return {};
    }
    std::string OnEnd(const std::string& outcome, std::vector<std::string>) override
    {
        m_ended = true;
        m_end = outcome;
        return {};
    }

    /// In the order of the files.
    std::vector<std::pair<int, std::uint64_t>> Latest()
    {
        std::ranges::sort(m_places);
        std::vector<std::pair<int, std::uint64_t>> latest;
        for (const auto& place : m_places) {
            if (!latest.empty() && latest.back().first == place.first) latest.pop_back();
            latest.push_back(place);
        }
        return latest;
    }
    const std::set<int>& Begun() const { return m_begun; }
    bool Ended() const { return m_ended && m_end == "finished"; }

private:
    std::vector<std::pair<int, std::uint64_t>> m_places;
    std::set<int> m_begun;  // as many as there are workers
    bool m_ended = false;
    std::string m_end;
};

bool CRecordReading::Read(const std::string& path)
{
    if (!CRunArchive::IsPack(path)) return ReadAs(path, path);
    const CScratchFolder scratch;
    const std::string unpacked = JournalIn(scratch.Path());
    std::string problem = "No folder for temporary files can be made.";
    if (!scratch.Path().empty()) problem = CRunArchive::Unpack(path, unpacked);
    if (problem.empty()) return ReadAs(unpacked, path);
    m_sums.AddProblem(std::move(problem));
    return false;
}

bool CRecordReading::ReadAs(const std::string& path, const std::string& shownPath)
{
    RecordSource source{.path = shownPath};
    CLineReader reader;
    std::string line;
    const auto refuse = [&](const std::string& why) {
        m_sums.AddProblem(why);
        return false;
    };
    if (platform::FolderExists(path)) return refuse(shownPath + " is a folder; name the records in it.");
    if (!reader.Open(path)) return refuse("The record " + shownPath + " cannot be opened.");
    if (!reader.Next(line)) {
        if (reader.Failed()) return refuse("The record " + shownPath + " cannot be read.");
        if (line.empty()) return refuse("The record " + shownPath + " is empty.");
        return refuse("Line 1 of " + shownPath +
                      ": its end is missing, so the record was cut off there, or it is none.");
    }
    const auto first = ParseObject(line);
    const bool isJournal = first && TextAt(*first, "ferrule") == "journal";
    if (!isJournal && (!first || !OutcomeFromWord(TextAt(*first, "outcome")))) {
        if (first && TextAt(*first, "ferrule") == "manifest")
            return refuse(shownPath + " is a plan; a report is made of records or of the journals of its parts.");
        // A first line that somebody has damaged leaves the others.
        const bool second =
            reader.Next(line) && ParseObject(line) && OutcomeFromWord(TextAt(*ParseObject(line), "outcome"));
        if (!second) return refuse("Line 1 of " + shownPath + ": this is neither a record nor a journal of a run.");
    }
    if (first && !isJournal && first->contains("version"))
        if (const auto version = UnsignedAt(*first, "version"); version < 1 || version > kRecordVersion)
            return refuse("Line 1 of " + shownPath + ": the record is of version " + LineOf((*first)["version"]) +
                          "; this program knows those up to " + std::to_string(kRecordVersion) +
                          ". Use the program that has written it.");
    const bool told = isJournal ? ReadJournalFile(path, source) : ReadRecord(path, source);
    if (source.trial)
        m_sums.AddNote(shownPath + " is of a dry run: what it tells would have been done, and was not.");
    m_sums.sources.push_back(std::move(source));
    return told;
}

bool CRecordReading::ReadRecord(const std::string& path, RecordSource& source)
{
    CLineReader reader;
    std::string line;
    if (!reader.Open(path)) return false;
    while (reader.Next(line)) {
        const auto object = ParseObject(line);
        if (!object || !AddLine(*object, source))
            m_sums.AddProblem(Where(reader, source.path) + "this is no line of a record; it is left out.");
    }
    if (reader.Failed())
        m_sums.AddProblem(source.path + " cannot be read beyond line " + std::to_string(reader.LineNumber()) + ".");
    else if (!line.empty())
        m_sums.AddProblem("Line " + std::to_string(reader.LineNumber() + 1) + " of " + source.path +
                          ": its end is missing; the record is cut off here, and the line is left out.");
    return source.files != 0;
}

bool CRecordReading::AddLine(const Json& object, RecordSource& source)
{
    const auto record = FileRecordFrom(object);
    if (!record || record->number < 1 || record->path.empty()) return false;
    if (const Json& run = ObjectAt(object, "run"); !run.empty()) {  // records may have been joined
        source.run = TextAt(run, "id");
        source.trial = source.trial || FlagAt(object, "dryRun");
        if (!source.run.empty())
            m_runs[source.run].total = std::max(m_runs[source.run].total, UnsignedAt(object, "total"));
    }
    AddFile(*record, source);
    return true;
}

void CRecordReading::AddFile(const FileRecord& record, RecordSource& source)
{
    ++source.files;
    if (!source.run.empty()) {
        Run& run = m_runs[source.run];
        if (!run.numbers.Add(record.number)) {
            ++run.repeated;
            return;
        }
    }
    m_sums.Add(record);
}

bool CRecordReading::ReadJournalFile(const std::string& path, RecordSource& source)
{
    CJournalOutcomes outcomes;
    const auto content = ReadJournal(path, {}, outcomes);
    if (!content)
        m_sums.AddProblem(ReplaceAll(content.Error(), path, source.path) + " What comes after it is not told.");
    CLineReader reader;
    std::string line;
    const auto first = reader.Open(path) && reader.Next(line) ? ParseObject(line) : std::nullopt;
    if (first) source.run = TextAt(*first, "run");
    CJournalReader places;
    if (!places.Open(path)) return false;
    for (const auto& [number, offset] : outcomes.Latest()) {
        const auto done = places.DoneAt(offset);
        if (done) AddFile(done->record, source);
        if (!done) m_sums.AddProblem(source.path + " was changed while it was read.");
    }
    if (content && !outcomes.Ended())
        m_sums.AddProblem("The journal " + source.path + " has no end: the run was interrupted, or it is not over" +
                          (outcomes.Begun().empty() ? std::string()
                                                    : ", with " + Quantity(outcomes.Begun().size(), "file", "files") +
                                                          " begun and not finished") +
                          ".");
    return source.files != 0;
}

void CRecordReading::Complete()
{
    for (const auto& [id, run] : m_runs) {
        if (run.repeated != 0)
            m_sums.AddNote(Quantity(run.repeated, "line tells", "lines tell") + " of files of the run " + id +
                           " that another line tells of, too; of several records the one that is named last counts.");
        if (run.total > run.numbers.Size())
            m_sums.AddProblem(
                Quantity(run.total - run.numbers.Size(), "file", "files") + " of the " + std::to_string(run.total) +
                " of the run " + id +
                " have no outcome here: the run was interrupted, or records of other parts are missing.");
    }
    m_sums.Complete();
}

bool SumUpRecords(const std::vector<std::string>& paths, CRunSums& sums)
{
    CRecordReading reading(sums);
    bool told = false;
    for (auto path = paths.rbegin(); path != paths.rend(); ++path) {
        const bool again =
            std::any_of(paths.rbegin(), path, [&](const std::string& other) { return IsSameRecord(*path, other); });
        if (again) {
            sums.AddNote(*path + " is named twice and read once.");
            continue;
        }
        told = reading.Read(*path) || told;
    }
    std::ranges::reverse(sums.sources);
    reading.Complete();
    return told;
}
