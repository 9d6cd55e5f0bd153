#include "engine/SaveStepFacts.h"

#include "base/PathNames.h"
#include "engine/InputOpening.h"
#include "engine/InputState.h"
#include "engine/PathEntry.h"
#include "engine/SaveStepRedirection.h"
#include "hostapi/HostConstants.h"

SaveStepFacts SaveStepFacts::Read(CCabView params)
{
    SaveStepFacts save;
    save.namesDestination = params.Known(kSaveDestinationKey);
    if (params.StringOrText(kSaveDestinationKey).value_or("") == kSaveInAFolder)
        save.folder = PathEntry(params, "PreselectedFolderPath");
    if (params.Bool("AddToBaseName", false)) {
        save.before = params.StringOrText("InsertBeforeBaseName").value_or("");
        save.after = params.StringOrText("InsertAfterBaseName").value_or("");
    }
    save.converterId = params.StringOrText("HandlerUniqueID").value_or("");
    if (save.converterId == PDF_FILEFILTERREC_UNIQUEID) save.converterId.clear();
    save.dontOverwrite = params.Bool("DontOverwrite", true);
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

bool MayReplaceInput(const SaveStepFacts& save, const std::string& documentFile, const std::string& inputPath)
{
    if (save.SavesWhereDocumentIs()) return IsPdfPath(inputPath) && IsSameFile(documentFile, inputPath);
    if (save.dontOverwrite || !save.before.empty() || !save.after.empty()) return false;
    return IsSameFolder(save.folder ? *save.folder : FolderOf(documentFile), FolderOf(inputPath));
}
