#include "sequence/OutputSettings.h"

#include <utility>

#include "hostapi/HostConstants.h"
#include "hostcalls/Cab.h"
#include "hostcalls/HostFrame.h"
#include "hostcalls/HostPath.h"
#include "sequence/Keys.h"
#include "sequence/Sequence.h"

namespace {

Expected<std::string> DIFolder(const std::string& folder)
{
    std::string path;
    if (const auto error = CatchHostError([&] { path = CHostPath::FromNative(folder).ToDIPath(); }))
        return Failure("The folder " + folder + " cannot be named in a sequence: " + error->text);
    return path.ends_with('/') ? path : path + '/';
}

const char* DestinationWord(int kind)
{
    switch (kind) {
        case kOutputInputFolder:
            return kSaveWhereDocumentIs;
        case kOutputAskUser:
            return kSaveAsked;
        case kOutputFolder:
            return kSaveInAFolder;
        default:
            return nullptr;
    }
}

WorkflowCommand EmptySaveStep() { return {kSaveStepHandler, "Save", {}, "", ""}; }

}  // namespace

OutputSettings OutputSettings::Read(CCabView output)
{
    OutputSettings settings;
    settings.kind = output.Int(kFileVariationKey, kOutputFolder);
    settings.namesDestination = output.Known(kSaveDestinationKey);
    if (output.Bool(kAddToBaseNameKey, false)) {
        settings.insertBefore = output.StringOrText(kInsertBeforeKey).value_or("");
        settings.insertAfter = output.StringOrText(kInsertAfterKey).value_or("");
    }
    settings.dontOverwrite = output.Bool(kDontOverwriteKey, true);
    settings.optimizePdf = output.Bool(kOptimizePdfKey, true);
    settings.runPdfOptimizer = output.Bool(kRunOptimizerKey, false);
    settings.optimizerPreset = output.StringOrText(kPresetNameKey).value_or("");
    settings.embedIndex = output.Bool(kEmbedIndexKey, false);
    settings.numberFiles = output.Bool(kNumericNamingKey, false);
    if (auto handler = output.StringOrText(kConverterKey); handler && !handler->empty())
        settings.handlerId = std::move(handler);
    settings.selectedFolder = PathEntry(output, kFolderKey);
    return settings;
}

bool OutputSettings::ReplacesInput() const
{
    return !dontOverwrite && insertBefore.empty() && insertAfter.empty() && !handlerId;
}

CCab MakeNoOutput()
{
    CCab output;
    output.PutInt(kFileVariationKey, kOutputNone);
    return output;
}

SaveStepFacts SaveStepFacts::Read(CCabView params)
{
    OutputSettings settings = OutputSettings::Read(params);
    SaveStepFacts save;
    save.namesDestination = settings.namesDestination;
    if (params.StringOrText(kSaveDestinationKey).value_or("") == kSaveInAFolder)
        save.folder = std::move(settings.selectedFolder);
    save.before = std::move(settings.insertBefore);
    save.after = std::move(settings.insertAfter);
    save.converterId = settings.handlerId.value_or("");
    if (save.converterId == PDF_FILEFILTERREC_UNIQUEID) save.converterId.clear();
    save.dontOverwrite = settings.dontOverwrite;
    return save;
}

bool SaveStepFacts::SavesWhereDocumentIs() const
{
    return before.empty() && after.empty() && converterId.empty() && !folder;
}

bool SavesInPlace(const SaveStepFacts& save, int hostMajor)
{
    const bool redirected = save.namesDestination && hostMajor >= kFirstMajorWithSaveStep;
    return save.SavesWhereDocumentIs() && !redirected;
}

Expected<WorkflowCommand> MakeSaveStep(const SaveStepWishes& wishes)
{
    WorkflowCommand command = EmptySaveStep();
    CSettingsRecord& items = command.parameters;
    items.PutBool(kAddToBaseNameKey, !wishes.prefix.empty() || !wishes.suffix.empty());
    items.PutString(kSaveDestinationKey, wishes.folder.empty() ? kSaveWhereDocumentIs : kSaveInAFolder);
    items.PutBool(kDontOverwriteKey, !wishes.overwrite);
    items.PutBool(kEmbedIndexKey, false);
    items.PutInt(kFileVariationKey, 0);
    items.PutBool(kHandleOutputKey, true);
    if (!wishes.converter.empty()) items.PutString(kConverterKey, wishes.converter);
    items.PutWide(kInsertAfterKey, wishes.suffix);
    items.PutWide(kInsertBeforeKey, wishes.prefix);
    items.PutBool(kNumericNamingKey, false);
    items.PutBool(kOptimizePdfKey, wishes.optimize);
    items.PutBool(kRunOptimizerKey, false);
    if (wishes.folder.empty()) return command;
    const auto path = DIFolder(wishes.folder);
    if (!path) return Failure(path.Error());
    items.PutWide(kFolderKey, *path);
    return command;
}

std::optional<WorkflowCommand> SaveStepFromOutput(CCabView output)
{
    const char* const destination = DestinationWord(OutputSettings::Read(output).kind);
    if (!destination) return std::nullopt;
    WorkflowCommand command = EmptySaveStep();
    CSettingsRecord& items = command.parameters;
    items = RecordFromCab(output);
    items.Erase(kFolderKey);
    items.PutString(kSaveDestinationKey, destination);
    if (std::string folder = DIPathEntry(output, kFolderKey); !folder.empty())
        items.PutWide(kFolderKey, folder.ends_with('/') ? folder : folder + '/');
    return command;
}
