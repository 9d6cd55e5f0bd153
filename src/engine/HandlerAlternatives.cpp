#include "engine/HandlerAlternatives.h"

namespace {

struct Alternative {
    std::string_view name, newName;
};

constexpr Alternative kAlternatives[] = {
    {"HeadFootCmd", "COMP:AddHeadFoot"},
    {"RemoveHeadFootCmd", "COMP:RemoveHeadFoot"},
    {"UpdateHeadFootCmd", "COMP:UpdateHeadFoot"},
    {"BackgroundCmd", "COMP:AddBackground"},
    {"RemoveBackgroundCmd", "COMP:RemoveBackground"},
    {"UpdateBackgroundCmd", "COMP:UpdateBackground"},
    {"WatermarkCmd", "COMP:AddWatermark"},
    {"RemoveWatermarkCmd", "COMP:RemoveWatermark"},
    {"UpdateWatermarkCmd", "COMP:UpdateWatermark"},
    {"BatesCmd", "COMP:AddBates"},
    {"RemoveBatesCmd", "COMP:RemoveBates"},
    {"PaperCapture", "Cpt:CapturePages"},
    {"CALS_PREFLIGHT_CMD", "CALS:Preflight"},
    {"FindsFormFields", "Adobe:FindsFormFields"},
    {"SanitizeDocument", "DIGSIG:SanitizeDocument"},
    {"OptimizeScan", "Scan:OPT"},
    {"ApplyRedactionsCmd", "Annots:Tool:ApplyRedactionsMenuItem"},
    {"ExamineDocCmd", "RemoveHiddenInfo"},
    {"AttachFilesCmd", "AddFileAttachment"},
    {"AccessibilityCheck", "AccCheck:DoCheck"},
    {"MakeAccessible", "Adobe:MakeAccessible"},
    {"FlattenOCGs", "FlattenLayers"},
    {"OptContImport", "ImportAsLayer"},
};

}  // namespace

std::optional<std::string> AlternativeHandler(std::string_view handlerName)
{
    for (const Alternative& alternative : kAlternatives)
        if (alternative.name == handlerName) return std::string(alternative.newName);
    return std::nullopt;
}
