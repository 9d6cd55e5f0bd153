#include "sequence/HostSteps.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

#include "base/Text.h"
#include "hostapi/HostConstants.h"
#include "hostcalls/Cab.h"
#include "sequence/Findings.h"
#include "sequence/Keys.h"
#include "sequence/SequenceFile.h"
#include "sequence/StepChecks.h"

namespace {

constexpr std::uint32_t kAllRights = 0xFFFFFFFF;

// ---- the security step

constexpr char kCryptHandler[] = "CryptHandler";

std::string PasswordOf(CCabView settings, const char* key, const char* hasKey)
{
    return settings.Bool(hasKey, true) ? settings.StringOrText(key).value_or("") : std::string();
}

void CheckSecurityStep(const SequenceStep& step, CSequenceFindings& findings)
{
    const auto atom = step.parameters.Atom(kCryptHandler);
    const std::string handler = atom ? AtomText(*atom) : step.parameters.StringOrText(kCryptHandler).value_or("");
    if (handler.empty())
        return findings.Warning("removes-security",
                                "The step names no security handler, so it removes the protection.");
    if (handler != "Standard") return;
    const CCabView settings = step.parameters.Cab("SecuritySettings");
    if (!settings)
        return findings.Error("no-settings", "The step names a security handler but has no settings for it.");
    const int keyLength = settings.Int("keyLength", 32), revision = settings.Int("revision", 6),
              method = settings.Int("encryptMethod", 7);
    Protection protection;
    protection.openPassword = PasswordOf(settings, "userPW", "hasUserPW");
    protection.permissionsPassword = PasswordOf(settings, "ownerPW", "hasOwnerPW");
    protection.restricts = static_cast<std::uint32_t>(settings.Int("perms", -1)) != kAllRights;
    protection.isShortKey = (keyLength > 0 && keyLength < STDSEC_KEYLENGTH_RC4_V2) || revision == 2;
    protection.isRc4 = method == STDSEC_METHOD_RC4_V2 || revision == 3;
    CheckProtection(protection, findings);
    const bool aes256 = revision >= 5 || method == STDSEC_METHOD_AES_V3 || keyLength == 32;
    CheckPasswordIsTaken("open", protection.openPassword, aes256, findings);
    CheckPasswordIsTaken("permissions", protection.permissionsPassword, aes256, findings);
}

const OpenParameter kOfSecurityStep[] = {{kCryptHandler}};

// ---- the preflight step

void CheckProfile(const SequenceStep& step, CSequenceFindings& findings)
{
    constexpr char kName[] = "CALS_PREFLIGHT_CMD_PROFILE_NAME";
    if (!step.parameters.Known(kName)) return;
    findings.Note("profile-outside", "The preflight profile \"" + step.parameters.StringOrText(kName).value_or("") +
                                         "\" is not in the file; the host must have it.");
}

// ---- the steps of which more is known than their names

constexpr LocalisedParameter kMagnification[] = {{"Magnification"}};
constexpr LocalisedParameter kCropTexts[] = {{"LeftText"}, {"RightText"}, {"TopText"}, {"BottomText"}};
constexpr LocalisedParameter kPreset[] = {{kPresetNameKey, kRunOptimizerKey}};

constexpr StepDescription KnownStep(std::string_view handler, std::span<const LocalisedParameter> localised)
{
    return {.handler = handler,
            .maker = StepMaker::Host,
            .secrecy = Secrecy::WhatSoundsLikePasswords,
            .localised = localised};
}

constexpr StepDescription PreflightStep(std::string_view handler)
{
    StepDescription step = KnownStep(handler, {});
    step.check = CheckProfile;
    return step;
}

const StepDescription kDescribed[] = {{.handler = "DocSecurity",
                                       .maker = StepMaker::Host,
                                       .protects = true,
                                       .secrecy = Secrecy::TextsButOpen,
                                       .open = kOfSecurityStep,
                                       .check = CheckSecurityStep},
                                      {.handler = "JavaScript",
                                       .maker = StepMaker::Host,
                                       .script = "ScriptCode",
                                       .secrecy = Secrecy::WhatSoundsLikePasswords},
                                      {.handler = kSaveStepHandler,
                                       .maker = StepMaker::Host,
                                       .saves = true,
                                       .secrecy = Secrecy::WhatSoundsLikePasswords,
                                       .localised = kPreset},
                                      PreflightStep("CALS_PREFLIGHT_CMD"),
                                      PreflightStep("CALS:Preflight"),
                                      KnownStep("OpenInfo", kMagnification),
                                      KnownStep("CropPages", kCropTexts)};

// ---- the others

constexpr StepDescription kOther{.maker = StepMaker::Host, .secrecy = Secrecy::WhatSoundsLikePasswords};

constexpr std::string_view kPrefixes[] = {
    "AccCheck:", "Adobe:", "Annots:", "CALS:", "COMP:", "Cpt:", "DIGSIG:", "Scan:"};

constexpr std::string_view kNames[] = {"AccessibilityCheck",
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
                                       "WatermarkCmd"};
static_assert(std::is_sorted(std::begin(kNames), std::end(kNames)));

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

const StepDescription* HostStep(std::string_view handler)
{
    for (const StepDescription& step : kDescribed)
        if (step.handler == handler) return &step;
    const bool known = std::binary_search(std::begin(kNames), std::end(kNames), handler) ||
                       std::any_of(std::begin(kPrefixes), std::end(kPrefixes),
                                   [&](std::string_view prefix) { return handler.starts_with(prefix); });
    return known ? &kOther : nullptr;
}

const StepDescription* MeantHostStep(std::string_view handler)
{
    for (const StepDescription& step : kDescribed)
        if (EqualsIgnoreCaseAscii(handler, step.handler)) return &step;
    return HostStep(handler);
}

std::optional<std::string> AlternativeHandler(std::string_view handler)
{
    for (const Alternative& alternative : kAlternatives)
        if (alternative.name == handler) return std::string(alternative.newName);
    return std::nullopt;
}
