#include "tools/ChangingWork.h"

#include <utility>

#include "common/Log.h"
#include "common/Progress.h"
#include "engine/InputOpening.h"
#include "engine/OutputSaving.h"
#include "hostcalls/HostFrame.h"
#include "hostcalls/Jobs.h"
#include "pdflib/AcrobatDoc.h"
#include "platform/Files.h"
#include "platform/Paths.h"

namespace {

constexpr char kCannotOpen[] = "Cannot open input document. Document can be already password protected.";
constexpr char kCannotSave[] = "An error occured while trying to save the document.";  // sic

std::string AsSentence(std::string reason)
{
    if (!reason.empty() && !reason.ends_with('.')) reason += '.';
    return reason;
}

}  // namespace

bool CChangingWork::WasNotOpened(const ProcessedFile& file) { return file.message.starts_with(kCannotOpen); }

WorkFacts CChangingWork::Facts(const PlanRequest& request) const
{
    const std::string& output = request.settings.alternativeOutputPath;
    WorkFacts facts{.noun = m_words.noun,
                    .noInputs = m_words.gerund + std::string(" has no input files of its own."),
                    .inputsMayBeGone = true,
                    .usesOutputFolder = !m_rules.inPlace,
                    .replacesInputs = m_rules.inPlace,
                    .resultsPerFile = 1,
                    .warnings = Warnings()};
    if (!m_rules.inPlace && output.empty()) facts.objection = "There is no output folder. Name one with --output.";
    if (!m_rules.inPlace) facts.results.push_back({.folder = output});
    return facts;
}

ProcessedFile CChangingWork::Process(const std::string& path, int number)
{
    Run().log.NameValue("Opening input document", path, 1);
    Run().progress.SetOperationText(path);
    Run().progress.SetCurrentValue(number);
    ProcessedFile file{.path = path, .input = platform::StampOf(path)};
    CAcrobatDoc document;
    if (const std::string reason = Open(document, path); !reason.empty()) {
        Fail(file, kCannotOpen, reason);
        return file;
    }
    ChangeOpen(document, file);
    if (const auto error = CatchHostError([&] { (void)document.Close(); }))
        Run().log.NameValue("Exception occured during a document closing", error->text, 1);  // sic
    return file;
}

/// Answers why it is not open.
std::string CChangingWork::Open(CAcrobatDoc& document, const std::string& path) const
{
    std::string reason;
    if (!IsPdfPath(path)) return "Its name does not end with .pdf.";
    const auto error = CatchHostError([&] { reason = OpenInput(document, path, Run().log); });
    return error ? error->text : reason;
}

/// False when the document is left alone; `file` says why.
bool CChangingWork::MayBeChanged(CAcrobatDoc& document, ProcessedFile& file, bool asWhole) const
{
    // Finding that out takes a look at every object.
    if (const auto error = CatchHostError([&] {
            if (asWhole) file.loss = document.Loss(Run().settings.sparesRepaired);
        })) {
        Fail(file, kCannotOpen, error->text);
        return false;
    }
    if (Run().settings.acceptDamaged) file.message = std::exchange(file.loss, {});
    if (m_rules.inPlace && !file.loss.empty()) {
        Fail(file, kCannotSave, "The document is damaged, so its file stays as it is. " + file.loss);
        return false;
    }
    const std::string reason = Objection(document, file);
    if (!reason.empty()) Fail(file, m_words.cannotApply, reason);
    return reason.empty();
}

void CChangingWork::ChangeOpen(CAcrobatDoc& document, ProcessedFile& file) const
{
    const bool asWhole = WritesWhole(document);
    if (!MayBeChanged(document, file, asWhole)) return;
    Expected<Applied> applied = Failure(std::string());
    if (const auto error = CatchHostError([&] { applied = Apply(document, file); }))
        return Fail(file, m_words.cannotApply, error->text);
    if (!applied) return Fail(file, m_words.cannotApply, applied.Error());
    if (*applied == Applied::NothingToDo && m_rules.inPlace) return;
    std::string reason = Save(document, file);
    if (!reason.empty() && !asWhole && WritesWhole(document)) {  // only trying has shown that it must be
        if (!MayBeChanged(document, file, true)) return;
        reason = Save(document, file);
    }
    if (!reason.empty()) return Fail(file, kCannotSave, reason);
    Run().log.Line("Document has been saved successfully");
    if (m_rules.inPlace) file.input = platform::StampOf(file.path);
    if (file.loss.empty()) return;
    file.outcome = FileOutcome::Incomplete;
    file.message = file.loss;
}

/// Why the document is left alone; empty when it need not be.
std::string CChangingWork::Objection(const CAcrobatDoc& document, const ProcessedFile& file) const
{
    if (m_rules.inPlace && platform::NameIsLink(file.path))
        return "It is a link, which would be replaced while the document stays as it is. Name the file that it leads "
               "to: " +
               platform::ResolvedPath(file.path);
    return m_rules.breakSignatures ? std::string() : SignatureObjection(document);
}

std::string CChangingWork::SignatureObjection(const CAcrobatDoc& document) const
{
    if (!JobDocumentSigned(document.Document()).value_or(false)) return {};
    return std::string(
               "It is signed, certified or has usage rights, which would be worthless afterwards; "
               "the option --break-signatures of the command line ") +
           m_words.doesAllTheSame + " all the same.";
}

std::string CChangingWork::Save(CAcrobatDoc& document, ProcessedFile& file) const
{
    PrepareSave(document, file);
    if (m_rules.inPlace) return SaveInPlace(document, file);
    OutputSettings output;
    output.optimizePdf = false;
    const SavingInput input{file.path, AlternativeOutputFolder(Run().settings), {}};
    SaveResult result;
    const auto error = CatchHostError([&] { result = SaveProcessed(document, output, input, Run().log); });
    if (error) return error->text;
    if (result.status == SaveStatus::Saved) return {};
    return result.reason.empty() ? "Nothing was written." : result.reason;
}

std::string CChangingWork::SaveInPlace(CAcrobatDoc& document, const ProcessedFile& file) const
{
    const auto changed = [&] { return HasChanged(file.path, file.input); };
    const std::string why = "The file stays as it is, because " + std::string(kInputChanged) + '.';
    if (changed()) return why;
    Run().log.NameValue("Saving output file:", file.path, 1);
    const auto error = CatchHostError([&] { document.SaveTo(file.path, SaveFlags()); });
    if (!error) return {};
    return changed() ? why : error->text;
}

void CChangingWork::Fail(ProcessedFile& file, const char* failure, const std::string& reason) const
{
    Run().log.NameValue(std::string("ERROR: ") + failure, reason, 1);
    file.outcome = FileOutcome::Failed;
    file.message = std::string(failure) + " Reason: " + AsSentence(reason);
}
