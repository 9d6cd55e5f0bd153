#include "openhost/jobs/Jobs.h"

#include <algorithm>

#include "base/Text.h"
#include "openhost/app/AppState.h"
#include "platform/FileDigest.h"
#include "platform/Files.h"
#include "protocol/RenameOrder.h"

namespace openhost {

namespace {

constexpr std::size_t kRemembered = 16;

}  // namespace

std::optional<platform::FileStamp> StampOfRegularFile(const std::string& path)
{
    const auto stamp = platform::StampOf(path);
    return stamp && stamp->regular ? stamp : std::nullopt;
}

std::string CContentHashes::Of(const std::string& path)
{
    const auto stamp = StampOfRegularFile(path);
    if (!stamp) return {};
    const auto known =
        std::find_if(m_known.begin(), m_known.end(), [&](const Entry& entry) { return entry.stamp == *stamp; });
    if (known != m_known.end()) return known->sha256;
    std::string sha256 = platform::Sha256OfFile(path);
    // Not what was looked at above when somebody wrote into it meanwhile.
    if (!sha256.empty() && StampOfRegularFile(path) == stamp) Keep(*stamp, sha256);
    return sha256;
}

void CContentHashes::Renamed(const platform::FileStamp& former, const std::string& path)
{
    const auto now = StampOfRegularFile(path);
    if (!now || !now->IsSameFile(former) || now->size != former.size ||
        now->modifiedNanoseconds != former.modifiedNanoseconds)
        return;
    for (const Entry& entry : m_known)
        if (entry.stamp == former) return Keep(*now, std::string(entry.sha256));
}

void CContentHashes::Keep(const platform::FileStamp& stamp, std::string sha256)
{
    m_known.push_front({stamp, std::move(sha256)});
    if (m_known.size() > kRemembered) m_known.pop_back();
}

CLedger::CLedger(CJobSource& source, std::function<std::uint64_t()> clock)
    : m_source(source), m_clock(std::move(clock))
{
    m_file.beganAt = m_clock();
}

void CLedger::InputBegins(const JobInputFile& input)
{
    m_file = {};
    m_file.beganAt = m_clock();
    m_file.input = input;
    NoteBefore(input.path);
}

/// Looked at only the first time: later the path may hold something that this run has put there.
void CLedger::NoteBefore(const std::string& path)
{
    if (!m_source.WantsRecords() || m_file.before.contains(path)) return;
    Content content;
    if (const auto stamp = StampOfRegularFile(path))
        content = {stamp->size, m_source.WantsHashes() ? m_hashes.Of(path) : std::string()};
    m_file.before[path] = std::move(content);
}

/// What is put in the place of a link goes where the link leads, and is noted there.
CLedger::Content CLedger::Before(const std::string& path)
{
    if (!m_file.before.contains(path)) {
        const auto linked = m_file.before.find(platform::CanonicalPath(path));
        if (linked != m_file.before.end()) return linked->second;
        NoteBefore(path);
    }
    return m_file.before[path];
}

CLedger::Answer CLedger::Ask(Act act, const std::string& file, const std::string& target)
{
    if (!m_source.WantsRecords()) return AskSource({act, m_file.finalActionBegun, file, target, {}, {}});
    SettleLast();
    Deed deed{act, m_file.finalActionBegun, file, target, {}, StampOfRegularFile(file)};
    deed.copy = m_file.copying && act == Act::Put && !deed.finalAction;
    // A run that finds its inputs itself does not tell which one it is at: whatever is going to change may be it.
    if (!m_file.input) NoteBefore(act == Act::Put ? target : file);
    if (deed.stamp) deed.sha256 = m_hashes.Of(file);
    if (const auto known = m_file.written.find(target); act == Act::Put && known != m_file.written.end())
        deed.protection = known->second;
    const Answer answer = MayBeOnRecord(deed) ? AskAfterKeeping(deed) : Answer::Refuse;
    deed.done = answer != Answer::Refuse;
    m_file.unsettled = answer == Answer::Go;
    m_file.deeds.push_back(std::move(deed));
    return answer;
}

/// After an interruption the hash tells whether an act has happened: without it, it must not.
bool CLedger::MayBeOnRecord(const Deed& deed) const
{
    return !m_file.input || m_source.Pretends() || deed.act == Act::Start || !deed.sha256.empty();
}

namespace {

bool HasSameContent(const platform::FileStamp& stamp, const std::string& path)
{
    const auto now = StampOfRegularFile(path);
    return now && now->IsSameFile(stamp) && now->size == stamp.size &&
           now->modifiedNanoseconds == stamp.modifiedNanoseconds;
}

}  // namespace

/// Notes what the act takes away, and keeps it when that is wanted.
void CLedger::KeepFormer(Deed& deed)
{
    if (deed.act == Act::Start) return;
    if (deed.act == Act::Move) deed.traits = platform::TraitsOf(deed.file);
    const std::string& path = deed.act == Act::Delete ? deed.file : deed.target;
    auto former = LookAtFormer(path);
    if (!former) deed.objection = former.Error();
    if (!former || !*former) return;
    deed.former = std::move(*former);
    if (!m_originals) m_originals.emplace(m_source.KeepsOriginals());
    const bool keeps = m_originals->Wanted() && m_file.input;
    // Hashed only where that is known anyway, or needed to put the file back.
    const bool hashes = deed.former->link.empty() && (keeps || m_file.before.contains(path));
    if (hashes) deed.former->sha256 = m_hashes.Of(path);
    if (keeps) deed.objection = KeepOriginal(path, *deed.former);
}

/// A sentence when it cannot be kept as it is described.
std::string CLedger::KeepOriginal(const std::string& path, FormerFile& former)
{
    const auto stamp = StampOfRegularFile(path);
    if (former.link.empty() && former.sha256.empty())
        return "The original " + path + " cannot be read, so nothing was done to it.";
    const auto kept = m_originals->Keep(path, m_file.input->number);
    if (!kept) return kept.Error();
    former.kept = *kept;
    if (stamp) m_hashes.Renamed(*stamp, path);  // a second name changes the stamp and not the content
    if (!stamp || HasSameContent(*stamp, path)) return {};
    return "The original " + path + " was changed while it was kept, so nothing was done to it.";
}

/// Asks with the original kept. What stood at the path may have changed while somebody thought about it: then it is
/// not the one that was kept.
CLedger::Answer CLedger::AskAfterKeeping(Deed& deed)
{
    if (m_source.Pretends()) return AskSource(deed);
    KeepFormer(deed);
    const std::string& path = deed.act == Act::Delete ? deed.file : deed.target;
    const std::string kept = deed.former ? deed.former->kept : std::string();
    const auto before = kept.empty() ? std::nullopt : StampOfRegularFile(path);
    Answer answer = AskSource(deed);
    if (!deed.objection.empty()) answer = Answer::Refuse;
    if (kept.empty()) return answer;
    if (answer == Answer::Go && before && StampOfRegularFile(path) != before) answer = Answer::Refuse;
    if (answer != Answer::Go) {
        const CUnwatched ownFile;
        (void)platform::DeleteFile(kept);
    }
    return answer;
}

namespace {

template <class Deed>
std::optional<std::uint64_t> SizeOf(const Deed& deed)
{
    const bool writes = deed.act == Act::Put || deed.act == Act::Move;
    return writes && deed.stamp ? std::optional(deed.stamp->size) : std::nullopt;
}

}  // namespace

CLedger::Answer CLedger::AskSource(const Deed& deed)
{
    const int number = m_file.input ? m_file.input->number : 0;
    return m_source.MayAct(
        {.number = number,
         .finalAction = deed.finalAction,
         .act = deed.act,
         .file = deed.file,
         .target = deed.target,
         .sha256 = deed.sha256,
         .former = deed.former,
         .traits = deed.traits,
         .objection = TextFromBytes(deed.objection),
         .copy = deed.copy,
         .size = SizeOf(deed),
         .protection = deed.act == Act::Put && !deed.finalAction && m_file.input
                           ? ProtectionChange{ProtectionBefore(m_file.input->path), deed.protection}
                           : ProtectionChange{}});
}

void CLedger::Read(const std::string& path, const ProtectionState& protection)
{
    m_file.read.emplace(path, protection);
}

void CLedger::WillWrite(const std::string& path, const ProtectionState& protection)
{
    m_file.written.insert_or_assign(path, protection);
}

std::optional<ProtectionState> CLedger::ProtectionBefore(const std::string& path) const
{
    const auto known = m_file.read.find(path);
    return known == m_file.read.end() ? std::nullopt : std::optional(known->second);
}

/// What was copied, or only got another name, is protected as it was.
ProtectionChange CLedger::ProtectionDone(const FileRecord& record) const
{
    ProtectionChange change{ProtectionBefore(record.path), {}};
    for (const Deed& deed : m_file.deeds) {
        if (!deed.done || deed.finalAction || deed.copy || deed.act != Act::Put) continue;
        const bool same = !deed.sha256.empty() && deed.sha256 == record.sha256;
        change.after = deed.protection ? deed.protection : same ? change.before : std::nullopt;
    }
    return change;
}

std::optional<bool> CLedger::Exists(const std::string& path) const
{
    return m_source.Pretends() ? m_source.Exists(path) : std::nullopt;
}

void CLedger::SettleLast()
{
    if (!m_file.unsettled) return;
    m_file.unsettled = false;
    Deed& deed = m_file.deeds.back();
    deed.done = HasHappened(deed);
    if (deed.done && deed.stamp && (deed.act == Act::Put || deed.act == Act::Move))
        m_hashes.Renamed(*deed.stamp, deed.target);
}

bool CLedger::HasHappened(const Deed& deed)
{
    switch (deed.act) {
        case Act::Put: {
            const auto there = StampOfRegularFile(deed.target);
            if (!there || !deed.stamp) return false;
            return there->IsSameFile(*deed.stamp) ||
                   (there->size == deed.stamp->size && m_hashes.Of(deed.target) == deed.sha256);
        }
        case Act::Move:
            return !platform::NameExists(deed.file) && platform::NameExists(deed.target);
        case Act::Delete:
            return !platform::NameExists(deed.file);
        case Act::Start:
            return true;  // whether it could be started shows in the file's outcome
    }
    return false;
}

std::vector<FileOutput> CLedger::Outputs() const
{
    std::vector<FileOutput> outputs;
    for (const Deed& deed : m_file.deeds) {
        if (deed.finalAction || !deed.done || (deed.act != Act::Put && deed.act != Act::Move)) continue;
        // What has got another name since is no longer where it was put.
        std::erase_if(outputs,
                      [&](const auto& output) { return output.path == deed.target || output.path == deed.file; });
        if (deed.act == Act::Move && IsWaitingPlace(deed.target)) continue;
        outputs.push_back({deed.target, deed.sha256, deed.copy, SizeOf(deed)});
    }
    return outputs;
}

std::optional<FinalActionRecord> CLedger::FinalActionOf(FileOutcome outcome) const
{
    using State = FinalActionRecord::State;
    if (!m_file.finalActionBegun) return std::nullopt;
    const bool fine = outcome == FileOutcome::Saved || outcome == FileOutcome::CopiedUnchanged;
    std::optional<FinalActionRecord> action;
    for (const Deed& deed : m_file.deeds) {
        if (!deed.finalAction) continue;
        // Across file systems a file is moved by putting a copy and deleting the file.
        const bool secondHalf = action && action->act == Act::Put && deed.act == Act::Delete;
        const std::string target = secondHalf ? action->target : deed.target;
        const bool done = deed.act == Act::Start ? deed.done && fine : deed.done;
        action = {secondHalf ? Act::Move : deed.act, target, done ? State::Done : State::Failed};
    }
    if (!action && !fine) action.emplace();
    return action;
}

/// The act that gave the input another name; null when there was none.
const CLedger::Deed* CLedger::OwnMove(const std::string& path) const
{
    const auto own = std::ranges::find_if(m_file.deeds, [&](const Deed& deed) {
        return !deed.finalAction && deed.act == Act::Move && (deed.file == path || deed.file == WaitingPlaceOf(path));
    });
    return own == m_file.deeds.end() ? nullptr : &*own;
}

FileRecord CLedger::NewRecord(const std::string& path)
{
    FileRecord record;
    record.number = m_file.input ? m_file.input->number : m_filesDone;
    record.path = m_file.input ? m_file.input->path : path;
    const Content before = Before(record.path);
    record.size = before.size;
    record.sha256 = before.sha256;
    return record;
}

FileRecord CLedger::FileDone(const std::string& path, FileOutcome outcome, const std::string& message)
{
    SettleLast();
    ++m_filesDone;
    FileRecord record = NewRecord(path);
    record.outcome = outcome;
    record.message = TextFromBytes(message);
    record.outputs = Outputs();
    // Another file may have had the input's name when the input began.
    if (const Deed* const moved = OwnMove(record.path)) record.sha256 = moved->sha256;
    record.finalAction = FinalActionOf(outcome);
    record.signaturesBroken = m_file.signaturesBroken;
    record.protection = ProtectionDone(record);
    const std::uint64_t now = m_clock();
    record.milliseconds = static_cast<std::int64_t>(now - std::min(m_file.beganAt, now));
    m_file = {};
    m_file.beganAt = now;
    return record;
}

CJobs::CJobs() : m_source(std::make_shared<CJobSource>())
{
    Install();
    m_former = InstallOverseer(m_ledger.get());
}

CJobs::~CJobs() { InstallOverseer(m_former); }

void CJobs::TakeFrom(std::shared_ptr<CJobSource> source)
{
    m_source = std::move(source);
    Install();
    InstallOverseer(m_ledger.get());
}

void CJobs::Install() { m_ledger = std::make_unique<CLedger>(*m_source, Part<AppClock>().milliseconds); }

const JobInputFile* CJobs::NextInput()
{
    m_input = m_source->NextInput();
    if (!m_input) return nullptr;
    m_ledger->InputBegins(*m_input);
    return &*m_input;
}

}  // namespace openhost
