#include "engine/OutputSaving.h"

#include "common/FileNames.h"
#include "common/Log.h"
#include "engine/InputOpening.h"
#include "hostapi/HostConstants.h"
#include "hostcalls/Application.h"
#include "hostcalls/Conversions.h"
#include "hostcalls/HostFrame.h"
#include "platform/Files.h"

#include <utility>

namespace {

constexpr int kOptimizingSave = PDSaveFull | PDSaveLinearized;

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

bool IsSameFile(const std::string& path, const std::string& otherPath)
{
    return path == otherPath || (platform::FileExists(path) && platform::FileExists(otherPath) &&
                                 platform::CanonicalPath(path) == platform::CanonicalPath(otherPath));
}

// ---- another format

std::string ConvertedPath(const std::string& wanted, const FromPdfConverter& converter, const std::string& inputPath)
{
    const std::string path = converter.extensions.empty() ? wanted : wanted + '.' + converter.extensions.front();
    // Existing results are replaced, but a text file that was converted to PDF must not be written over by its own
    // text.
    return IsSameFile(path, inputPath) ? UniqueSpaced(path) : path;
}

bool ConvertWith(const FromPdfConverter& converter, PDDoc document, const std::string& path, CLogWriter& log)
{
    log.NameValue("Trying to convert to output file", path, 1);
    AVConversionStatus status = kAVConversionFailed;
    const auto error =
        CatchHostError([&] { status = ConvertFromPdf(converter.handler, document, path, kAVConversionNoFlags); });
    if (error) log.NameValue("File Saving Error:", error->text, 1);
    log.NameNumber("Conversion result code", status, 1);
    return !error && status == kAVConversionSuccess;
}

SaveResult SaveConverted(PDDoc document, const std::string& wanted, const std::string& handlerId,
                         const SavingInput& input, CLogWriter& log)
{
    log.NameValue("Starting conversion handler", handlerId, 1);
    bool done = false;
    for (const FromPdfConverter& converter : EnumerateFromPdf()) {
        log.NameValue("Checking conversion handler", converter.uniqueId, 1);
        if (converter.uniqueId != handlerId) continue;
        done = ConvertWith(converter, document, ConvertedPath(wanted, converter, input.path), log);
        break;
    }
    if (!done) log.NameValue("Conversion to output file format failed", handlerId, 1);
    log.NameValue("Conversion status", done ? "Completed" : "Failed", 1);
    if (done) return {SaveStatus::Saved, {}};
    return {SaveStatus::ConversionFailed, "The conversion to the output format " + handlerId + " failed."};
}

// ---- PDF

SaveResult CopyUnchanged(const char* restriction, const std::string& outputPath, const OutputSettings& settings,
                         const SavingInput& input, CLogWriter& log)
{
    log.NameValue("Warning", restriction, 1);
    const auto existing = settings.dontOverwrite ? platform::Existing::Fail : platform::Existing::Replace;
    platform::FileResult copied{.errorNumber = 0};
    const bool possible = IsPdfPath(input.path) && !IsSameFile(input.path, outputPath);
    if (possible) copied = platform::CopyFile(input.path, outputPath, existing);
    if (possible && copied) {
        log.NameValue("File has been copied to the output location", outputPath, 1);
        return {SaveStatus::CopiedUnchanged, std::string(restriction) + "; the output is a copy of the input."};
    }
    log.NameValue("Attempt to copy file to the output location failed", outputPath, 1);
    const std::string reason = copied ? "" : " (" + platform::ErrorText(copied.errorNumber) + ")";
    return {SaveStatus::Failed,
            std::string(restriction) + ", and the input cannot be copied to " + outputPath + reason + "."};
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
    if (exists) return {SaveStatus::Saved, {}};
    return {SaveStatus::Failed, "The output file " + outputPath + " was not written."};
}

SaveResult SavePdf(CAcrobatDoc& document, const std::string& outputPath, const OutputSettings& settings,
                   const SavingInput& input, CLogWriter& log)
{
    const bool fullSave = settings.optimizePdf || !IsSameFile(outputPath, input.path);
    if (const char* restriction = Restriction(input.permissions, fullSave))
        return CopyUnchanged(restriction, outputPath, settings, input, log);
    log.NameValue("Saving output file:", outputPath, 1);
    const auto error = CatchHostError(
        [&] { document.SaveTo(outputPath, settings.optimizePdf ? kOptimizingSave : PDSaveIncremental); });
    if (!error) return CheckSaved(outputPath, log);
    log.NameValue("File Saving Error:", error->text, 1);
    return {SaveStatus::Failed, "The output file " + outputPath + " cannot be saved: " + error->text};
}

}  // namespace

SaveResult SaveProcessed(CAcrobatDoc& document, const OutputSettings& settings, const SavingInput& input,
                         CLogWriter& log)
{
    if (settings.kind == kOutputNone) return {SaveStatus::NotWanted, {}};
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
    const std::string path = settings.dontOverwrite ? UniqueSpaced(wanted + ".pdf") : wanted + ".pdf";
    return SavePdf(document, path, settings, input, log);
}

bool SaveTemporaryFile(CAcrobatDoc& document, const std::string& inputPath, CLogWriter& log)
{
    if (Extension(document.CurrentFile()) != "tmp") return false;
    const PathParts parts = SplitPath(inputPath);
    const std::string wanted = parts.folder + parts.base + ".pdf";
    const std::string path = IsSameFile(wanted, inputPath) ? wanted : UniqueSpaced(wanted);
    log.NameValue("Saving temporary file as", path, 1);
    document.SaveTo(path, PDSaveFull);
    return true;
}
