#include "sequence/StepChecks.h"

#include "base/LikelyName.h"
#include "hostapi/HostConstants.h"
#include "hostcalls/Commands.h"
#include "platform/Files.h"
#include "sequence/Findings.h"
#include "sequence/Keys.h"
#include "sequence/SequenceFile.h"
#include "sequence/StepDescription.h"

#include <algorithm>
#include <iterator>

namespace {

bool IsAscii(const std::string& text)
{
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

void CheckAvailable(const SequenceStep& step, CSequenceFindings& findings)
{
    if (step.handler.empty())
        return findings.Error("step-without-handler", "The command has no name, so nothing can be run.");
    if (step.IsAvailable()) return;
    findings.Error("step-not-available",
                   "This host does not have the step " + step.handler + "; take it out, or let the run skip it.");
}

void CheckPrompts(const SequenceStep& step, CSequenceFindings& findings)
{
    if (step.prompts && step.parameters.Size() == 0) {
        findings.Warning("prompts",
                         "The step asks for its settings, which a run does not do; it runs on its defaults.");
    } else if (step.prompts) {
        findings.Note("prompts",
                      "The step asks for its settings, which a run does not do; it runs on those of the file.");
    }
    if (step.pauses) findings.Note("pauses", "The sequence pauses before the step, which a run does not do.");
}

// ---- what is not in the file, or reads differently elsewhere

void CheckProfile(const SequenceStep& step, CSequenceFindings& findings)
{
    constexpr char kName[] = "CALS_PREFLIGHT_CMD_PROFILE_NAME";
    if (!step.parameters.Known(kName)) return;
    findings.Note("profile-outside", "The preflight profile \"" + step.parameters.StringOrText(kName).value_or("") +
                                         "\" is not in the file; the host must have it.");
}

/// Texts that hosts write in the language of their windows, found by the names of their entries.
bool IsLocalised(const std::string& key)
{
    constexpr const char* kKeys[] = {"Magnification", "LeftText",   "RightText",
                                     "TopText",       "BottomText", kPresetNameKey};
    return std::find(std::begin(kKeys), std::end(kKeys), key) != std::end(kKeys);
}

void CollectLocalised(CCabView cab, std::string& names)
{
    for (const std::string& key : cab.Keys()) {
        if (const CCabView nested = cab.Cab(key.c_str())) {
            CollectLocalised(nested, names);
        } else if (IsLocalised(key) && !IsAscii(cab.StringOrText(key.c_str()).value_or(""))) {
            // The name of a preset that is not used does not matter.
            if (key == kPresetNameKey && !cab.Bool(kRunOptimizerKey, false)) continue;
            names += (names.empty() ? "" : ", ") + key + " \"" + cab.StringOrText(key.c_str()).value_or("") + '"';
        }
    }
}

void CheckLocalised(CCabView cab, CSequenceFindings& findings)
{
    std::string names;
    CollectLocalised(cab, names);
    if (!names.empty())
        findings.Warning("localised-value",
                         "A value is in the language of the program that wrote the file, and a host "
                         "in another language may not know it: " +
                             names + ".");
}

// ---- steps of our own

const char* WordOf(ASCabValueType type)
{
    switch (type) {
        case kASValueBool:
            return "boolean";
        case kASValueInteger:
            return "integer";
        case kASValueDouble:
            return "double";
        case kASValueString:
        case kASValueText:
            return "text";
        case kASValueCabinet:
            return "cab";
        default:
            return "value of another type";
    }
}

bool SameType(ASCabValueType type, ASCabValueType wanted)
{
    const auto isText = [](ASCabValueType one) { return one == kASValueString || one == kASValueText; };
    return type == wanted || (isText(type) && isText(wanted)) ||
           (type == kASValueInteger && wanted == kASValueDouble);
}

/// A slip of the pen takes away what the sequence was to do, a password for instance.
void TellUnknown(const std::string& key, CCabView defaults, CSequenceFindings& findings)
{
    const std::string text = "The step has no parameter \"" + key + "\"; it is passed over.",
                      likely = LikelyName(key, defaults.Keys(), kWhenSure);
    if (likely.empty()) return findings.Warning("parameter-unknown", text);
    findings.Error("parameter-unknown", text + " Probably \"" + likely + "\" is meant; correct the name.");
}

/// The step's own defaults tell which parameters there are and of which type.
void CheckAgainstDefaults(const SequenceStep& step, CCabView defaults, CSequenceFindings& findings)
{
    if (!defaults) return;
    for (const std::string& key : step.parameters.Keys()) {
        if (!defaults.Known(key.c_str())) {
            TellUnknown(key, defaults, findings);
            continue;
        }
        const auto type = step.parameters.Type(key.c_str()), wanted = defaults.Type(key.c_str());
        if (!SameType(type, wanted))
            findings.Error("parameter-type", "The parameter \"" + key + "\" is a " + WordOf(type) +
                                                 " but must be a " + WordOf(wanted) +
                                                 "; as it is it does not count.");
    }
}

}  // namespace

CCabView CStepDefaults::Of(const std::string& handler)
{
    const auto [place, isNew] = m_defaults.try_emplace(handler);
    if (isNew)
        if (const auto command = CHostCommand::Create(handler)) place->second = command->Params();
    return place->second ? place->second->View() : CCabView();
}

void CheckStep(const SequenceStep& step, CStepDefaults& defaults, CSequenceFindings& findings)
{
    const StepDescription& description = DescribeStep(step.handler);
    findings.About(&step);
    CheckAvailable(step, findings);
    CheckPrompts(step, findings);
    // Steps of the plug-in have no such texts, so that one of that name may be a password.
    if (DescribeMeantStep(step.handler).maker != StepMaker::Plugin) {
        CheckProfile(step, findings);
        CheckLocalised(step.parameters, findings);
    }
    if (step.IsAvailable() && description.maker == StepMaker::Plugin)
        CheckAgainstDefaults(step, defaults.Of(step.runsAs), findings);
    if (description.check) description.check(step, findings);
    findings.About(nullptr);
}

void CheckNamedFile(const SequenceStep& step, const char* parameter, CSequenceFindings& findings)
{
    if (!step.IsAvailable()) return;
    const std::string file = step.parameters.StringOrText(parameter).value_or("");
    if (file.empty()) {
        findings.Warning("file-not-named", "The step names no file, so it does nothing.");
    } else if (!platform::FileExists(file)) {
        findings.Warning("file-missing", "There is no file " + file + " here; without it the step does nothing.");
    }
}
