#include "supervisor/watch/WatchJournal.h"

#include <utility>

#include "base/Text.h"
#include "platform/AtomicFile.h"
#include "platform/Files.h"
#include "protocol/Json.h"
#include "supervisor/journal/LineReader.h"

namespace {

constexpr char kFormat[] = "watch";
constexpr int kVersion = 1;

void AddStamp(Json& object, const WatchStamp& stamp)
{
    object["size"] = stamp.size;
    object["modified"] = std::to_string(stamp.modifiedNanoseconds);
}

WatchStamp StampAt(const Json& object)
{
    return {.size = UnsignedAt(object, "size"), .modifiedNanoseconds = DecimalAt(object, "modified")};
}

Json FileJson(const WatchedFile& file)
{
    Json object;
    object["path"] = TextFromBytes(file.path);
    object["state"] = WatchStateWord(file.state);
    AddStamp(object, file.stamp);
    if (!file.sha256.empty()) object["sha256"] = file.sha256;
    if (file.seenSeconds != 0) object["seen"] = file.seenSeconds;
    if (file.state == WatchState::Done) return object;
    object["tries"] = file.tries;
    object["reason"] = file.trouble.reason;
    object["first"] = file.trouble.firstSeconds;
    object["last"] = file.trouble.lastSeconds;
    return object;
}

std::optional<WatchedFile> FileFrom(const Json& object)
{
    const auto state = WatchStateFromWord(TextAt(object, "state"));
    WatchedFile file{.path = BytesAt(object, "path"),
                     .state = state.value_or(WatchState::Waiting),
                     .stamp = StampAt(object),
                     .sha256 = TextAt(object, "sha256"),
                     .tries = CountAt(object, "tries"),
                     .trouble = {.reason = TextAt(object, "reason"),
                                 .firstSeconds = IntegerAt(object, "first"),
                                 .lastSeconds = IntegerAt(object, "last")},
                     .seenSeconds = IntegerAt(object, "seen")};
    if (file.path.empty() || file.state == WatchState::Waiting) return std::nullopt;
    return file;
}

std::string FileLine(const WatchedFile& file) { return LineOf(Json{{"file", FileJson(file)}}) + '\n'; }

std::string ForgetLine(const std::string& path) { return LineOf(Json{{"forget", TextFromBytes(path)}}) + '\n'; }

std::string HeaderLine() { return LineOf(Json{{"ferrule", kFormat}, {"version", kVersion}}) + '\n'; }

}  // namespace

std::string CWatchJournal::Read(CWatchModel& model, std::uint64_t nowMs)
{
    m_length = 0;
    m_batch.clear();
    if (!platform::NameExists(m_path)) return {};
    CLineReader reader;
    if (!reader.Open(m_path)) return "The journal " + m_path + " cannot be read.";
    std::string line;
    if (!reader.Next(line)) return reader.Failed() ? "The journal " + m_path + " cannot be read." : std::string();
    const auto header = ParseObject(line);
    if (!header || TextAt(*header, "ferrule") != kFormat || CountAt(*header, "version") != kVersion)
        return HeaderProblem(m_path, kFormat, kVersion, line);
    while (reader.Next(line)) {
        if (TakeLine(line, model, nowMs)) continue;
        return "The journal " + m_path + " is damaged in line " + std::to_string(reader.LineNumber()) +
               ". Without it nobody knows what is done already. Move the file away to begin anew: then everything "
               "that is in the folder is done once more.";
    }
    if (reader.Failed()) return "The journal " + m_path + " cannot be read.";
    m_length = reader.NextOffset();
    return {};
}

bool CWatchJournal::TakeLine(const std::string& line, CWatchModel& model, std::uint64_t nowMs)
{
    const auto object = ParseObject(line);
    if (!object) return false;
    if (object->contains("file")) {
        const auto file = FileFrom(ObjectAt(*object, "file"));
        if (!file) return false;
        model.Restore(*file, nowMs);
    } else if (object->contains("forget")) {
        model.Forget(BytesAt(*object, "forget"));
    } else if (const Json* const files = ArrayAt(*object, "batch")) {
        m_batch.clear();
        for (const Json& file : *files) m_batch.push_back({BytesAt(file, "path"), StampAt(file)});
    } else if (object->contains("end")) {
        m_batch.clear();
    }
    return true;
}

std::string CWatchJournal::Open(CWatchModel& model, std::uint64_t nowMs)
{
    std::string problem = Read(model, nowMs);
    if (!problem.empty()) return problem;
    platform::FileResult result = m_file.Open(m_path);
    if (result) result = m_file.Truncate(m_length);
    if (!result) return Problem(result);
    return m_length == 0 ? Append(HeaderLine()) : std::string();
}

std::string CWatchJournal::BeginBatch(const std::vector<SeenFile>& files)
{
    Json list = Json::array();
    for (const SeenFile& file : files) {
        Json object{{"path", TextFromBytes(file.path)}};
        AddStamp(object, file.stamp);
        list.push_back(std::move(object));
    }
    std::string problem = Append(LineOf(Json{{"batch", std::move(list)}}) + '\n');
    if (problem.empty()) m_batch = files;
    return problem;
}

std::string CWatchJournal::EndBatch(const std::vector<WatchedFile>& files, const std::vector<std::string>& gone)
{
    std::string text;
    for (const WatchedFile& file : files) text += FileLine(file);
    for (const std::string& path : gone) text += ForgetLine(path);
    std::string problem = Append(text + LineOf(Json{{"end", true}}) + '\n');
    if (problem.empty()) m_batch.clear();
    return problem;
}

std::string CWatchJournal::Add(const std::vector<WatchedFile>& files)
{
    std::string text;
    for (const WatchedFile& file : files) text += FileLine(file);
    return text.empty() ? text : Append(text);
}

std::string CWatchJournal::Forget(const std::vector<std::string>& paths)
{
    std::string text;
    for (const std::string& path : paths) text += ForgetLine(path);
    return text.empty() ? text : Append(text);
}

std::string CWatchJournal::Compact(const CWatchModel& model)
{
    platform::CAtomicFile file(m_path, platform::Existing::Replace, m_path);
    std::uint64_t length = 0;
    const auto add = [&](const std::string& line) {
        file.Write(line.data(), line.size());
        length += line.size();
    };
    add(HeaderLine());
    model.ForEach([&](const WatchedFile& kept) { add(FileLine(kept)); });
    m_file.Close();
    const platform::FileResult written = file.Commit();
    const platform::FileResult opened = m_file.Open(m_path);
    if (!opened) return Problem(opened);
    if (!written) return Problem(written);
    m_length = m_compactLength = length;
    return {};
}

/// What could only be written in part is cut off, so that the next line begins where a line begins.
std::string CWatchJournal::Append(const std::string& text)
{
    platform::FileResult result = m_file.Write(text);
    if (result) result = m_file.Flush();
    if (!result) {
        (void)m_file.Truncate(m_length);
        return Problem(result);
    }
    m_length += text.size();
    return {};
}

std::string CWatchJournal::Problem(platform::FileResult result) const
{
    return "The journal " + m_path + " cannot be written (" + platform::ErrorText(result.errorNumber) + ").";
}
