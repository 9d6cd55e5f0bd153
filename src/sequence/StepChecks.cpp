#include "sequence/StepChecks.h"

#include <algorithm>
#include <iterator>
#include <span>
#include <string>
#include <string_view>

#include "base/LikelyName.h"
#include "base/Unicode.h"
#include "hostapi/HostConstants.h"
#include "hostcalls/Commands.h"
#include "hostcalls/HostPath.h"
#include "platform/Files.h"
#include "sequence/Findings.h"
#include "sequence/SequenceFile.h"
#include "sequence/StepDescription.h"

namespace {

struct Range {
    char32_t first, last;
};

/// Letters of scripts that are written from right to left.
constexpr Range kRightToLeft[] = {{0x5BE, 0x5BE},   {0x5C0, 0x5C0},   {0x5C3, 0x5C3},   {0x5D0, 0x5F4},
                                  {0x61B, 0x61B},   {0x61F, 0x63A},   {0x640, 0x64A},   {0x66D, 0x66F},
                                  {0x671, 0x6D5},   {0x6DD, 0x6DD},   {0x6E5, 0x6E6},   {0x6FA, 0x710},
                                  {0x712, 0x72C},   {0x780, 0x7A5},   {0x7B1, 0x7B1},   {0xFB1D, 0xFB1D},
                                  {0xFB1F, 0xFB28}, {0xFB2A, 0xFD3D}, {0xFD50, 0xFDFC}, {0xFE70, 0xFEFC}};

bool IsRightToLeft(char32_t character)
{
    return std::any_of(std::begin(kRightToLeft), std::end(kRightToLeft),
                       [&](const Range& range) { return character >= range.first && character <= range.last; });
}

bool IsLatinLetter(char32_t character)
{
    return (character >= 'A' && character <= 'Z') || (character >= 'a' && character <= 'z');
}

bool IsControl(char32_t character) { return character < 0x20 || (character >= 0x7F && character < 0xA0); }

/// Why AES with 256 bits does not take the password, as far as this can be told without the host's tables.
std::string RefusedByAes256(const std::string& password)
{
    const std::u32string text = Utf8ToUtf32(password);
    if (std::any_of(text.begin(), text.end(), IsControl))
        return "it has a control character, such as a tab or a line end; take that out";
    if (std::none_of(text.begin(), text.end(), IsRightToLeft)) return {};
    if (std::any_of(text.begin(), text.end(), IsLatinLetter))
        return "it mixes letters that are written from right to left with others; use one kind of them";
    if (!IsRightToLeft(text.front()) || !IsRightToLeft(text.back()))
        return "it is written from right to left, so it must begin and end with such a letter and not with a digit "
               "or a sign";
    return {};
}

/// Why the older methods do not take it.
std::string RefusedByOlder(const std::string& password)
{
    if (!CHostText::FromUtf8(password).ToPdText().starts_with("\xFE\xFF")) return {};
    return "it has characters that only AES with 256 bits can express; use that (method 3), or another password";
}

void CheckStrength(const Protection& protection, CSequenceFindings& findings)
{
    if (protection.isShortKey) {
        findings.Warning("weak-encryption", "A key this short is broken within minutes; use AES with 256 bits.");
    } else if (protection.isRc4) {
        findings.Warning("weak-encryption", "RC4 is not safe any more; use AES with 256 bits.");
    }
}

void CheckPasswords(const Protection& protection, CSequenceFindings& findings)
{
    const bool openToAll = protection.openPassword.empty(), owned = !protection.permissionsPassword.empty();
    if (openToAll && !owned && !protection.mayGetOpenPassword)
        findings.Warning("no-password",
                         "No password is set: everybody can open the documents and remove the protection.");
    if (protection.restricts && !owned)
        findings.Warning(
            "permissions-without-owner-password",
            "Rights are restricted but there is no password for the permissions, so whoever can open the "
            "document can lift the restrictions.");
    if (owned && !protection.restricts)
        findings.Note("nothing-restricted",
                      "There is a password for the permissions, but all rights are given anyway.");
    if (owned && protection.openPassword == protection.permissionsPassword)
        findings.Warning("same-password",
                         "Both passwords are the same: whoever can open a document may also change its permissions.");
}

}  // namespace

void CheckProtection(const Protection& protection, CSequenceFindings& findings)
{
    CheckStrength(protection, findings);
    CheckPasswords(protection, findings);
}

void CheckPasswordIsTaken(const char* which, const std::string& password, bool aes256, CSequenceFindings& findings)
{
    if (password.empty()) return;
    const std::string reason = aes256 ? RefusedByAes256(password) : RefusedByOlder(password);
    if (reason.empty()) return;
    findings.Error("password-refused", std::string("The encryption does not take the ") + which +
                                           " password, and no document would be saved: " + reason + ".");
}

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
