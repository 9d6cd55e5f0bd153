#include "openhost/commands/Step.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>

#include "base/Text.h"
#include "openhost/commands/LocalNames.h"
#include "openhost/core/Atoms.h"
#include "openhost/core/Host.h"
#include "openhost/core/Raise.h"
#include "openhost/pdf/PdfError.h"
#include "platform/NarrowText.h"

namespace openhost {

/// What a sequence gives for a parameter, in the parameter's own kind and within its limits: a text that is a number
/// counts as one, a whole number as an integer, 0 and 1 as a boolean. Nothing when the meaning is not clear.
std::optional<ParameterValue> ConvertedParameter(const StepParameter& parameter, const CabValue& given);

/// The value for messages, short: "abc", 12, a list.
std::string ShownValue(const CabValue& given);
/// What the parameter wants: "90, 180 or 270".
std::string ExpectedOf(const StepParameter& parameter);

namespace {

constexpr std::size_t kShownBytes = 40;

/// A number without zeros at its end.
std::string NumberText(double number)
{
    if (std::abs(number) < 1e15 && number == std::floor(number)) return FormatText("%.0f", number);
    return FormatText("%g", number);
}

std::optional<double> NumberIn(const CabValue& given)
{
    return std::visit(
        [](const auto& value) -> std::optional<double> {
            using Value = std::decay_t<decltype(value)>;
            if constexpr (std::is_arithmetic_v<Value> && !std::is_same_v<Value, bool>)
                return static_cast<double>(value);
            else
                return std::nullopt;
        },
        given);
}

std::optional<std::string> TextIn(const CabValue& given)
{
    if (const auto* text = std::get_if<CHostText*>(&given)) return (*text)->Utf8();
    if (const auto* string = std::get_if<CabString>(&given))
        return platform::Utf8FromNarrow(std::string(string->block.View()));
    if (const auto* atom = std::get_if<CabAtom>(&given)) return AtomText(atom->atom);
    return std::nullopt;
}

std::optional<double> ClearNumber(const CabValue& given)
{
    if (const auto number = NumberIn(given)) return number;
    const auto text = TextIn(given);
    return text ? ReadClearNumber(*text) : std::nullopt;
}

std::optional<ParameterValue> ToBoolean(const CabValue& given)
{
    if (const auto* const value = std::get_if<bool>(&given)) return *value;
    const std::string text = TextIn(given).value_or("");
    if (EqualsIgnoreCaseAscii(text, "true")) return true;
    if (EqualsIgnoreCaseAscii(text, "false")) return false;
    const auto number = ClearNumber(given);
    if (number == 0 || number == 1) return *number == 1;
    return std::nullopt;
}

std::optional<ParameterValue> ToInteger(const StepParameter& parameter, const CabValue& given)
{
    const auto number = ClearNumber(given);
    constexpr double most = std::numeric_limits<int>::max();
    if (!number || *number != std::floor(*number) || std::abs(*number) > most) return std::nullopt;
    const int value = static_cast<int>(*number);
    if (!parameter.oneOf.empty() && std::ranges::find(parameter.oneOf, value) == parameter.oneOf.end())
        return std::nullopt;
    if (value < parameter.least || value > parameter.most) return std::nullopt;
    return value;
}

std::optional<ParameterValue> ToNumber(const StepParameter& parameter, const CabValue& given)
{
    const auto number = ClearNumber(given);
    if (!number || !std::isfinite(*number) || *number < parameter.least || *number > parameter.most)
        return std::nullopt;
    return *number;
}

std::optional<ParameterValue> ToText(const CabValue& given)
{
    if (auto text = TextIn(given)) return std::move(*text);
    if (const auto number = NumberIn(given)) return NumberText(*number);
    return std::nullopt;
}

}  // namespace

std::optional<ParameterValue> ConvertedParameter(const StepParameter& parameter, const CabValue& given)
{
    switch (parameter.kind) {
        case ParameterKind::Boolean:
            return ToBoolean(given);
        case ParameterKind::Integer:
            return ToInteger(parameter, given);
        case ParameterKind::Number:
            return ToNumber(parameter, given);
        case ParameterKind::Text:
            return ToText(given);
        case ParameterKind::Ignored:
            break;
    }
    return ParameterValue();
}

std::string ShownValue(const CabValue& given)
{
    if (const auto text = TextIn(given)) return '"' + ShortenedInMiddle(*text, kShownBytes) + '"';
    if (const auto number = NumberIn(given)) return NumberText(*number);
    if (const auto* const flag = std::get_if<bool>(&given)) return *flag ? "true" : "false";
    return std::holds_alternative<CCabinet*>(given) ? "a set of items" : "a value of another type";
}

std::string ExpectedOf(const StepParameter& parameter)
{
    if (!parameter.oneOf.empty()) {
        std::string list;
        for (std::size_t at = 0; at < parameter.oneOf.size(); ++at)
            list += (at == 0                            ? ""
                     : at + 1 == parameter.oneOf.size() ? " or "
                                                        : ", ") +
                    std::to_string(parameter.oneOf[at]);
        return list;
    }
    if (parameter.kind == ParameterKind::Boolean) return "true or false";
    if (parameter.kind == ParameterKind::Text) return "a text";
    std::string wanted = parameter.kind == ParameterKind::Integer ? "a whole number" : "a number";
    if (parameter.least > std::numeric_limits<double>::lowest()) wanted += " from " + NumberText(parameter.least);
    if (parameter.most < std::numeric_limits<double>::max()) wanted += " up to " + NumberText(parameter.most);
    return wanted;
}

namespace {

constexpr char kGroup[] = "Group";
constexpr char kEvenOdd[] = "EvenOdd";
constexpr char kFrom[] = "From";
constexpr char kTo[] = "To";
enum EvenOdd { kBoth, kEven, kOdd };

std::vector<StepParameter> PageParameters(const StepPages& pages)
{
    return {{.key = kGroup,
             .kind = ParameterKind::Integer,
             .fallback = static_cast<int>(pages.group),
             .oneOf = {static_cast<int>(PageGroup::All), static_cast<int>(PageGroup::Selected),
                       static_cast<int>(PageGroup::FromTo)}},
            {.key = kEvenOdd,
             .kind = ParameterKind::Integer,
             .fallback = static_cast<int>(kBoth),
             .oneOf = {kBoth, kEven, kOdd}},
            {.key = kFrom, .kind = ParameterKind::Text},
            {.key = kTo, .kind = ParameterKind::Text}};
}

const char* NameOf(PdfRight right)
{
    switch (right) {
        case PdfRight::Annotate:
            return "to comment";
        case PdfRight::Assemble:
            return "to assemble";
        default:
            return "to change";
    }
}

}  // namespace

CStepRun::CStepRun(const StepDescription& step, std::string name, PDDoc document, const CCabinet* params,
                   const CCabinet* inputs)
    : m_step(step), m_name(std::move(name)), m_document(document), m_params(params), m_inputs(inputs)
{
    CheckRights();
    if (m_step.parameters) ReadParameters(*m_step.parameters);
    if (m_step.pages) ReadParameters(PageParameters(*m_step.pages));
    if (m_params && m_step.parameters) RemarkUnknown(*m_params, {});
}

void CStepRun::CheckRights() const
{
    const auto& rights = m_step.rights;
    if (rights.empty() || std::ranges::any_of(rights, [&](PdfRight right) { return Pdf().Allows(right); })) return;
    std::string names;
    for (const PdfRight right : rights) names += (names.empty() ? "" : " or ") + std::string(NameOf(right));
    Fail("is not permitted: it needs the right " + names +
             " the document; its permissions password gives that, in a file named with --password-file",
         PdfProblem::NotPermitted);
}

// ---- parameters

ParameterValue CStepRun::Read(const StepParameter& parameter) const
{
    const CabValue* const given = m_params ? m_params->Find(parameter.key) : nullptr;
    if (!given || std::holds_alternative<CabNull>(*given)) return parameter.fallback;
    if (auto value = ConvertedParameter(parameter, *given)) return std::move(*value);
    Fail("cannot take " + ShownValue(*given) + " for \"" + parameter.key + "\": it must be " + ExpectedOf(parameter));
}

void CStepRun::ReadParameters(const std::vector<StepParameter>& declared)
{
    for (const StepParameter& parameter : declared) {
        m_declared.push_back(parameter);
        if (parameter.kind != ParameterKind::Ignored) m_values[parameter.key] = Read(parameter);
    }
}

bool CStepRun::Declares(const std::string& key, bool asCab) const
{
    return std::ranges::any_of(m_declared, [&](const StepParameter& parameter) {
        return parameter.key == key || (asCab && std::string_view(parameter.key).starts_with(key + ':'));
    });
}

/// A misspelled parameter would otherwise look like one that was heeded.
void CStepRun::RemarkUnknown(const CCabinet& cab, const std::string& prefix) const
{
    cab.WalkConst([&](const std::string& step, const CabValue& value) {
        const std::string key = prefix + step;
        const auto* const inner = std::get_if<CCabinet*>(&value);
        if (!Declares(key, inner != nullptr))
            Remark("does not know the parameter \"" + key + "\" and passes it over");
        else if (inner)
            RemarkUnknown(**inner, key + ':');
        return true;
    });
}

const ParameterValue& CStepRun::Value(std::string_view key) const
{
    const auto found = m_values.find(key);
    if (found == m_values.end()) Fail("does not declare \"" + std::string(key) + '"', PdfProblem::Internal);
    return found->second;
}

bool CStepRun::Has(std::string_view key) const { return !std::holds_alternative<std::monostate>(Value(key)); }

// ---- pages

int CStepRun::PageNumber(std::string_view key) const
{
    const int pages = Pdf().PageCount();
    const std::string count = "the document has " + std::to_string(pages) + (pages == 1 ? " page" : " pages");
    const std::string wanted = Has(key) ? Text(key) : std::string();
    if (wanted.empty()) Fail("needs a page number in \"" + std::string(key) + "\"; " + count);
    const auto number = ReadWholeNumber(wanted);
    if (!number || *number < 1 || *number > pages)
        Fail("cannot take \"" + wanted + "\" for \"" + std::string(key) + "\": " + count);
    return *number;
}

std::vector<int> CStepRun::Pages0() const
{
    const auto group = static_cast<PageGroup>(Integer(kGroup));
    const int evenOdd = Integer(kEvenOdd);
    if (evenOdd != kBoth && !m_step.pages->evenOdd) Fail("cannot choose even or odd pages: \"EvenOdd\" must be 0");
    if (group == PageGroup::Selected)
        Fail("is for selected pages, and without a window none are selected: \"Group\" must be 0 or 2");
    const bool range = group == PageGroup::FromTo;
    const int pages = Pdf().PageCount();
    const int from = range ? PageNumber(kFrom) : 1, to = range ? PageNumber(kTo) : pages;
    if (range && from > to)
        Fail("is for the pages from " + std::to_string(from) + " to " + std::to_string(to) +
             ", which are none; the document has " + std::to_string(pages));
    std::vector<int> pages0;
    for (int number = from; number <= to; ++number)
        if (evenOdd == kBoth || (number % 2 == 0) == (evenOdd == kEven)) pages0.push_back(number - 1);
    return pages0;
}

// ---- messages

void CStepRun::Remark(const std::string& text) const
{
    Diagnose(Pdf().Description() + ": the step " + m_name + ' ' + text);
}

void CStepRun::Fail(const std::string& reason, PdfProblem problem) const
{
    throw CPdfError(problem, Pdf().Description(), "the step " + m_name + ' ' + reason);
}

// ---- the run

namespace {

StepResult Do(const StepDescription& step, CStepRun& run)
{
    try {
        return step.work(run);
    } catch (const CHostRaise&) {
        throw;
    } catch (...) {
        RethrowAsPdfError(run.Pdf().Description(), PdfProblem::Damaged);
    }
}

void MarkChanged(CHostDocument& held, const std::vector<PdfRight>& rights)
{
    for (const PdfRight right : rights)
        if (held.pdf.Allows(right)) held.pdf.PermitSave();
    held.pdf.SetModified(true);
    held.clearedFlags &= ~PDDocNeedsSave;
}

}  // namespace

AVCommandStatus RunStep(const StepDescription& step, const std::string& name, PDDoc document, const CCabinet* params,
                        const CCabinet* inputs)
{
    if (!document) Raise(genErrBadParm, "the step " + name + " was given no document");
    return Translated([&]() -> AVCommandStatus {
        CStepRun run(step, name, document, params, inputs);
        const StepResult result = Do(step, run);
        if (result == StepResult::Cancelled) return kAVCommandCanceled;
        if (result == StepResult::Changed) MarkChanged(run.Held(), step.rights);
        return kAVCommandDone;
    });
}

}  // namespace openhost
