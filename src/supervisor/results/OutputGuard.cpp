#include "supervisor/results/OutputGuard.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "base/Names.h"
#include "platform/NarrowText.h"

namespace {

constexpr std::size_t kHeadLength = 1 << 16;

struct KindRow {
    const char *what, *option, *begin;
};
/// In the order of OutputKind. A file of the kind begins so.
constexpr std::array<KindRow, 6> kKinds = {{{"the record", "--record", R"({"number":)"},
                                            {"the manifest", "--manifest", R"({"ferrule":"manifest")"},
                                            {"the journal", "--journal", R"({"ferrule":"journal")"},
                                            {"the log", "--log", "1: LOG STARTED: "},
                                            {"the report", "--report", kReportBegin},
                                            {"the report", "--html", kReportBegin}}};
constexpr std::string_view kOutcomeKey = R"("outcome":)";

const KindRow& RowOf(OutputKind kind) { return kKinds[static_cast<std::size_t>(kind)]; }

std::filesystem::file_type TypeOf(const std::string& path)
{
    std::error_code error;
    return std::filesystem::status(platform::StandardPath(path), error).type();
}

std::string HeadOf(const std::string& path, platform::FileResult& result)
{
    std::string head;
    result = platform::ReadPieces(path, [&](std::string_view bytes) {
        head += bytes;
        return head.size() < kHeadLength;
    });
    return head;
}

bool Holds(std::string_view text, std::string_view part) { return text.find(part) != std::string_view::npos; }

/// "17: text" with the line end that our logs have; the beginning of one may have been cut off by somebody.
bool IsLogLine(std::string_view line)
{
    const std::size_t digits = std::min(line.find_first_not_of("0123456789"), line.size());
    return digits != 0 && line.substr(digits).starts_with(": ") && line.ends_with("\r");
}

/// Also when only a part of the first line was written before the power went.
bool IsOfKind(OutputKind kind, std::string_view head)
{
    const std::string_view begin = RowOf(kind).begin;
    const std::size_t lineEnd = head.find('\n');
    const std::string_view line = head.substr(0, lineEnd);
    if (lineEnd == std::string_view::npos && line.size() < begin.size()) return begin.starts_with(line);
    if (kind == OutputKind::Log && lineEnd != std::string_view::npos && IsLogLine(line)) return true;
    if (!line.starts_with(begin)) return false;
    return kind != OutputKind::Record || lineEnd == std::string_view::npos || Holds(line, kOutcomeKey);
}

std::string TakenFor(std::string_view head)
{
    constexpr OutputKind kAll[] = {OutputKind::Record, OutputKind::Manifest, OutputKind::Journal, OutputKind::Log,
                                   OutputKind::Report};
    constexpr const char* kNames[] = {"a record", "a manifest", "a journal", "a log", "a report"};
    if (Holds(head.substr(0, 1024), "%PDF-")) return "a PDF document";
    for (const OutputKind kind : kAll)
        if (head.size() >= std::string_view(RowOf(kind).begin).size() && IsOfKind(kind, head))
            return kNames[static_cast<std::size_t>(kind)];
    const bool text = std::none_of(head.begin(), head.end(), [](char byte) {
        return static_cast<unsigned char>(byte) < ' ' &&
               std::string_view("\t\r\n\f").find(byte) == std::string_view::npos;
    });
    return text ? "a text of another kind" : "a file of another kind";
}

std::string WayOut(const std::string& option)
{
    return "Name another file with " + option + ", or move this one away.";
}

/// What is wrong with writing to what is no regular file.
std::string TypeProblem(OutputKind kind, const std::string& path)
{
    using std::filesystem::file_type;
    const std::string what = RowOf(kind).what;
    switch (TypeOf(path)) {
        case file_type::directory:
            return path + " is a folder; " + what + " is a file. Name a file in it with " + RowOf(kind).option + '.';
        case file_type::character:
            if (kind == OutputKind::Record || kind == OutputKind::Log) return {};
            break;
        case file_type::fifo:
            if (kind == OutputKind::Record) return {};
            break;
        case file_type::block:
        case file_type::socket:
            break;
        default:
            return {};
    }
    return path + " is a device or a pipe; " + what + " needs a regular file. Name one with " + RowOf(kind).option +
           '.';
}

std::string ContentProblem(OutputKind kind, const std::string& path)
{
    if (TypeOf(path) != std::filesystem::file_type::regular) return TypeProblem(kind, path);
    platform::FileResult read;
    const std::string head = HeadOf(path, read);
    const KindRow& row = RowOf(kind);
    if (!read)
        return path + " cannot be read (" + platform::ErrorText(read.errorNumber) +
               "), so that nobody knows whether " + row.what + " may take its place. " + WayOut(row.option);
    if (head.empty() || IsOfKind(kind, head)) return {};
    return path + " is " + TakenFor(head) + " and would be lost or spoiled as " + row.what + ". " +
           WayOut(row.option);
}

/// The folder by where it really is.
std::string ResolvedName(const std::string& path)
{
    const PathParts parts = SplitPath(path);
    const std::string folder = platform::CanonicalPath(parts.folder.empty() ? "." : parts.folder);
    return (folder.empty() ? parts.folder : WithTrailingSeparator(folder)) + path.substr(parts.folder.size());
}

bool IsSamePlace(const std::string& one, const std::string& other)
{
    const auto first = platform::StampOf(one), second = platform::StampOf(other);
    if (first && second) return first->IsSameFile(*second);
    return !first && !second && ResolvedName(one) == ResolvedName(other);
}

}  // namespace

bool IsDevice(const std::string& path) { return TypeOf(path) == std::filesystem::file_type::character; }

void COutputGuard::AddOutput(OutputKind kind, const std::string& path)
{
    if (!path.empty())
        m_files.push_back({RowOf(kind).what, RowOf(kind).option, path, kind, true, platform::FileSize(path)});
}

void COutputGuard::AddNeeded(const std::string& what, const std::string& path)
{
    if (!path.empty()) m_files.push_back({.what = what, .option = {}, .path = path});
}

void COutputGuard::AddNeeded(const WorkDescription& work)
{
    for (const WorkFile& file : work.files) AddNeeded("the " + file.name, file.path);
}

std::string COutputGuard::ClashProblem(const Named& output, const Named& other)
{
    return output.path + " is named for " + output.what + ", but it is " + other.what + " of this run" +
           (output.path == other.path ? "" : " (" + other.path + ")") + ". Name another file with " + output.option +
           '.';
}

std::string COutputGuard::Problem() const
{
    for (const Named& output : m_files) {
        if (!output.output || IsDevice(output.path)) continue;
        for (const Named& other : m_files)
            if (&other != &output && IsSamePlace(output.path, other.path)) return ClashProblem(output, other);
    }
    for (const Named& output : m_files)
        if (output.output)
            if (std::string problem = ContentProblem(output.kind, output.path); !problem.empty()) return problem;
    return {};
}

std::string COutputGuard::ProblemWithInput(const PlannedFile& input) const
{
    for (const Named& output : m_files) {
        if (!output.output) continue;
        // Asking the system about every one of very many inputs takes long.
        const bool mayBe = output.size == input.size || input.path.ends_with(FileName(output.path));
        if (mayBe && IsSamePlace(output.path, input.path))
            return ClashProblem(output, {.what = "an input", .option = {}, .path = input.path});
    }
    return {};
}

bool COutputGuard::IsOutput(const std::string& path) const
{
    return std::ranges::any_of(m_files,
                               [&](const Named& file) { return file.output && IsSamePlace(file.path, path); });
}
