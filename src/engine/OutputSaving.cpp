#include "engine/OutputSaving.h"

#include <utility>

#include "base/Names.h"
#include "base/Unicode.h"
#include "common/Log.h"
#include "engine/InputOpening.h"
#include "engine/Work.h"
#include "hostapi/HostConstants.h"
#include "hostapi/HostErrors.h"
#include "hostcalls/Application.h"
#include "hostcalls/Conversions.h"
#include "hostcalls/HostFrame.h"
#include "hostcalls/HostPath.h"
#include "hostcalls/Jobs.h"
#include "platform/Files.h"
#include "platform/NarrowText.h"
#include "sequence/Keys.h"
#include "sequence/Sequence.h"

namespace {

constexpr int kOptimizingSave = PDSaveFull | PDSaveLinearized;

/// Another program may take a free name before we do; then the next free one is tried, so often at most.
constexpr int kNameAttempts = 100;

/// Nothing when there is no folder to save to.
std::optional<std::string> OutputFolder(const OutputSettings& settings, const SavingInput& input)
{
    if (settings.kind == kOutputInputFolder) return FolderOf(input.path);
    if (settings.kind != kOutputAskUser && settings.kind != kOutputFolder) return std::nullopt;
    if (input.alternativeFolder) return input.alternativeFolder;
    const auto folder = settings.kind == kOutputAskUser ? ChooseFolderDialog() : settings.selectedFolder;
    return folder ? std::optional(WithTrailingSeparator(*folder)) : std::nullopt;
}

/// A text that would lead the result out of its folder; null when both may be part of a file name.
const std::string* StrayAffix(const OutputSettings& settings)
{
    for (const std::string* affix : {&settings.insertBefore, &settings.insertAfter})
        if (FileName(*affix) != *affix) return affix;
    return nullptr;
}

std::string OutputBase(const OutputSettings& settings, const std::string& inputPath)
{
    return settings.insertBefore + SplitPath(inputPath).base + settings.insertAfter;
}

// ---- another format

std::string ConvertedPath(const std::string& wanted, const FromPdfConverter& converter, const std::string& inputPath)
{
    const std::string path = converter.extensions.empty() ? wanted : wanted + '.' + converter.extensions.front();
    // Existing results are replaced, but a text file that was converted to PDF must not be written over by its own
    // text.
    return IsSameFile(path, inputPath) ? UniqueSpaced(path, platform::NameExists) : path;
}

/// False, with the reason when the host gives one.
bool ConvertWith(const FromPdfConverter& converter, PDDoc document, const std::string& path, std::string& reason,
                 CLogWriter& log)
{
    log.NameValue("Trying to convert to output file", path, 1);
    AVConversionStatus status = kAVConversionFailed;
    const auto error =
        CatchHostError([&] { status = ConvertFromPdf(converter.handler, document, path, kAVConversionNoFlags); });
    if (error) log.NameValue("File Saving Error:", reason = error->text, 1);
    log.NameNumber("Conversion result code", status, 1);
    return !error && status == kAVConversionSuccess;
}

SaveResult SaveConverted(PDDoc document, const std::string& wanted, const std::string& handlerId,
                         const SavingInput& input, CLogWriter& log)
{
    log.NameValue("Starting conversion handler", handlerId, 1);
    bool done = false;
    std::string reason = "there is no such converter.";
    for (const FromPdfConverter& converter : EnumerateFromPdf()) {
        log.NameValue("Checking conversion handler", converter.uniqueId, 1);
        if (converter.uniqueId != handlerId) continue;
        reason.clear();
        done = ConvertWith(converter, document, ConvertedPath(wanted, converter, input.path), reason, log);
        break;
    }
    if (!done) log.NameValue("Conversion to output file format failed", handlerId, 1);
    log.NameValue("Conversion status", done ? "Completed" : "Failed", 1);
    if (done) return {SaveStatus::Saved};
    return {SaveStatus::ConversionFailed,
            "The conversion to the output format " + handlerId + " failed" + (reason.empty() ? "." : ": " + reason)};
}

// ---- PDF

/// Where the result goes now; with "don't overwrite" where nothing is.
std::string FreePath(const std::string& wanted, const OutputSettings& settings)
{
    return settings.dontOverwrite ? UniqueSpaced(wanted, platform::NameExists) : wanted;
}

platform::FileResult CopyUnderName(const std::string& inputPath, const std::string& wanted,
                                   const OutputSettings& settings, std::string& outputPath)
{
    const auto existing = settings.dontOverwrite ? platform::Existing::Fail : platform::Existing::Replace;
    for (int attempt = 1;; ++attempt) {
        const platform::FileResult copied = platform::CopyFile(inputPath, outputPath, existing);
        const bool taken = settings.dontOverwrite && platform::ProblemOf(copied) == platform::FileProblem::Exists;
        if (!taken || attempt == kNameAttempts) return copied;
        outputPath = FreePath(wanted, settings);
    }
}

SaveResult CopyUnchanged(const char* restriction, const std::string& wanted, const OutputSettings& settings,
                         const SavingInput& input, CLogWriter& log)
{
    std::string outputPath = FreePath(wanted, settings);
    log.NameValue("Saving output file:", outputPath, 1);
    log.NameValue("File Saving Error:", HostErrorText(pdErrOpNotPermitted), 1);
    log.NameValue("Warning", restriction, 1);
    platform::FileResult copied{.errorNumber = 0};
    const bool possible = IsPdfPath(input.path) && !IsSameFile(input.path, outputPath);
    if (possible) copied = CopyUnderName(input.path, wanted, settings, outputPath);
    if (possible && copied) {
        log.NameValue("File has been copied to the output location", outputPath, 1);
        return {SaveStatus::CopiedUnchanged, std::string(restriction) + "; the output is a copy of the input.",
                outputPath};
    }
    log.NameValue("Attempt to copy file to the output location failed", outputPath, 1);
    const std::string reason = copied ? "" : " (" + platform::ErrorText(copied.errorNumber) + ")";
    return {SaveStatus::Failed,
            std::string(restriction) + ", and the input cannot be copied" + reason + ": " + outputPath};
}

/// The restriction that stands in the way of a save; null when there is none.
const char* Restriction(const OpenPermissions& permissions, bool fullSave)
{
    if (!permissions.mayModify) return "Security permissions do not allow document modification";
    if (fullSave && !permissions.mayFullSave) return "Security permissions do not allow full save of this document";
    return nullptr;
}

SaveResult CheckSaved(const std::string& outputPath, CLogWriter& log)
{
    const bool exists = platform::FileExists(outputPath);
    log.Line(exists ? "Output file has been succesefully created:"  // sic
                    : "ERROR: Output file does not exists:");       // sic
    log.NameValue("Path to the document:", outputPath, 1);
    if (exists) return {SaveStatus::Saved, {}, outputPath};
    return {SaveStatus::Failed, "The output file was not written: " + outputPath};
}

/// Nothing when the document may be saved there now.
std::optional<SaveResult> Refusal(const std::string& outputPath, const SavingInput& input)
{
    if (!input.inPlaceObjection || !IsSameFile(outputPath, input.path)) return std::nullopt;
    std::string objection = input.inPlaceObjection();
    if (objection.empty()) return std::nullopt;
    return SaveResult{SaveStatus::Refused, std::move(objection)};
}

/// Answers what the host raised. A name that is taken meanwhile is passed over for the next free one.
std::optional<HostError> SaveUnderName(CAcrobatDoc& document, const std::string& wanted,
                                       const OutputSettings& settings, std::string& outputPath, CLogWriter& log)
{
    const int flags = settings.optimizePdf ? kOptimizingSave : PDSaveIncremental;
    for (int attempt = 1;; ++attempt) {
        log.NameValue("Saving output file:", outputPath, 1);
        if (settings.dontOverwrite) JobNextSaveIsNew(document.Document());
        auto error = CatchHostError([&] { document.SaveTo(outputPath, flags); });
        if (!error || !error->Is(fileErrExists) || !settings.dontOverwrite || attempt == kNameAttempts) return error;
        log.NameValue("File Saving Error:", error->text, 1);
        outputPath = FreePath(wanted, settings);
    }
}

SaveResult SavePdf(CAcrobatDoc& document, const std::string& wanted, const OutputSettings& settings,
                   const SavingInput& input, CLogWriter& log)
{
    std::string outputPath = FreePath(wanted, settings);
    const bool fullSave = settings.optimizePdf || !IsSameFile(outputPath, input.path);
    if (const char* restriction = Restriction(input.permissions, fullSave))
        return CopyUnchanged(restriction, wanted, settings, input, log);
    if (auto refused = Refusal(outputPath, input)) return std::move(*refused);
    const auto error = SaveUnderName(document, wanted, settings, outputPath, log);
    if (!error) return CheckSaved(outputPath, log);
    log.NameValue("File Saving Error:", error->text, 1);
    SaveResult failed{SaveStatus::Failed, "The output file cannot be saved: " + error->text};
    // What stood in the way may have been that somebody else replaced the input.
    if (const auto refused = Refusal(outputPath, input)) return *refused;
    return failed;
}

}  // namespace

SaveResult SaveProcessed(CAcrobatDoc& document, const OutputSettings& settings, const SavingInput& input,
                         CLogWriter& log)
{
    if (settings.kind == kOutputNone) return {SaveStatus::NotWanted};
    const auto folder = OutputFolder(settings, input);
    if (!folder) {
        log.NameNumber("No output folder is available for output option", settings.kind, 1);
        return {SaveStatus::Failed, "There is no output folder."};
    }
    if (const std::string* affix = StrayAffix(settings)) {
        log.NameValue("ERROR: The text cannot be part of an output file name", *affix, 1);
        return {SaveStatus::Failed, "The text \"" + *affix +
                                        "\" of the sequence's output part cannot be part of a "
                                        "file name."};
    }
    const std::string wanted = *folder + OutputBase(settings, input.path);
    if (settings.handlerId) return SaveConverted(document.Document(), wanted, *settings.handlerId, input, log);
    return SavePdf(document, wanted + ".pdf", settings, input, log);
}

SaveResult SaveTemporaryFile(CAcrobatDoc& document, const SavingInput& input, CLogWriter& log)
{
    if (Extension(document.CurrentFile()) != "tmp") return {SaveStatus::NotWanted};
    const PathParts parts = SplitPath(input.path);
    const std::string wanted = parts.folder + parts.base + ".pdf";
    const bool overInput = IsSameFile(wanted, input.path);
    const std::string path = overInput ? wanted : UniqueSpaced(wanted, platform::NameExists);
    if (auto refused = Refusal(path, input)) return std::move(*refused);
    log.NameValue("Saving temporary file as", path, 1);
    if (!overInput) JobNextSaveIsNew(document.Document());
    document.SaveTo(path, PDSaveFull);
    return {SaveStatus::Saved, {}, path};
}

namespace {

/// The folder as a device-independent path that ends with a slash.
std::string DIFolder(const std::string& folder)
{
    std::string path = CHostPath::FromNative(folder).ToDIPath();
    if (!path.ends_with('/')) path += '/';
    return path;
}

/// Saved sequences hold a text here; a folder name that is no text can only go as bytes of a path.
void PutFolder(CCabEditor params, const std::string& folder)
{
    const std::string path = DIFolder(folder);
    if (IsValidUtf8(platform::Utf8FromNarrow(path))) return params.PutText(kFolderKey, path);
    params.PutCab(kFolderKey, PathCab(folder));
}

}  // namespace

std::optional<std::string> AlternativeOutputFolder(const ExecutorSettings& settings)
{
    const std::string& path = settings.alternativeOutputPath;
    if (path.empty() || !(settings.insistsOnOutputPath || platform::FolderExists(path))) return std::nullopt;
    return WithTrailingSeparator(path);
}

std::string RedirectionFolder(const std::string& inputPath, const ExecutorSettings& settings)
{
    if (auto alternative = AlternativeOutputFolder(settings)) return std::move(*alternative);
    const std::string folder = FolderOf(inputPath);
    return folder.empty() ? std::string(".") + kSeparator : folder;
}

std::string RedirectSaveStep(CHostCommand& command, const std::string& folder, CLogWriter& log)
{
    CCab params = command.Params();
    if (!params.Known(kSaveDestinationKey)) return {};
    log.NameValue("Setting save path", folder, 1);
    params.PutString(kSaveDestinationKey, kSaveInAFolder);
    PutFolder(params, folder);
    if (command.SetParams(params) == kAVCommandInError) return "The save step does not take its output folder.";
    log.NameValue("Save path", PathEntry(command.Params(), kFolderKey).value_or(""), 1);
    return {};
}

void RedirectOutput(CSequence& sequence, const std::string& folder, CLogWriter& log)
{
    CCabEditor output = sequence.EditOutput();
    if (!output || !output.Known(kSaveDestinationKey)) return;
    log.NameValue("Saving to alternative path", folder, 1);
    output.PutString(kSaveDestinationKey, kSaveInAFolder);
    output.PutCab(kFolderKey, PathCab(folder));
}

bool MayReplaceInput(const SaveStepFacts& save, const std::string& documentFile, const std::string& inputPath)
{
    if (save.SavesWhereDocumentIs()) return IsPdfPath(inputPath) && IsSameFile(documentFile, inputPath);
    if (save.dontOverwrite || !save.before.empty() || !save.after.empty()) return false;
    return IsSameFolder(save.folder ? *save.folder : FolderOf(documentFile), FolderOf(inputPath));
}
