#include "sequence/StepChecks.h"

#include <algorithm>
#include <span>
#include <string>

#include "base/LikelyName.h"
#include "hostapi/HostConstants.h"
#include "hostcalls/Commands.h"
#include "platform/Files.h"
#include "sequence/Findings.h"
#include "sequence/SequenceFile.h"
#include "sequence/StepDescription.h"

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

// ---- what reads differently elsewhere

using Localised = std::span<const LocalisedParameter>;

bool IsLocalised(const std::string& key, CCabView cab, Localised parameters)
{
    return std::ranges::any_of(parameters, [&](const LocalisedParameter& parameter) {
        return key == parameter.name && (!parameter.onlyWith || cab.Bool(parameter.onlyWith, false));
    });
}

void CollectLocalised(CCabView cab, Localised parameters, std::string& names)
{
    for (const std::string& key : cab.Keys()) {
        if (const CCabView nested = cab.Cab(key.c_str())) {
            CollectLocalised(nested, parameters, names);
            continue;
        }
        if (!IsLocalised(key, cab, parameters)) continue;
        const std::string text = cab.StringOrText(key.c_str()).value_or("");
        if (!IsAscii(text)) names += (names.empty() ? "" : ", ") + key + " \"" + text + '"';
    }
}

void CheckLocalised(CCabView cab, Localised parameters, CSequenceFindings& findings)
{
    if (parameters.empty()) return;
    std::string names;
    CollectLocalised(cab, parameters, names);
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
    CheckLocalised(step.parameters, description.localised, findings);
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
