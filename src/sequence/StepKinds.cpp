#include "sequence/StepKinds.h"

#include "hostcalls/Commands.h"

#include <algorithm>
#include <iterator>

namespace {

constexpr std::string_view kOwnPrefix = "QLNX_Ferrule";

constexpr std::string_view kHostPrefixes[] = {
    "AccCheck:", "Adobe:", "Annots:", "CALS:", "COMP:", "Cpt:", "DIGSIG:", "Scan:"};

constexpr std::string_view kHostNames[] = {"AccessibilityCheck",
                                           "AddFileAttachment",
                                           "ApplyRedactionsCmd",
                                           "AttachFilesCmd",
                                           "BackgroundCmd",
                                           "BatesCmd",
                                           "CALS_PREFLIGHT_CMD",
                                           "CreateAllThumbs",
                                           "CropPages",
                                           "DeleteAll",
                                           "DeleteAllThumbs",
                                           "DeletePages",
                                           "DocSecurity",
                                           "ExamineDocCmd",
                                           "ExtractAsJpeg",
                                           "ExtractAsPng",
                                           "ExtractAsTiff",
                                           "FindsFormFields",
                                           "FlattenLayers",
                                           "FlattenOCGs",
                                           "GeneralInfo",
                                           "HeadFootCmd",
                                           "ImportAsLayer",
                                           "InsertPages",
                                           "JavaScript",
                                           "MakeAccessible",
                                           "NumberPages",
                                           "OpenInfo",
                                           "OptContImport",
                                           "OptimizeScan",
                                           "PagesApp",
                                           "PaperCapture",
                                           "Print",
                                           "RemoveBackgroundCmd",
                                           "RemoveBatesCmd",
                                           "RemoveHeadFootCmd",
                                           "RemoveHiddenInfo",
                                           "RemoveWatermarkCmd",
                                           "RotatePages",
                                           "SanitizeDocument",
                                           "SearchAndRedactCmd",
                                           "SetAlternateText",
                                           "SetReadingLanguage",
                                           "SetTabOrder",
                                           "SpaceAuditAgent",
                                           "SpaceReductionAgent",
                                           "Summarize",
                                           "UpdateBackgroundCmd",
                                           "UpdateHeadFootCmd",
                                           "UpdateWatermarkCmd",
                                           "VirusCheck",
                                           "WatermarkCmd",
                                           "WorkflowPlaybackSaveFiles"};
static_assert(std::is_sorted(std::begin(kHostNames), std::end(kHostNames)));

}  // namespace

bool IsOwnStep(std::string_view handlerName) { return handlerName.starts_with(kOwnPrefix); }

bool IsHostStep(std::string_view handlerName)
{
    return std::binary_search(std::begin(kHostNames), std::end(kHostNames), handlerName) ||
           std::any_of(std::begin(kHostPrefixes), std::end(kHostPrefixes),
                       [&](std::string_view prefix) { return handlerName.starts_with(prefix); });
}

bool IsForeignStep(std::string_view handlerName) { return !IsOwnStep(handlerName) && !IsHostStep(handlerName); }

bool IsCatalogStep(std::string_view handlerName)
{
    return handlerName == "QLNX_FerrulePurgeIndexCommand" || handlerName == "QLNX_FerruleRebuildIndexCommand";
}

bool IsReportingStep(std::string_view handlerName) { return handlerName == "QLNX_FerruleSearchAndCopyCommand"; }

bool IsSaveStep(std::string_view handlerName) { return handlerName == "WorkflowPlaybackSaveFiles"; }

bool IsScriptStep(std::string_view handlerName) { return handlerName == "JavaScript"; }

bool IsProtectingStep(std::string_view handlerName)
{
    return handlerName == "QLNX_FerrulePasswordProtectCommand" || handlerName == "DocSecurity";
}

bool MayBeTried(std::string_view handlerName)
{
    return !IsForeignStep(handlerName) && !IsCatalogStep(handlerName) && !IsReportingStep(handlerName);
}

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

std::optional<std::string> AvailableHandler(const std::string& name)
{
    if (FindCommandHandler(name)) return name;
    const auto alternative = AlternativeHandler(name);
    return alternative && FindCommandHandler(*alternative) ? alternative : std::nullopt;
}
