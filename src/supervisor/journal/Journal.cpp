#include "supervisor/journal/Journal.h"

#include <utility>

#include "base/Names.h"
#include "protocol/Json.h"

using platform::FileResult;

namespace {

/// 1 did not say what is needed to take a run back.
constexpr int kJournalVersion = 2;

std::string HeaderLine(const JournalName& name)
{
    return LineOf({{"ferrule", "journal"},
                   {"version", kJournalVersion},
                   {"run", name.run},
                   {"shard", name.shard},
                   {"reach", RunReachJson(name.reach)}});
}

std::optional<JournalName> NameFrom(const std::string& line)
{
    const auto header = ParseObject(line);
    if (!header || TextAt(*header, "ferrule") != "journal" || CountAt(*header, "version") != kJournalVersion)
        return std::nullopt;
    return JournalName{TextAt(*header, "run"), TextAt(*header, "shard"), RunReachFrom(ObjectAt(*header, "reach"))};
}

std::optional<DoneFile> DoneFrom(const Json& object)
{
    auto record = FileRecordFrom(ObjectAt(object, "record"));
    if (!record || record->number == 0) return std::nullopt;
    DoneFile done{.record = std::move(*record), .log = BytesListAt(object, "log")};
    const auto range = object.find("preflight");
    if (range == object.end() || !range->is_array() || range->size() != 2) return done;
    const Json &begin = (*range)[0], &end = (*range)[1];
    if (!begin.is_number_unsigned() || !end.is_number_unsigned()) return done;
    done.preflightBegin = begin.get<std::size_t>();
    done.preflightEnd = end.get<std::size_t>();
    const bool fits = done.preflightBegin <= done.preflightEnd && done.preflightEnd <= done.log.size();
    if (!fits) done.preflightBegin = done.preflightEnd = 0;
    return done;
}

constexpr char kUnknownLine[] = "the line is none that belongs into a journal";

std::string Visit(const std::string& line, std::uint64_t offset, CJournalVisitor& visitor)
{
    const auto object = ParseObject(line);
    if (!object) return kUnknownLine;
    if (object->contains("intent")) {
        auto intent = IntendedActFrom(ObjectAt(*object, "intent"));
        if (!intent || intent->number == 0) return kUnknownLine;
        intent->order = offset;
        return visitor.OnIntent(std::move(*intent));
    }
    if (object->contains("done")) {
        const auto record = FileRecordFrom(ObjectAt(ObjectAt(*object, "done"), "record"));
        return record && record->number != 0 ? visitor.OnDone(*record, offset) : kUnknownLine;
    }
    if (object->contains("again")) {
        const Json& again = ObjectAt(*object, "again");
        return visitor.OnAgain(CountAt(again, "number"), ToDoFromWord(TextAt(again, "toDo")));
    }
    if (object->contains("end")) {
        const Json& end = ObjectAt(*object, "end");
        return visitor.OnEnd(TextAt(end, "outcome"), BytesListAt(end, "epilogue"));
    }
    return kUnknownLine;
}

}  // namespace

std::string JournalIn(const std::string& folder) { return WithTrailingSeparator(folder) + "journal.jsonl"; }

FileResult CJournalWriter::Open(const std::string& path, const JournalName& name, std::uint64_t length)
{
    if (const FileResult opened = m_file.Open(path); !opened) return opened;
    m_length = length;
    if (const FileResult cut = m_file.Truncate(length); !cut) return cut;
    return length == 0 ? AddLine(HeaderLine(name), false) : FileResult{};
}

FileResult CJournalWriter::AddIntent(const Intent& intent, std::uint64_t* order)
{
    if (order) *order = m_length;  // only grows, also from one start of a run to the next
    return AddLine(LineOf({{"intent", IntendedActJson(intent)}}), true);
}

FileResult CJournalWriter::AddDone(const DoneFile& done, std::uint64_t* offset)
{
    *offset = m_length;
    Json object = {{"record", FileRecordJson(done.record)}, {"log", TextsOf(done.log)}};
    if (done.preflightEnd != 0) object["preflight"] = {done.preflightBegin, done.preflightEnd};
    return AddLine(LineOf({{"done", std::move(object)}}), false);
}

FileResult CJournalWriter::AddAgain(int number, ToDo toDo)
{
    return AddLine(LineOf({{"again", {{"number", number}, {"toDo", ToDoWord(toDo)}}}}), false);
}

FileResult CJournalWriter::AddEnd(std::string_view outcome, const std::vector<std::string>& epilogue)
{
    return AddLine(LineOf({{"end", {{"outcome", outcome}, {"epilogue", TextsOf(epilogue)}}}}), true);
}

FileResult CJournalWriter::AddLine(std::string line, bool flush)
{
    line += '\n';
    FileResult result = m_file.Write(line);
    if (result && flush) result = m_file.Flush();
    // Half a line would spoil the next one, and what is not allowed to happen must not seem to be intended.
    if (!result) (void)m_file.Truncate(m_length);
    if (result) m_length += line.size();
    return result;
}

Expected<JournalContent> ReadJournal(const std::string& path, const std::string& run, CJournalVisitor& visitor)
{
    CLineReader reader;
    std::string line;
    if (!reader.Open(path)) {
        if (!platform::NameExists(path)) return JournalContent{};
        return Failure("The journal " + path + " cannot be opened.");
    }
    if (!reader.Next(line)) return JournalContent{};
    JournalContent content{.name = NameFrom(line)};
    if (!content.name) return Failure(HeaderProblem(path, "journal", kJournalVersion, line));
    if (!run.empty() && content.name->run != run) return Failure("The journal " + path + " belongs to another run.");
    while (reader.Next(line))
        if (const std::string problem = Visit(line, reader.Offset(), visitor); !problem.empty())
            return Failure("Line " + std::to_string(reader.LineNumber()) + " of the journal " + path + ": " +
                           problem + ".");
    if (reader.Failed()) return Failure("The journal " + path + " cannot be read.");
    content.length = reader.NextOffset();
    return content;
}

std::optional<DoneFile> CJournalReader::DoneAt(std::uint64_t offset)
{
    m_reader.Seek(offset);
    if (!m_reader.Next(m_line)) return std::nullopt;
    const auto object = ParseObject(m_line);
    if (!object || !object->contains("done")) return std::nullopt;
    return DoneFrom(ObjectAt(*object, "done"));
}
