#include "engine/OutputSettings.h"

#include "engine/PathEntry.h"

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
