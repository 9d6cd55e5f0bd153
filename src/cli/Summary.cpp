#include "cli/Summary.h"

#include <algorithm>

#include "base/Text.h"
#include "cli/Console.h"
#include "cli/RunPrinter.h"
#include "protocol/Json.h"
#include "protocol/Metadata.h"

namespace cli {

namespace {

constexpr FileOutcome kOutcomes[] = {FileOutcome::Saved,  FileOutcome::CopiedUnchanged, FileOutcome::Incomplete,
                                     FileOutcome::Failed, FileOutcome::Skipped,         FileOutcome::Stopped};

std::string WithMessage(const std::string& text, const std::string& message)
{
    return message.empty() ? text : text + ": " + Printable(message);
}

std::string CountLines(const RunResult& result)
{
    std::string text;
    for (const FileOutcome outcome : kOutcomes)
        if (const int count = result.Count(outcome); count > 0 || outcome == FileOutcome::Saved)
            text += FormatText("  %-18s%10s\n", OutcomePhrase(outcome).c_str(),
                               Grouped(static_cast<std::uint64_t>(count)).c_str());
    if (result.remaining > 0)
        text +=
            FormatText("  %-18s%10s\n", "not begun", Grouped(static_cast<std::uint64_t>(result.remaining)).c_str());
    return text;
}

std::string UnfineLines(const CRunPrinter& printer, const SummaryFacts& facts)
{
    std::string text;
    for (const Unfine& file : printer.FirstUnfine())
        text += "  " + UnfineText(file.path, file.outcome, file.message) + "\n";
    const std::uint64_t more = printer.UnfineCount() - printer.FirstUnfine().size();
    if (more > 0)
        text += "  ... and " + Grouped(more) + " more" +
                (facts.kept.empty() ? "; --record FILE keeps a list of all files" : ", all in " + facts.kept) + "\n";
    return text.empty() ? text : "Not fine:\n" + text;
}

std::string PlaceLines(const RunResult& result)
{
    std::string text;
    if (!result.recordPath.empty()) text += "Record: " + result.recordPath + "\n";
    if (!result.logPath.empty()) text += "Log: " + result.logPath + "\n";
    if (!result.logProblem.empty()) text += "No log was written: " + result.logProblem + "\n";
    return text;
}

/// A file that was copied as it is comes out the same way each time.
bool HasRetriable(const RunResult& result)
{
    const int fixed = result.Count(FileOutcome::Saved) + result.Count(FileOutcome::CopiedUnchanged);
    return result.plan.total == 0 || fixed < result.plan.total;
}

std::string Hint(const RunResult& result, const SummaryFacts& facts)
{
    if (facts.dryRun) return "This was a dry run: nothing was touched.\n";
    if (!facts.canResume || !result.resumable) return {};
    const bool begun = result.plan.total > 0;
    if (begun && (result.exit == ExitClass::Stopped || result.exit == ExitClass::Broken))
        return "To go on, give the same command with --resume.\n";
    if (result.exit == ExitClass::SomeNotSaved && HasRetriable(result))
        return "To do these files again, give the same command with --resume --retry-failed.\n";
    return {};
}

const char* ExitWord(ExitClass exit)
{
    switch (exit) {
        case ExitClass::Fine:
            return "fine";
        case ExitClass::Broken:
            return "broken";
        case ExitClass::SomeNotSaved:
            return "not-all-fine";
        case ExitClass::Stopped:
            return "stopped";
    }
    return "broken";
}

}  // namespace

std::string PlanSentence(const PlanSummary& plan)
{
    std::string text = Counted(static_cast<std::uint64_t>(plan.total), "file", "files") + ", " + Bytes(plan.bytes);
    if (plan.tooYoung > 0)
        text += ", " + Grouped(static_cast<std::uint64_t>(plan.tooYoung)) +
                " more left alone because they changed just now";
    if (plan.alreadyDone > 0) text += ", " + Grouped(static_cast<std::uint64_t>(plan.alreadyDone)) + " already done";
    return text;
}

std::string PretendedText(const FileRecord& record)
{
    std::string text = Printable(record.path) + "\n";
    for (const FileOutput& output : record.outputs) text += "  -> " + Printable(output.path) + "\n";
    const Json findings = Json::parse(record.findings, nullptr, false);
    for (const PropertyChange& change : ChangesFrom(findings.is_array() ? findings : Json::array()))
        text += "  " + Printable(change.key) + ": \"" + Printable(change.before) + "\" becomes \"" +
                Printable(change.after) + "\"\n";
    if (const auto& action = record.finalAction; action && action->act)
        text += "  then " + std::string(ActWord(*action->act)) +
                (action->target.empty() ? "" : " " + Printable(action->target)) +
                (action->state == FinalActionRecord::State::Done
                     ? ""
                     : " (" + std::string(FinalStateWord(action->state)) + ")") +
                "\n";
    if (record.outcome != FileOutcome::Saved || !record.message.empty())
        text += WithMessage("  " + OutcomePhrase(record.outcome), record.message) + "\n";
    if (record.signaturesBroken) text += "  signatures would be broken\n";
    return text;
}

std::string UnfineText(const std::string& path, FileOutcome outcome, const std::string& message)
{
    return WithMessage(Printable(path) + ": " + OutcomePhrase(outcome), message);
}

std::string SummaryText(const RunResult& result, const CRunPrinter& printer, const SummaryFacts& facts)
{
    std::string text;
    if (result.plan.total > 0) text += CountLines(result) + UnfineLines(printer, facts);
    if (printer.BrokenSignatures() > 0)
        text += "Signatures broken by saving: " + Counted(printer.BrokenSignatures(), "file", "files") + "\n";
    return text + PlaceLines(result) + Hint(result, facts);
}

std::string TroubleText(const RunResult& result, const CRunPrinter& printer, const SummaryFacts& facts)
{
    std::string counts;
    std::uint64_t unfine = 0;
    const auto add = [&](int count, const std::string& words) {
        if (count <= 0) return;
        unfine += static_cast<std::uint64_t>(count);
        counts += (counts.empty() ? "" : ", ") + Grouped(static_cast<std::uint64_t>(count)) + ' ' + words;
    };
    for (const FileOutcome outcome : kOutcomes)
        if (outcome != FileOutcome::Saved) add(result.Count(outcome), OutcomePhrase(outcome));
    add(result.remaining, "not begun");
    if (result.exit == ExitClass::Fine || unfine == 0) return {};
    std::string text =
        "ferrule: " + Grouped(unfine) + " of " +
        Counted(unfine + static_cast<std::uint64_t>(result.Count(FileOutcome::Saved)), "file", "files") +
        (unfine == 1 ? " was" : " were") + " not saved: " + counts;
    // Those of an earlier start of the run have been told then.
    const std::uint64_t told = printer.UnfineCount() + static_cast<std::uint64_t>(std::max(result.remaining, 0));
    if (told < unfine) text += ", " + Grouped(unfine - told) + " of them in an earlier start of this run";
    text += '\n';
    if (!result.logPath.empty()) text += "Log: " + result.logPath + "\n";
    return facts.dryRun ? text : text + Hint(result, facts);
}

std::string SummaryJson(const RunResult& result)
{
    Json object;
    object["run"] = result.plan.run;
    object["end"] = ExitWord(result.exit);
    object["message"] = TextFromBytes(result.message);
    object["total"] = result.plan.total;
    object["bytes"] = result.plan.bytes;
    for (const FileOutcome outcome : kOutcomes)
        object["outcomes"][std::string(OutcomeWord(outcome))] = result.Count(outcome);
    object["remaining"] = result.remaining;
    object["tooYoung"] = result.plan.tooYoung;
    object["oneWorker"] = result.plan.oneWorker;
    object["record"] = TextFromBytes(result.recordPath);
    object["log"] = TextFromBytes(result.logPath);
    object["logProblem"] = TextFromBytes(result.logProblem);
    return LineOf(object);
}

}  // namespace cli
