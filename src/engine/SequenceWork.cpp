#include "engine/SequenceWork.h"

#include <set>

#include "common/Log.h"
#include "engine/CommandList.h"
#include "engine/SequencePlanning.h"
#include "hostcalls/Application.h"
#include "hostcalls/Conversions.h"
#include "sequence/OutputSettings.h"
#include "sequence/SequenceFile.h"

namespace {

// What a sequence takes as input: which files of a folder, and from where.

constexpr int kMostFormats = 100;

void Append(std::vector<std::string>& extensions, const ToPdfConverter& converter)
{
    extensions.insert(extensions.end(), converter.extensions.begin(), converter.extensions.end());
}

std::vector<std::string> AllExtensions()
{
    std::vector<std::string> extensions{"pdf"};
    for (const ToPdfConverter& converter : EnumerateToPdf()) Append(extensions, converter);
    return extensions;
}

std::set<std::string> ListedHandlers(CCabView formats)
{
    std::set<std::string> handlers;
    for (int index = 0; index < kMostFormats; ++index) {
        auto handler = formats.StringOrText(CabKey(index).c_str());
        if (!handler) break;
        handlers.insert(std::move(*handler));
    }
    return handlers;
}

std::vector<std::string> ListedExtensions(CCabView formats, CLogWriter& log)
{
    const std::set<std::string> listed = ListedHandlers(formats);
    std::vector<std::string> extensions{"pdf"};
    bool anyHandler = false;
    log.Line("\tEnumerating PDF converters.");
    for (const ToPdfConverter& converter : EnumerateToPdf()) {
        if (!listed.contains(converter.uniqueId)) continue;
        anyHandler = true;
        for (const std::string& extension : converter.extensions)
            log.NameValue("ALLOWED FILE EXTENSION", extension, 1);
        log.NameValue("ALLOWED FILE TYPE HANDLERS", converter.uniqueId, 1);
        Append(extensions, converter);
    }
    if (extensions.size() == 1) log.Line("\tWARNING: No other file types are allowed.");
    if (!anyHandler) log.Line("\tWARNING: List of allowed PDF converters is empty.");
    return extensions;
}

using Paths = Expected<std::vector<std::string>>;

/// One place or several, to be collected from.
Paths PreselectedFiles(CSequenceInput input, CLogWriter& log)
{
    std::vector<std::string> paths = input.Listed();
    if (!paths.empty()) return paths;
    constexpr char kNone[] = "No pre-selected file paths available";
    log.Line(kNone);
    return Failure(kNone);
}

Paths PreselectedFolder(CSequenceInput input, CLogWriter& log)
{
    constexpr char kNone[] = "No pre-selected folder/file paths available";
    const auto folder = input.Folder();
    if (folder) {
        log.NameValue("Source folder path", *folder, 1);
        return std::vector{*folder};
    }
    if (input.NamesFolder()) log.Line("Missing DI in pre-selected folder path");
    log.Line(kNone);
    return Failure(kNone);
}

Paths AskUser(const std::vector<std::string>& extensions, CLogWriter& log)
{
    log.Line("Prompting user for the input document.");
    auto paths = OpenFilesDialog({{"Input documents", extensions}});
    if (!paths) return Failure("No input document was chosen.");
    return std::move(*paths);
}

Paths OwnPlaces(int kind, CSequenceInput input, const std::vector<std::string>& extensions, CLogWriter& log)
{
    switch (kind) {
        case kInputFiles:
            return PreselectedFiles(input, log);
        case kInputFolder:
            return PreselectedFolder(input, log);
        case kInputAskUser:
            return AskUser(extensions, log);
        default:
            log.NameNumber("ERROR: Unknown input option", kind, 1);
            return Failure("ERROR: Unknown input option");
    }
}

/// The places that stand in for those of the sequence; none when nothing does.
std::vector<std::string> AlternativePlaces(const ExecutorSettings& settings, int kind, CLogWriter& log)
{
    std::vector<std::string> places = settings.furtherInputPaths;
    if (!settings.alternativeInputPath.empty()) places.insert(places.begin(), settings.alternativeInputPath);
    for (const std::string& place : places)
        log.NameValue(kind == kInputFolder ? "Alternative source folder path" : "Source file path", place, 1);
    return places;
}

/// "pdf" and the extensions of the converters that the sequence's input part lists (of all converters when it lists
/// none), without dots. Throws CHostException.
std::vector<std::string> AcceptedExtensions(CSequenceInput input, CLogWriter& log)
{
    if (!input.SourceOptions()) {
        log.Line("Allowing all input file types.");
        return AllExtensions();
    }
    const CCabView formats = input.Formats();
    if (!formats) {
        log.Line("\tNo <Format> section is found in SEQU file. Allowing all input file types.");
        return AllExtensions();
    }
    return ListedExtensions(formats, log);
}

/// The places of the settings, or else those of the sequence; see CWork::InputPlaces. Throws CHostException.
Paths SequencePlaces(const ExecutorSettings& settings, CSequenceInput input,
                     const std::vector<std::string>& extensions, Asking asking, CLogWriter& log)
{
    const int kind = input.Kind();
    auto places = AlternativePlaces(settings, kind, log);
    if (!places.empty()) return places;
    if (kind == kInputAskUser && asking == Asking::Unwanted) return std::vector<std::string>();
    return OwnPlaces(kind, input, extensions, log);
}

constexpr int kFirstSupportedMajor = 6;

}  // namespace

std::string CSequenceWork::Load(CLogWriter& log)
{
    if (!m_sequence) {
        Expected<CSequence> loaded = LoadSequenceFile(m_path, log);
        if (!loaded) return loaded.Error();
        m_sequence = std::move(*loaded);
    }
    log.NameValue("Processing batch sequence", m_path, 1);
    return {};
}

std::string CSequenceWork::Refusal(CLogWriter& log)
{
    std::string problem;
    if (GetHostVersion().major < kFirstSupportedMajor) {
        problem = "Sequences need a host of version " + std::to_string(kFirstSupportedMajor) + " or later.";
    } else if (!m_sequence->IsComplete()) {
        problem = "The sequence lacks its commands, its input or its output part.";
    }
    if (problem.empty()) {
        log.Line("Sequence information has been successfully loaded.");
    } else {
        log.NameValue("Sequence is rejected", problem, 1);
    }
    return problem;
}

std::vector<std::string> CSequenceWork::Extensions(CLogWriter& log) const
{
    return AcceptedExtensions(m_sequence->Input(), log);
}

std::string CSequenceWork::InputPlaces(const ExecutorSettings& settings, const std::vector<std::string>& extensions,
                                       Asking asking, CLogWriter& log, const TakePlace& take) const
{
    const Paths places = SequencePlaces(settings, m_sequence->Input(), extensions, asking, log);
    if (!places) return places.Error();
    if (take) std::ranges::for_each(*places, take);
    return {};
}

std::vector<std::string> CSequenceWork::FurtherInputPlaces() const
{
    const CSequenceInput input = m_sequence->Input();
    const bool listed = input.Kind() == kInputFolder && !input.NamesFolder();
    return listed ? input.Listed() : std::vector<std::string>();
}

std::vector<std::string> CSequenceWork::OwnOutputFolders() const
{
    const OutputSettings output = OutputSettings::Read(m_sequence->Output());
    // A sequence that names a destination is sent into the folder of each input.
    const bool redirected = output.namesDestination && GetHostVersion().major >= kFirstMajorWithSaveStep;
    const bool used = output.kind == kOutputFolder || output.kind == kOutputAskUser;
    std::vector<std::string> folders;
    if (output.selectedFolder && used && !redirected) folders.push_back(*output.selectedFolder);
    for (const StepFacts& step : ReadSequenceFacts(*m_sequence, GetHostVersion().major).steps)
        if (step.available)
            for (const CopyPlace& copy : step.copies) folders.push_back(copy.folder);
    return folders;
}

WorkFacts CSequenceWork::Facts(const PlanRequest& request) const
{
    WorkFacts facts = FactsOfSequence(ReadSequenceFacts(*m_sequence, GetHostVersion().major), request);
    facts.errors = SequenceErrors(m_path, request);
    return facts;
}

void CSequenceWork::Begin(const WorkServices& services)
{
    m_run.emplace(RunContext{services.settings, *m_sequence, services.log, services.progress, m_commands,
                             services.logsForWholeRun, GetHostVersion().major, services.fileCount, false});
}

ProcessedFile CSequenceWork::Process(const std::string& path, int number)
{
    CFileRun fileRun(*m_run, path, number);
    ProcessedFile file = fileRun.Process();
    m_stopReason = fileRun.StopReason();
    return file;
}

void CSequenceWork::Finish() { PostflightSequence(m_commands, m_run->log); }
