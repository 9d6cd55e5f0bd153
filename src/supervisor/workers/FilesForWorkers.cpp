#include "supervisor/workers/FilesForWorkers.h"

#include <algorithm>
#include <filesystem>
#include <utility>

#include "base/Names.h"
#include "platform/FileDigest.h"
#include "platform/Files.h"
#include "platform/NarrowText.h"

CGroupedFiles::CGroupedFiles(Source source, std::size_t lookahead)
    : m_source(std::move(source)), m_lookahead(lookahead)
{
}

std::optional<PlannedFile> CGroupedFiles::Take()
{
    if (auto file = TakeHeldBack()) return file;
    while (m_heldBack.size() < m_lookahead) {
        auto file = Read();
        if (!file) return std::nullopt;
        if (!IsBusy(*file)) return Handed(std::move(*file));
        m_heldBack.push_back(std::move(*file));
    }
    return std::nullopt;
}

bool CGroupedFiles::Empty()
{
    if (!m_heldBack.empty()) return false;
    if (!m_peeked) m_peeked = Read();
    return !m_peeked;
}

std::optional<PlannedFile> CGroupedFiles::TakeHeldBack()
{
    const auto place =
        std::find_if(m_heldBack.begin(), m_heldBack.end(), [this](const PlannedFile& file) { return !IsBusy(file); });
    if (place == m_heldBack.end()) return std::nullopt;
    PlannedFile file = std::move(*place);
    m_heldBack.erase(place);
    return Handed(std::move(file));
}

std::optional<PlannedFile> CGroupedFiles::Read()
{
    if (m_peeked) return std::exchange(m_peeked, std::nullopt);
    if (m_sourceEnded) return std::nullopt;
    auto file = m_source();
    m_sourceEnded = !file;
    return file;
}

PlannedFile CGroupedFiles::Handed(PlannedFile file)
{
    if (file.group != 0) m_busy.insert(file.group);
    return file;
}

namespace {

/// Equal for a path and the same path with separators more than needed, or in other letters where they do not count.
std::uint64_t HashOf(const std::string& path)
{
    const std::string normal = platform::TextOf(platform::StandardPath(path).lexically_normal().make_preferred());
    return std::hash<std::string>{}(kNamesIgnoreCase ? LowerCasedName(normal) : normal);
}

}  // namespace

void CGroupedInputs::Add(const PlannedFile& file)
{
    if (file.group != 0) m_hashes.push_back(HashOf(file.path));
}

void CGroupedInputs::Complete() { std::sort(m_hashes.begin(), m_hashes.end()); }

bool CGroupedInputs::Contains(const std::string& path) const
{
    return std::binary_search(m_hashes.begin(), m_hashes.end(), HashOf(path));
}

namespace {

bool IsUnchanged(const PlannedFile& file, const platform::FileStamp& stamp)
{
    return stamp.size == file.size && stamp.modifiedNanoseconds == file.modifiedNanoseconds;
}

/// Whether the input of a file whose results are written is still what they were made of, or what they are.
bool IsAsKnown(const FileInHand& hand)
{
    const auto stamp = platform::StampOf(hand.file.path);
    if (!stamp) return false;
    if (IsUnchanged(hand.file, *stamp)) return true;
    const std::string content = platform::Sha256OfFile(hand.file.path);
    if (content.empty()) return false;
    if (content == hand.results->sha256) return true;
    return std::any_of(hand.results->outputs.begin(), hand.results->outputs.end(),
                       [&](const FileOutput& output) { return output.sha256 == content; });
}

FileOutcome Worse(FileOutcome one, FileOutcome other) { return std::max(one, other); }

std::string Joined(const std::string& first, const std::string& second)
{
    if (first == second) return first;
    return first.empty() || second.empty() ? first + second : first + ' ' + second;
}

/// Adds what was known of the file before its present worker got it.
void AddEarlier(const FileInHand& hand, DoneFile& done)
{
    FileRecord& record = done.record;
    record.message = Joined(hand.reason, Joined(record.message, hand.refusal));
    if (hand.results) {
        record.outputs.insert(record.outputs.begin(), hand.results->outputs.begin(), hand.results->outputs.end());
        if (!hand.results->sha256.empty()) record.sha256 = hand.results->sha256;
        if (!record.protection.after) record.protection = hand.results->protection;
        record.signaturesBroken = record.signaturesBroken || hand.results->signaturesBroken;
        record.outcome = Worse(record.outcome, hand.results->outcome);
    }
    const std::size_t earlierLines = hand.log.lines.size();
    done.log.insert(done.log.begin(), hand.log.lines.begin(), hand.log.lines.end());
    if (hand.log.preflightEnd != 0) {
        done.preflightBegin = hand.log.preflightBegin;
        done.preflightEnd = hand.log.preflightEnd;
    } else if (done.preflightEnd != 0) {
        done.preflightBegin += earlierLines;
        done.preflightEnd += earlierLines;
    }
}

}  // namespace

DoneFile CombineDone(const FileInHand& hand, FileRecord record, LogBlock block)
{
    // What file it is only the plan knows for sure.
    record.number = hand.file.number;
    record.path = hand.file.path;
    record.size = hand.file.size;
    DoneFile done{std::move(record), std::move(block.lines), block.preflightBegin, block.preflightEnd};
    AddEarlier(hand, done);
    return done;
}

namespace {

/// All that was ever allowed for the file, once each, in its order.
std::vector<Intent> ActsOf(const FileInHand& hand)
{
    std::vector<Intent> acts = hand.earlierActs;
    acts.insert(acts.end(), hand.intents.begin(), hand.intents.end());
    std::ranges::stable_sort(acts, {}, &Intent::order);
    const auto rest = std::ranges::unique(acts, {}, &Intent::order);
    acts.erase(rest.begin(), rest.end());
    return acts;
}

}  // namespace

DoneFile DoneWithoutWorker(const PlannedFile& file, FileOutcome outcome, const std::string& message)
{
    DoneFile done;
    done.record.number = file.number;
    done.record.path = file.path;
    done.record.size = file.size;
    done.record.outcome = outcome;
    done.record.message = message;
    done.log = {"\tInput document : " + file.path, "\t" + message};
    return done;
}

std::optional<FileInHand> CFilesForWorkers::Next()
{
    while (m_problem.empty()) {
        if (!m_returned.empty()) {
            FileInHand hand = std::move(m_returned.front());
            m_returned.pop_front();
            return hand;
        }
        auto file = m_parts.files.Take();
        if (!file) return std::nullopt;
        FileInHand hand{.file = std::move(*file)};
        if (Prepare(hand) == Readiness::Ready) return hand;
    }
    return std::nullopt;
}

bool CFilesForWorkers::Finish(DoneFile done, const FileInHand& hand)
{
    m_parts.files.Done(hand.file.group);
    done.record.acts = ActsOf(hand);
    return Journaled(m_parts.results.AddDone(done));
}

void CFilesForWorkers::NoteTarget(const PlannedFile& file, const std::string& target)
{
    if (file.group != 0 && !target.empty()) m_targets.insert(target);
}

CFilesForWorkers::Readiness CFilesForWorkers::Prepare(FileInHand& hand)
{
    if (m_parts.again) {
        const auto place = m_parts.again->find(hand.file.number);
        const bool again = place != m_parts.again->end() && place->second.outcome != FileOutcome::Stopped;
        if (again && PrepareAgain(hand, place->second) != Readiness::Ready) return Readiness::DealtWith;
    }
    TakeUp(hand);
    if (!hand.intents.empty() || hand.results) return TakeUpWhatWasBegun(hand);
    return PrepareWhole(hand);
}

/// A file that has an outcome is begun once more, as far as something is left to do.
CFilesForWorkers::Readiness CFilesForWorkers::PrepareAgain(FileInHand& hand, const DonePlace& place)
{
    auto done = m_parts.readDone(place);
    if (!done) {
        m_problem = "The journal cannot be read again.";
        return Readiness::DealtWith;
    }
    const FileRecord& record = done->record;
    hand.earlierActs = record.acts;
    const bool onlyFinalAction = !record.outputs.empty() && record.finalAction &&
                                 record.finalAction->state == FinalActionRecord::State::Failed &&
                                 !MayHaveStarted(hand.file.number);
    if (onlyFinalAction) {
        hand.toDo = ToDo::FinalAction;
        hand.results = done->record;
    } else if (!TakeBackResults(hand.file)) {
        m_parts.files.Done(hand.file.group);
        m_parts.results.KeepDone(*done, place);
        return Readiness::DealtWith;
    }
    if (!Journaled(m_parts.results.AddAgain(hand.file.number, hand.toDo))) return Readiness::DealtWith;
    // Who asks for a file again that had changed since the plan knows that it has.
    const bool wasSkipped = place.outcome == FileOutcome::Skipped;
    if (const auto stamp = wasSkipped ? platform::StampOf(hand.file.path) : std::nullopt) {
        hand.file.size = stamp->size;
        hand.file.modifiedNanoseconds = stamp->modifiedNanoseconds;
    }
    return Readiness::Ready;
}

/// Whether a program that is said to have failed was allowed to be started as the final action.
bool CFilesForWorkers::MayHaveStarted(int number) const
{
    if (!m_parts.earlier) return false;
    const auto history = m_parts.earlier->NotSaved().find(number);
    if (history == m_parts.earlier->NotSaved().end()) return false;
    const std::vector<Intent>& intents = history->second.intents;
    return std::any_of(intents.begin(), intents.end(),
                       [](const Intent& intent) { return intent.finalAction && intent.act == Act::Start; });
}

/// Frees the names that the file's results took, so that they come out the same. False when doing the file again
/// could do something twice, or when the file is no longer the one that the results were made of.
bool CFilesForWorkers::TakeBackResults(const PlannedFile& file) const
{
    if (!m_parts.earlier) return true;
    const auto history = m_parts.earlier->NotSaved().find(file.number);
    if (history == m_parts.earlier->NotSaved().end()) return true;
    ResumeRules rules = m_parts.facts.rules;
    rules.redoResults = true;
    const ResumePoint point = FindResumePoint(file, history->second.intents, std::nullopt, rules);
    if (point.left != Left::Everything) return false;
    const auto stamp = platform::StampOf(file.path);
    if (!point.takeBack.empty() && (!stamp || !IsAsPlanned(file, *stamp))) return false;
    for (const std::string& path : point.takeBack) (void)platform::DeleteFile(path);
    return true;
}

/// What an earlier start of the run has begun with the file.
void CFilesForWorkers::TakeUp(FileInHand& hand)
{
    if (!m_parts.earlier) return;
    const auto place = m_parts.earlier->Open().find(hand.file.number);
    if (place == m_parts.earlier->Open().end()) return;
    hand.intents = std::move(place->second.intents);
    if (place->second.resultsOffset)
        if (auto done = m_parts.readDone({.offset = *place->second.resultsOffset}))
            hand.results = std::move(done->record);
    if (place->second.earlierOffset)
        if (auto done = m_parts.readDone({.offset = *place->second.earlierOffset}))
            hand.earlierActs = std::move(done->record.acts);
    m_parts.earlier->Open().erase(place);
}

CFilesForWorkers::Readiness CFilesForWorkers::TakeUpWhatWasBegun(FileInHand& hand)
{
    ResumeRules rules = m_parts.facts.rules;
    // Who was to lose its input must have been complete, and what was found in it reported: that is not known.
    rules.redoResults = m_parts.facts.inputLeaves || m_parts.facts.reports;
    ResumePoint point = FindResumePoint(hand.file, hand.intents, hand.results, rules);
    switch (point.left) {
        case Left::Everything:
            for (const std::string& path : point.takeBack) (void)platform::DeleteFile(path);
            hand.results.reset();
            return PrepareWhole(hand);
        case Left::FinalAction:
            hand.toDo = ToDo::FinalAction;
            hand.results = std::move(point.record);
            return PrepareFinalAction(hand);
        case Left::Nothing:
        case Left::Unknowable:
            break;
    }
    DoneFile done = DoneWithoutWorker(hand.file, point.record.outcome, point.record.message);
    if (done.record.message.empty()) done.log.back() = "\tThe file was completed before the run was interrupted.";
    done.record = std::move(point.record);
    Finish(std::move(done), hand);
    return Readiness::DealtWith;
}

CFilesForWorkers::Readiness CFilesForWorkers::PrepareWhole(FileInHand& hand)
{
    // Another file may have its name by now, and it may wait under another one; only the worker knows.
    if (m_parts.facts.rules.movesInputs) return Readiness::Ready;
    const auto stamp = platform::StampOf(hand.file.path);
    if (!stamp) return Skip(hand, FileOutcome::Skipped, "missing since plan");
    if (!IsAsPlanned(hand.file, *stamp)) return Skip(hand, FileOutcome::Skipped, "changed since plan");
    return m_parts.pretended ? PreparePretended(hand) : Readiness::Ready;
}

/// What a real run would find: an input may be a link to another one.
CFilesForWorkers::Readiness CFilesForWorkers::PreparePretended(FileInHand& hand)
{
    if (m_parts.pretended->IsGone(hand.file.path)) return Skip(hand, FileOutcome::Skipped, "missing since plan");
    if (m_parts.pretended->IsReplaced(hand.file.path) && !WasOurs(hand.file))
        return Skip(hand, FileOutcome::Skipped, "changed since plan");
    return Readiness::Ready;
}

CFilesForWorkers::Readiness CFilesForWorkers::PrepareFinalAction(FileInHand& hand)
{
    if (IsAsKnown(hand)) return Readiness::Ready;
    const bool there = platform::FileExists(hand.file.path);
    DoneFile done = DoneWithoutWorker(hand.file, FileOutcome::Incomplete,
                                      std::string("The file ") + (there ? "was changed" : "is missing") +
                                          " since its result was written; the final action is left out.");
    const std::string message = done.record.message;
    done.record = *hand.results;
    done.record.outcome = FileOutcome::Incomplete;
    done.record.message = message;
    Finish(std::move(done), hand);
    return Readiness::DealtWith;
}

CFilesForWorkers::Readiness CFilesForWorkers::Skip(const FileInHand& hand, FileOutcome outcome,
                                                   const std::string& message)
{
    Finish(DoneWithoutWorker(hand.file, outcome, message), hand);
    return Readiness::DealtWith;
}

/// The result of another file may have taken the place of this one, as it does without workers.
bool CFilesForWorkers::IsAsPlanned(const PlannedFile& file, const platform::FileStamp& stamp) const
{
    return IsUnchanged(file, stamp) || WasOurs(file);
}

bool CFilesForWorkers::WasOurs(const PlannedFile& file) const
{
    if (file.group == 0) return false;
    return m_targets.contains(file.path) || (m_parts.earlier && m_parts.earlier->HasTarget(file.path));
}

bool CFilesForWorkers::Journaled(const platform::FileResult& result)
{
    if (!result && m_problem.empty())
        m_problem = "The journal cannot be written (" + platform::ErrorText(result.errorNumber) +
                    "). Nothing more is begun; the run can be resumed.";
    return result.Ok();
}
