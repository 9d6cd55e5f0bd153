#include "engine/SaveStepRedirection.h"

#include "base/PathNames.h"
#include "base/Unicode.h"
#include "common/Log.h"
#include "engine/ExecutorSettings.h"
#include "engine/InputOpening.h"
#include "engine/InputState.h"
#include "hostapi/HostConstants.h"
#include "hostcalls/HostPath.h"
#include "platform/Files.h"
#include "platform/NarrowText.h"
#include "sequence/Keys.h"
#include "sequence/Sequence.h"

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
