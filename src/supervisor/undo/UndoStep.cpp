#include "supervisor/undo/UndoStep.h"

#include <algorithm>
#include <array>
#include <functional>
#include <utility>

#include "base/Names.h"
#include "platform/FileDigest.h"
#include "platform/FileKeeper.h"

using platform::Existing;
using platform::FileResult;
using Kind = UndoStep::Kind;

bool NameState::Is(const FormerFile& former) const
{
    if (kind != NameState::Kind::File) return false;
    return former.link.empty() ? link.empty() && Holds(former.sha256) : link == former.link;
}

namespace {

/// Not for a name whose folder is gone or lets nobody look.
bool IsCertainlyFree(const std::string& path)
{
    platform::FileResult looked;
    (void)platform::TraitsOf(path, &looked);
    return platform::ProblemOf(looked) == platform::FileProblem::Missing && platform::FolderExists(FolderOf(path));
}

}  // namespace

bool CNames::IsTaken(const std::string& path) { return platform::NameExists(path); }

NameState CNames::At(const std::string& path)
{
    if (!platform::NameExists(path))
        return {.kind = IsCertainlyFree(path) ? NameState::Kind::Nothing : NameState::Kind::Unknown};
    NameState state{.kind = NameState::Kind::Other, .link = platform::LinkText(path)};
    const auto stamp = platform::StampOf(path);
    if (state.link.empty()) state.stamp = stamp;
    // Where links cannot be read, they are nothing that a run has made.
    if (state.link.empty() && platform::NameIsLink(path)) return state;
    if (stamp && stamp->regular) state.sha256 = platform::Sha256OfFile(path);
    if ((stamp && stamp->regular) || !state.link.empty()) state.kind = NameState::Kind::File;
    return state;
}

std::string_view UndoWord(UndoStep::Kind kind)
{
    constexpr std::array<std::string_view, 5> kWords = {"nothing", "remove", "put-back", "move-back", "leave"};
    return kWords[static_cast<std::size_t>(kind)];
}

namespace {

UndoStep Leave(std::string problem) { return {.kind = Kind::Leave, .problem = std::move(problem)}; }

/// Whatever stood there would seem to be gone.
UndoStep LeaveUnknown(const std::string& path)
{
    return Leave("The folder of " + path +
                 " is not there or cannot be looked at; connect its disk, or make the folder.");
}

/// What the act took away cannot be put back; empty when it can, or when it took nothing away.
std::string ProblemOfKept(const IntendedAct& act, const std::string& place, CNames& names)
{
    if (!act.former) return {};
    if (act.former->kept.empty()) return "What stood at " + place + " before was not kept.";
    const NameState kept = names.At(act.former->kept);
    if (kept.kind == NameState::Kind::Unknown)
        return "The original of " + place + " is no longer at " + act.former->kept +
               ", or its folder is not connected or cannot be looked at.";
    if (kept.kind != NameState::Kind::File)
        return "The original of " + place + " is no longer at " + act.former->kept + '.';
    if (!kept.Is(*act.former))
        return "The original of " + place + " was changed since it was kept at " + act.former->kept + '.';
    return {};
}

UndoStep DecidePut(const ActToUndo& undo, CNames& names)
{
    const IntendedAct& act = undo.act;
    const NameState there = names.At(act.target);
    if (there.kind == NameState::Kind::Unknown) return LeaveUnknown(act.target);
    const bool ours = there.Holds(act.sha256) && there.link.empty();
    if (!act.former && there.IsFree()) {
        if (undo.mayNotHave) return {};
        return {.remark = "The result " + act.target +
                          " is no longer there: somebody has removed it, or moved it to another place."};
    }
    // The result may have the very content of the original.
    if (act.former && there.Is(*act.former) && (!ours || !names.IsTaken(act.former->kept))) return {};
    if (!ours && !there.IsFree()) {
        // Somebody took the name before the run could.
        if (undo.mayNotHave && !act.former) return {};
        return Leave(act.target + " was changed since the run wrote it.");
    }
    if (!act.former && act.replaces) return Leave("What stood at " + act.target + " before was not kept.");
    if (!act.former) return {.kind = Kind::Remove, .seen = there.stamp};
    if (std::string problem = ProblemOfKept(act, act.target, names); !problem.empty())
        return undo.mayNotHave && !ours ? UndoStep{} : Leave(std::move(problem));
    return {.kind = Kind::PutBack, .restoresKept = true, .seen = there.stamp};
}

UndoStep DecideMove(const ActToUndo& undo, CNames& names)
{
    const IntendedAct& act = undo.act;
    const NameState source = names.At(act.file), target = names.At(act.target);
    for (const auto& [state, path] : {std::pair(&source, &act.file), std::pair(&target, &act.target)})
        if (state->kind == NameState::Kind::Unknown) return LeaveUnknown(*path);
    // Somebody may have left a link that leads to the other place.
    const bool back =
        source.Holds(act.sha256) && (source.link.empty() || source.link == target.link || target.IsFree());
    const bool moved = target.Holds(act.sha256) && (!back || target.link == source.link);
    if (back) {
        // It never went, or is back; a copy of it at the target is the rest of a move between file systems, and a
        // free name there that of an original which was not put back yet.
        if (act.former ? target.Is(*act.former) || !(moved || target.IsFree()) : !moved || undo.mayNotHave) return {};
        return {.kind = act.former ? Kind::PutBack : Kind::Remove,
                .restoresKept = act.former.has_value(),
                .problem = ProblemOfKept(act, act.target, names),
                .seen = target.stamp};
    }
    if (!moved)
        return undo.mayNotHave && !source.IsFree()
                   ? UndoStep{}
                   : Leave("The file that was moved is neither at " + act.target + " nor back at " + act.file + '.');
    if (!source.IsFree())
        return Leave("The name " + act.file + " is taken again, so the file stays at " + act.target + '.');
    std::string problem = ProblemOfKept(act, act.target, names);
    const bool restores = act.former && problem.empty();
    return {.kind = Kind::MoveBack, .restoresKept = restores, .problem = std::move(problem), .seen = target.stamp};
}

UndoStep DecideDelete(const ActToUndo& undo, CNames& names)
{
    const IntendedAct& act = undo.act;
    const NameState there = names.At(act.file);
    if (there.kind == NameState::Kind::Unknown) return LeaveUnknown(act.file);
    if (there.Holds(act.sha256) || (act.former && there.Is(*act.former))) return {};
    if (!there.IsFree()) return Leave("The name " + act.file + " is taken again by another file.");
    if (!act.former || act.former->kept.empty()) return Leave("The deleted file " + act.file + " was not kept.");
    if (std::string problem = ProblemOfKept(act, act.file, names); !problem.empty()) return Leave(std::move(problem));
    return {.kind = Kind::PutBack, .restoresKept = true};
}

// ---- doing it

UndoneStep Failed(const FileResult& result, const std::string& what)
{
    return {.done = false, .problem = what + " (" + platform::ErrorText(result.errorNumber) + ")."};
}

/// Rights and times come with the file; where the way went over another file system, some may be missing.
std::string GiveBackTraits(const std::string& path, const FileTraits& traits)
{
    const auto now = platform::TraitsOf(path);
    if ((now && now->Fulfil(traits)) || platform::NameIsLink(path) || platform::GiveTraits(path, traits)) return {};
    return path + " is back, but its owner, rights, times or attributes could not be given back completely.";
}

bool OnOneDisk(const std::string& a, const std::string& b)
{
    const auto stampA = platform::StampOf(FolderOf(a)), stampB = platform::StampOf(FolderOf(b));
    return stampA && stampB && stampA->device == stampB->device;
}

/// To another file system: what it leads to would be moved instead of the link.
FileResult PutBackLink(const FormerFile& former, const std::string& place, Existing existing)
{
    if (existing == Existing::Replace)
        if (const FileResult removed = platform::DeleteFile(place); !removed) return removed;
    platform::CFileKeeper keeper(false);
    const FileResult made = keeper.Keep(former.kept, place);
    if (made) (void)platform::DeleteFile(former.kept);
    return made;
}

UndoneStep PutBack(const FormerFile& former, const std::string& place, Existing existing)
{
    const FileResult moved = former.link.empty() || OnOneDisk(former.kept, place)
                                 ? platform::MoveFile(former.kept, place, existing)
                                 : PutBackLink(former, place, existing);
    if (!moved) return Failed(moved, "The original of " + place + " cannot be put back from " + former.kept);
    return {.problem = GiveBackTraits(place, former.traits)};
}

/// Of a file that is back after a move.
std::string GiveBackMovedTraits(const IntendedAct& act)
{
    return act.act == Act::Move && act.traits ? GiveBackTraits(act.file, *act.traits) : std::string();
}

UndoneStep MoveBack(const IntendedAct& act, bool restoresKept)
{
    if (const FileResult moved = platform::MoveFile(act.target, act.file, Existing::Fail); !moved)
        return Failed(moved, act.target + " cannot be moved back to " + act.file);
    const std::string problem = GiveBackMovedTraits(act);
    UndoneStep undone;
    if (restoresKept) undone = PutBack(*act.former, act.target, Existing::Fail);
    if (!problem.empty()) undone.problem = problem + (undone.problem.empty() ? "" : " ") + undone.problem;
    return undone;
}

UndoneStep Remove(const IntendedAct& act)
{
    if (const FileResult removed = platform::DeleteFile(act.target); !removed)
        return Failed(removed, act.target + " cannot be removed");
    return {.problem = GiveBackMovedTraits(act)};
}

/// An act that was kept for and did not happen after all has left a second copy of what is still in its place.
void DropSpareCopy(const IntendedAct& act, const std::string& place)
{
    if (!act.former || act.former->kept.empty()) return;
    CNames names;
    if (names.At(place).Is(*act.former) && names.At(act.former->kept).Is(*act.former))
        (void)platform::DeleteFile(act.former->kept);
}

UndoStep DecideUndo(const ActToUndo& act, CNames& names)
{
    switch (act.act.act) {
        case Act::Put:
            return DecidePut(act, names);
        case Act::Move:
            return DecideMove(act, names);
        case Act::Delete:
            return DecideDelete(act, names);
        case Act::Start:
            return Leave("The program " + act.act.target + " was started for " +
                         (act.input.empty() ? act.act.file : act.input) + "; what it did stays.");
    }
    return {};
}

}  // namespace

UndoStep CUndoDecider::Decide(const ActToUndo& undo)
{
    const IntendedAct& act = undo.act;
    UndoStep step = DecideUndo(undo, m_names);
    if (step.kind == Kind::Leave && (act.act == Act::Move || act.act == Act::Delete)) m_left.insert(act.number);
    const bool takesResult = act.act == Act::Put && (step.kind == Kind::Remove || step.kind == Kind::PutBack);
    if (!takesResult || act.target == undo.input) return step;
    const bool gone = !undo.input.empty() && !m_names.IsTaken(undo.input);
    if (!gone && !m_left.contains(act.number)) return step;
    return Leave("The result " + act.target + " stays, because " +
                 (undo.input.empty() ? "the file that it was made from" : undo.input) + " is not back.");
}

UndoneStep DoUndo(const ActToUndo& undo, const UndoStep& step)
{
    const IntendedAct& act = undo.act;
    const std::string& place = act.act == Act::Delete ? act.file : act.target;
    // Reading the originals may have taken its time.
    if (step.seen && platform::StampOf(place) != step.seen)
        return {.done = false, .problem = place + " was changed just now and stays."};
    switch (step.kind) {
        case Kind::Nothing:
            DropSpareCopy(act, place);
            return {};
        case Kind::Leave:
            return {};
        case Kind::Remove:
            return Remove(act);
        case Kind::PutBack:
            // Only what was seen there is replaced, which is the run's own result.
            return PutBack(*act.former, place, step.seen ? Existing::Replace : Existing::Fail);
        case Kind::MoveBack:
            return MoveBack(act, step.restoresKept);
    }
    return {};
}

// ---- names in the future

namespace {

std::uint64_t HashOf(const std::string& path) { return std::hash<std::string>{}(path); }

std::vector<std::string> PathsOf(const ActToUndo& undo)
{
    const IntendedAct& act = undo.act;
    if (act.act == Act::Start) return {};
    std::vector<std::string> paths;
    if (act.act != Act::Put) paths.push_back(act.file);
    if (act.act != Act::Delete) paths.push_back(act.target);
    if (act.act == Act::Put && !undo.input.empty()) paths.push_back(undo.input);
    return paths;
}

}  // namespace

void CFutureNames::Expect(const ActToUndo& act)
{
    for (const std::string& path : PathsOf(act)) m_uses.push_back(HashOf(path));
}

void CFutureNames::BeginToUse()
{
    std::ranges::sort(m_uses);
    m_past.assign(m_uses.size(), false);
}

NameState CFutureNames::At(const std::string& path)
{
    const auto known = m_states.find(path);
    return known == m_states.end() ? CNames::At(path) : known->second;
}

bool CFutureNames::IsTaken(const std::string& path)
{
    const auto known = m_states.find(path);
    return known == m_states.end() ? CNames::IsTaken(path) : !known->second.IsFree();
}

void CFutureNames::Set(const std::string& path, NameState state) { m_states[path] = std::move(state); }

/// What no further act touches need not be remembered.
void CFutureNames::Used(const std::string& path)
{
    const auto [first, end] = std::ranges::equal_range(m_uses, HashOf(path));
    for (auto use = first; use != end; ++use) {
        const auto place = static_cast<std::size_t>(use - m_uses.begin());
        if (m_past[place]) continue;
        m_past[place] = true;
        if (use + 1 == end) m_states.erase(path);
        return;
    }
}

void CFutureNames::Undone(const ActToUndo& undo, const UndoStep& step)
{
    const IntendedAct& act = undo.act;
    const NameState nothing, former{.kind = NameState::Kind::File,
                                    .sha256 = act.former ? act.former->sha256 : "",
                                    .link = act.former ? act.former->link : ""};
    const std::string& place = act.act == Act::Delete ? act.file : act.target;
    if (step.kind == Kind::MoveBack) Set(act.file, {.kind = NameState::Kind::File, .sha256 = act.sha256});
    if (step.kind == Kind::Remove || step.kind == Kind::MoveBack) Set(place, nothing);
    if (step.restoresKept) Set(place, former);
    for (const std::string& path : PathsOf(undo)) Used(path);
}
