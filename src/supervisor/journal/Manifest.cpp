#include "supervisor/journal/Manifest.h"

#include <utility>

#include "base/Names.h"
#include "platform/Files.h"
#include "protocol/Json.h"

namespace {

/// 1 had the job as environment variables, 2 could plan sequences only, 3 did not say what the run can reach.
constexpr int kVersion = 4;
constexpr std::size_t kCopyPiece = 1 << 16;

std::string HeaderLine(const ManifestHeader& header)
{
    const Json object = {{"ferrule", "manifest"},
                         {"version", kVersion},
                         {"job", RunOrderJson(header.order)},
                         {"total", header.total},
                         {"bytes", header.bytes},
                         {"oneWorker", header.oneWorker},
                         {"oneWorkerReason", header.oneWorkerReason},
                         {"unreadableFolders", header.unreadableFolders},
                         {"outputsPerFile", header.outputsPerFile},
                         {"reports", header.reports},
                         {"startsPrograms", header.startsPrograms},
                         {"movesInputs", header.movesInputs},
                         {"reach", RunReachJson(header.reach)},
                         {"workSha256", header.workHashes},
                         {"preamble", TextsOf(header.preamble)},
                         {"epilogue", TextsOf(header.epilogue)}};
    return LineOf(object) + '\n';
}

std::optional<ManifestHeader> HeaderFrom(const std::string& line)
{
    const auto object = ParseObject(line);
    if (!object || TextAt(*object, "ferrule") != "manifest" || CountAt(*object, "version") != kVersion)
        return std::nullopt;
    const auto order = RunOrderFrom(ObjectAt(*object, "job"));
    if (!order || order->run.empty()) return std::nullopt;
    ManifestHeader header{
        .order = *order,
        .total = CountAt(*object, "total"),
        .bytes = UnsignedAt(*object, "bytes"),
        .oneWorker = FlagAt(*object, "oneWorker"),
        .oneWorkerReason = TextAt(*object, "oneWorkerReason"),
        .unreadableFolders = CountAt(*object, "unreadableFolders"),
        .reports = FlagAt(*object, "reports"),
        .startsPrograms = FlagAt(*object, "startsPrograms", true),
        .movesInputs = FlagAt(*object, "movesInputs"),
        .reach = RunReachFrom(ObjectAt(*object, "reach")),
        .outputsPerFile = object->contains("outputsPerFile") ? CountAt(*object, "outputsPerFile") : 1,
        .workHashes = TextsAt(*object, "workSha256"),
        .preamble = BytesListAt(*object, "preamble"),
        .epilogue = BytesListAt(*object, "epilogue")};
    return header;
}

}  // namespace

std::string ManifestIn(const std::string& folder) { return WithTrailingSeparator(folder) + "manifest.jsonl"; }

CManifestWriter::CManifestWriter(std::string path)
    : m_path(std::move(path)), m_lines(m_path, platform::Existing::Replace)
{
}

void CManifestWriter::Add(const PlannedFile& file)
{
    const std::string line = PlannedFileLine(file) + '\n';
    m_lines.Write(line.data(), line.size());
}

platform::FileResult CManifestWriter::Finish(const ManifestHeader& header)
{
    if (const platform::FileResult complete = m_lines.Complete(); !complete) return complete;
    platform::FileResult opened;
    const platform::Stream lines = platform::OpenStream(m_lines.TemporaryPath(), "rb", &opened);
    if (!lines) return opened;
    platform::CAtomicFile file(m_path, platform::Existing::Replace);
    const std::string first = HeaderLine(header);
    file.Write(first.data(), first.size());
    std::string piece(kCopyPiece, '\0');
    while (file.Result()) {
        const std::size_t count = std::fread(piece.data(), 1, piece.size(), lines.get());
        if (count == 0) break;
        file.Write(piece.data(), count);
    }
    if (std::ferror(lines.get()) != 0) return platform::Failure(platform::FileProblem::Other);
    return file.Commit();
}

Expected<ManifestHeader> CManifestReader::Open(const std::string& path)
{
    m_path = path;
    if (!m_reader.Open(path)) return Failure("The manifest " + path + " cannot be opened.");
    const auto header = m_reader.Next(m_line) ? HeaderFrom(m_line) : std::nullopt;
    if (!header) return Failure(HeaderProblem(path, "manifest", kVersion, m_line));
    m_total = header->total;
    return *header;
}

std::optional<PlannedFile> CManifestReader::Next()
{
    if (!m_problem.empty() || m_last == m_total) return std::nullopt;
    const bool read = m_reader.Next(m_line);
    const auto object = read ? ParseObject(m_line) : std::nullopt;
    auto file = object ? PlannedFileFrom(*object) : std::nullopt;
    if (file && file->number == m_last + 1) {
        m_last = file->number;
        return file;
    }
    m_problem = read ? "Line " + std::to_string(m_reader.LineNumber()) + " of the manifest " + m_path +
                           " is not the file that belongs there."
                     : "The manifest " + m_path + " ends before file " + std::to_string(m_last + 1) + ".";
    return std::nullopt;
}
