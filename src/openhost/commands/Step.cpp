#include "openhost/commands/Step.h"

#include <algorithm>
#include <cmath>

#include "openhost/commands/LocalNumbers.h"
#include "openhost/commands/ParameterValues.h"
#include "openhost/core/Diagnostics.h"
#include "openhost/pdf/PdfGuard.h"

namespace openhost {

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
        if (result == StepResult::Canceled) return kAVCommandCanceled;
        if (result == StepResult::Changed) MarkChanged(run.Held(), step.rights);
        return kAVCommandDone;
    });
}

}  // namespace openhost
