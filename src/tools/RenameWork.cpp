#include "tools/RenameWork.h"

#include <set>
#include <utility>

#include "base/Names.h"
#include "base/Overseer.h"
#include "base/Text.h"
#include "common/Log.h"
#include "common/ProductPaths.h"
#include "common/Progress.h"
#include "common/RenameReport.h"
#include "common/SeparatedText.h"
#include "naming/RenameSettings.h"
#include "platform/Files.h"
#include "platform/NarrowText.h"
#include "platform/Paths.h"

namespace {

using platform::Existing;
using platform::FileResult;

/// Others may take a free name before we do; then the next free one is tried, so often at most.
constexpr int kTriesForName = 100;
/// Whoever takes the run back looks at each of them for each file.
constexpr std::size_t kMostFolders = 64;

/// Two names of one file; a link is not the file that it leads to. `unseen`: the answer when one cannot be looked at.
bool IsVeryFile(const std::string& one, const std::string& other, bool unseen)
{
    if (one == other) return true;
    if (platform::NameIsLink(one) || platform::NameIsLink(other)) return false;
    const auto first = platform::StampOf(one), second = platform::StampOf(other);
    return first && second ? first->IsSameFile(*second) : unseen;
}

/// Nothing has the name, for certain.
bool IsMissing(const FileResult& lookedUp) { return platform::ProblemOf(lookedUp) == platform::FileProblem::Missing; }

}  // namespace

std::string CRenameWork::Load(CLogWriter& log)
{
    std::string problem;
    if (const auto text = ReadDecodedText(m_listPath); !text) {
        problem = "it cannot be read (" + text.Error() + ").";
    } else if (auto list = CRenameList::From(text->utf8, FolderOf(m_listPath)); !list) {
        problem = list.Error();
    } else {
        m_list.emplace(std::move(*list));
        log.NameValue("Character set of the list of new names", text->set, 1);
        if (m_list->Size() == 0) problem = "it lists no file.";
    }
    if (problem.empty()) return LoadScript();
    problem = "The " + std::string(kRenameList) + ' ' + m_listPath + " cannot be used: " + problem;
    log.NameValue("Renaming is rejected", problem, 1);
    return problem;
}

/// What is wrong with the settings.
std::string CRenameWork::LoadScript()
{
    if (m_settingsFile.empty()) return {};
    const auto settings = ReadRenameSettings(m_settingsFile);
    if (!settings) return settings.Error();
    if (settings->executeScript) m_scriptText = platform::NarrowFromUtf8(settings->script);
    return {};
}

const CRenameList& CRenameWork::ListFor(const std::string& folder) const
{
    m_list->GoInto(folder);
    return *m_list;
}

std::string CRenameWork::InputPlaces(const ExecutorSettings& settings, const std::vector<std::string>&, Asking,
                                     CLogWriter& log, const TakePlace& take) const
{
    const CRenameList& list = ListFor(settings.alternativeOutputPath);
    for (std::size_t place = 0; take && place < list.Size(); ++place) take(list.InOrder(place).from);
    log.NameNumber("Number of listed files", static_cast<long long>(list.Size()), 1);
    return {};
}

/// What must not be there when a new run begins.
std::string CRenameWork::PlanProblem(const CRenameList& list) const
{
    for (std::size_t at = 0; at < list.Size(); ++at) {
        const PlannedRename file = list.InOrder(at);
        if (platform::FolderExists(file.from))
            return file.from + " is a folder; only files can be renamed. Take it out of the list.";
        const std::string place = WaitingPlaceOf(file.waits);
        if (!file.waits.empty() && platform::NameExists(place))
            return "An earlier run was interrupted while " + file.waits + " stood under the name " + place +
                   ". Go on with that run (--resume) or take it back with \"ferrule undo\".";
    }
    return {};
}

WorkFacts CRenameWork::Facts(const PlanRequest& request) const
{
    WorkFacts facts{.noun = "renaming",
                    .inputsMayBeGone = true,
                    .movesInputs = true,
                    .startsPrograms = !m_scriptText.empty(),
                    .resultsPerFile = 1};
    const CRenameList& list = ListFor(request.settings.alternativeOutputPath);
    facts.objection = PlanProblem(list);
    if (list.Depends())
        facts.oneWorkerReason = "New names depend on each other, so that one process gives them in order.";
    std::set<std::string> folders;
    for (std::size_t at = 0; at < list.Size(); ++at) {
        const PlannedRename file = list.InOrder(at);
        if (!file.to.empty() && FolderOf(file.to) != FolderOf(file.from)) folders.insert(FolderOf(file.to));
    }
    facts.writesAnywhere = folders.size() > kMostFolders;
    if (!facts.writesAnywhere)
        for (const std::string& folder : folders) facts.results.push_back({.folder = folder});
    return facts;
}

void CRenameWork::Begin(const WorkServices& services)
{
    m_run.emplace(services);
    // Private to the run: each worker has such a folder of its own.
    const std::string settings = MakeProductPaths(platform::ApplicationDataFolder()).settingsFolder;
    if (!m_scriptText.empty()) m_script.emplace(m_scriptText, settings + "Scripts", m_order.scriptSeconds);
    m_list->GoInto(services.settings.alternativeOutputPath);
}

ProcessedFile CRenameWork::Process(const std::string& path, int number)
{
    m_run->progress.SetOperationText(path);
    m_run->progress.SetCurrentValue(number);
    ProcessedFile file{.path = path};
    m_lastTarget.clear();
    const std::optional<PlannedRename> rename = m_list->Find(path);
    if (!rename) {
        file.outcome = FileOutcome::Failed;
        file.message = "It is not in the list of new names.";
    } else if (rename->to.empty() && rename->problem.empty()) {
        m_run->log.Line(path + kRenameSkipped);
        file.outcome = FileOutcome::Skipped;
        file.message = std::string("It") + kRenameSkipped + '.';
    } else if (!rename->problem.empty()) {
        Fail(file, rename->to, platform::Failure(platform::FileProblem::NotARegularFile).errorNumber,
             rename->problem);
    } else {
        Rename(*rename, file);
    }
    return file;
}

void CRenameWork::Rename(const PlannedRename& rename, ProcessedFile& file)
{
    const std::string place = WaitingPlaceOf(rename.from);
    const FileResult waits = platform::LookUpName(place);
    // Under its name there may be another file already.
    if (!waits && !IsMissing(waits))
        return Fail(file, rename.to, waits.errorNumber,
                    "It cannot be told whether it stands under the name " + place + " (" +
                        platform::ErrorText(waits.errorNumber) + ").");
    const bool waited = waits.Ok();
    const std::string& from = waited ? place : rename.from;
    if (!waited && rename.from == rename.to && platform::NameExists(from)) {
        return TakeTarget(rename.to, file);
    }
    if (!platform::NameExists(from))
        return Fail(file, rename.to, platform::Failure(platform::FileProblem::Missing).errorNumber,
                    "The file is gone.");
    if (!MakeRoom(rename, file)) return;
    std::string target = rename.to, problem;
    const FileResult moved = Move(from, rename, target, problem);
    if (moved) {
        m_left.insert(rename.from);
        if (target != rename.to) file.message = "Its new name was taken; it is " + FileName(target) + " now.";
        return TakeTarget(target, file);
    }
    Fail(file, target, moved.errorNumber, problem);
    if (!rename.waits.empty()) (void)platform::MoveFile(WaitingPlaceOf(rename.waits), rename.waits, Existing::Fail);
    // Its name may be another's by now, and going on with the run finds it where it is.
    if (waited) file.message += " It stands under the name " + place + " until --resume --retry-failed or an undo.";
}

void CRenameWork::TakeTarget(const std::string& target, ProcessedFile& file)
{
    m_run->log.Line(file.path + " has been renamed to " + target);
    m_lastTarget = target;
    RunScript(target, file);
}

/// The act is asked for, so that nobody who goes on with the run starts the script a second time.
void CRenameWork::RunScript(const std::string& target, ProcessedFile& file) const
{
    if (!m_script) return;
    std::string problem;
    const auto answer =
        Overseer() ? Overseer()->Ask(COverseer::Act::Start, target, m_settingsFile) : COverseer::Answer::Go;
    if (answer == COverseer::Answer::Refuse) problem = "The script was not started.";
    if (answer == COverseer::Answer::Go) problem = m_script->Run(file.path, target);
    if (problem.empty()) return;
    m_run->log.NameValue("Script", problem, 1);
    file.outcome = FileOutcome::Incomplete;
    file.message = "It has been renamed to " + target + ". " + problem;
}

/// `problem`: why not, a sentence.
FileResult CRenameWork::Move(const std::string& from, const PlannedRename& rename, std::string& target,
                             std::string& problem) const
{
    const bool isOwn = IsVeryFile(from, target, false);
    if (!isOwn && m_order.overwrite && !IsMissing(platform::LookUpName(target)) && IsOfThisRun(rename)) {
        problem = "The name is taken by a file of this run, which is not replaced.";
        return platform::Failure(platform::FileProblem::Exists);
    }
    if (!isOwn && IsStillToLeave(target)) {
        problem = "The name is that of a file of the list which has not got its own new name.";
        return platform::Failure(platform::FileProblem::Exists);
    }
    const Existing existing = isOwn || m_order.overwrite ? Existing::Replace : Existing::Fail;
    FileResult moved = platform::MoveFile(from, target, existing);
    for (int tries = 0; tries < kTriesForName && existing == Existing::Fail &&
                        platform::ProblemOf(moved) == platform::FileProblem::Exists;
         ++tries) {
        target = UniqueUnderscore(rename.to, platform::NameExists);
        moved = platform::MoveFile(from, target, existing);
    }
    if (!moved) problem = platform::ErrorText(moved.errorNumber) + '.';
    return moved;
}

bool CRenameWork::IsStillToLeave(const std::string& path) const
{
    const std::optional<PlannedRename> other = m_list->Find(path);
    if (!other || other->to.empty() || !other->problem.empty() || other->to == other->from) return false;
    return platform::NameExists(path) && !m_left.contains(other->from);
}

/// Whether what stands under the new name is an input, or has got the name in this run.
bool CRenameWork::IsOfThisRun(const PlannedRename& rename) const
{
    if (m_list->IsInput(rename.to)) return true;
    return !rename.sameName.empty() && IsVeryFile(rename.sameName, rename.to, true);
}

/// False, and the file has failed, when who has the name cannot go.
bool CRenameWork::MakeRoom(const PlannedRename& rename, ProcessedFile& file)
{
    if (rename.waits.empty() || !platform::NameExists(rename.waits)) return true;
    const std::string place = WaitingPlaceOf(rename.waits);
    if (platform::NameExists(place)) return true;  // an earlier start of the run has done it
    const FileResult moved = platform::MoveFile(rename.waits, place, Existing::Fail);
    if (moved) m_left.insert(rename.waits);
    if (moved) return true;
    Fail(file, rename.to, moved.errorNumber,
         rename.waits + ", which has the name, cannot be moved (" + platform::ErrorText(moved.errorNumber) + ").");
    return false;
}

void CRenameWork::Fail(ProcessedFile& file, const std::string& target, int errorNumber,
                       const std::string& reason) const
{
    const std::string what = RenameFailure(target, errorNumber);
    m_run->log.Line(file.path + what);
    m_run->log.NameValue("Reason", reason, 1);
    file.outcome = FileOutcome::Failed;
    file.message = "It" + what + ". " + reason;
}
