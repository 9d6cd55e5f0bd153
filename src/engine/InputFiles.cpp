#include "engine/InputFiles.h"

#include "common/Log.h"
#include "engine/SaveStepRedirection.h"
#include "hostcalls/Application.h"
#include "platform/Files.h"
#include "sequence/OutputSettings.h"
#include "sequence/Sequence.h"

namespace {

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

Paths Places(const ExecutorSettings& settings, CSequenceInput input, const std::vector<std::string>& extensions,
             CLogWriter& log)
{
    const int kind = input.Kind();
    auto places = AlternativePlaces(settings, kind, log);
    if (!places.empty()) return places;
    return OwnPlaces(kind, input, extensions, log);
}

/// The folders that a run writes to, as far as they are known before it.
std::vector<std::string> WrittenFolders(const ExecutorSettings& settings, CCabView output)
{
    std::vector<std::string> folders = settings.furtherOutputPaths;
    if (!settings.alternativeOutputPath.empty()) {
        folders.push_back(settings.alternativeOutputPath);
        return folders;
    }
    const OutputSettings own = OutputSettings::Read(output);
    // A sequence that names a destination is sent into the folder of each input.
    const bool redirected = own.namesDestination && GetHostVersion().major >= kFirstMajorWithSaveStep;
    const bool used = own.kind == kOutputFolder || own.kind == kOutputAskUser;
    if (own.selectedFolder && used && !redirected) folders.push_back(*own.selectedFolder);
    return folders;
}

}  // namespace

Expected<CInputCollector> CollectInputFiles(const ExecutorSettings& settings, const CSequence& sequence,
                                            std::vector<std::string> extensions, CLogWriter& log)
{
    const Paths places = Places(settings, sequence.Input(), extensions, log);
    if (!places) return Failure(places.Error());
    CInputCollector collector({.extensions = std::move(extensions),
                               .subfolders = !settings.noSubfolders,
                               .leftOut = WrittenFolders(settings, sequence.Output())});
    for (const std::string& place : *places) collector.AddPath(place);
    for (const UnreadableFolder& folder : collector.Unreadable())
        log.NameValue("Folder cannot be read", folder.path + " (" + platform::ErrorText(folder.errorNumber) + ")", 1);
    for (const std::string& folder : collector.LeftOut())
        log.NameValue("Folder is left out of the input because results go there", folder, 1);
    return collector;
}

std::vector<std::string> ListedFolders(CSequenceInput input)
{
    const bool listed = input.Kind() == kInputFolder && !input.NamesFolder();
    return listed ? input.Listed() : std::vector<std::string>();
}

void LogInputPlaces(const ExecutorSettings& settings, CSequenceInput input, CLogWriter& log)
{
    const int kind = input.Kind();
    if (!AlternativePlaces(settings, kind, log).empty()) return;
    if (kind != kInputAskUser) (void)OwnPlaces(kind, input, {}, log);
}

std::optional<RunInput> CCollectedInputs::Next()
{
    if (m_next == m_collector.Paths().Size()) return std::nullopt;
    RunInput input{.path = m_collector.Paths().Path(m_next)};
    input.number = static_cast<int>(++m_next);
    return input;
}
