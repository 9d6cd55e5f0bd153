#include "sequence/OutputSettings.h"

#include "hostapi/HostConstants.h"
#include "sequence/Sequence.h"

OutputSettings OutputSettings::Read(CCabView output)
{
    OutputSettings settings;
    settings.kind = output.Int("FileVariation", kOutputFolder);
    if (output.Bool("AddToBaseName", false)) {
        settings.insertBefore = output.StringOrText("InsertBeforeBaseName").value_or("");
        settings.insertAfter = output.StringOrText("InsertAfterBaseName").value_or("");
    }
    settings.dontOverwrite = output.Bool("DontOverwrite", true);
    settings.optimizePdf = output.Bool("OptimizePDF", true);
    settings.runPdfOptimizer = output.Bool("RunPDFOptimizer", false);
    if (auto handler = output.StringOrText("HandlerUniqueID"); handler && !handler->empty())
        settings.handlerId = std::move(handler);
    settings.selectedFolder = PathEntry(output, "PreselectedFolderPath");
    return settings;
}

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
