#include <qpdf/Buffer.hh>
#include <qpdf/QPDFWriter.hh>

#include "base/Overseer.h"
#include "openhost/pdf/DocumentFiles.h"
#include "openhost/pdf/DocumentState.h"
#include "openhost/pdf/FormerTexts.h"
#include "openhost/pdf/IncrementalUpdate.h"
#include "openhost/pdf/PageTree.h"
#include "openhost/pdf/PdfError.h"
#include "openhost/pdf/ReadBack.h"
#include "openhost/pdf/WriterPreparation.h"
#include "openhost/pdf/Xmp.h"
#include "platform/Files.h"
#include "platform/Paths.h"

namespace openhost {
namespace {

void CheckMaySave(const CPdfDocument& document, const CPdfDocument::State& state)
{
    if (state.locked) throw CPdfError(PdfProblem::NeedsPassword, state.description + ": needs a password");
    if (state.refusal) throw CPdfError(*state.refusal);
    if (!state.maySave && !document.Allows(PdfRight::FullSave)) {
        throw CPdfError(PdfProblem::NotPermitted, state.description + ": changing the document is not permitted");
    }
}

/// Saving in place would either take the link away or change a file in a folder that nobody named.
void RefuseOwnLink(const CPdfDocument::State& state, const std::string& target)
{
    if (target != state.path || !platform::NameIsLink(target)) return;
    throw CPdfError(PdfProblem::NotAFile, target +
                                              ": is a symbolic link and cannot be saved in place; name the file "
                                              "that it leads to, or save into another folder");
}

bool HasObjectStreams(QPDF& library)
{
    for (const auto& [id, entry] : library.getXRefTable()) {
        if (entry.getType() == 2) return true;
    }
    return false;
}

/// Every stream is copied as it is. To pack object streams the writer must be allowed to pack, and it would then
/// recode all others; each one has to be exempted. Descriptive metadata are not: the writer unpacks them where they
/// stay unencrypted.
void CopyStreams(QPDFWriter& writer, QPDF& library)
{
    const bool pack = HasObjectStreams(library);
    writer.setObjectStreamMode(qpdf_o_preserve);
    writer.setDecodeLevel(qpdf_dl_none);
    writer.setCompressStreams(pack);
    if (!pack) return;
    for (const auto& [id, entry] : library.getXRefTable()) {
        QPDFObjectHandle object = library.getObject(id);
        if (object.isStream() && !object.getDict().isDictionaryOfType("/Metadata")) object.setFilterOnWrite(false);
    }
}

/// Makes the document one that the writer writes faithfully.
PreparedDocument Prepare(CPdfDocument::State& state, bool forget, const std::vector<FormerText>& former)
{
    QPDF& library = state.Current();
    MendPageTree(library);
    SyncMetadata(library, state.changedInfo, forget);
    DropFormerSubjects(library, former);
    return PrepareForWriter(library, state.source.get());
}

void ApplySecurity(QPDFWriter& writer, const CPdfDocument::State& state)
{
    if (state.change == SecurityChange::Remove) writer.setPreserveEncryption(false);
    if (state.change == SecurityChange::Apply) writer.copyEncryptionParameters(*EncryptionDonor(state.plan));
}

/// Ends the writing between two objects when the client cancels or the disk is full.
class CSaveProgress final : public QPDFWriter::ProgressReporter {
public:
    CSaveProgress(const PdfSaveOptions& options, const COutputFile& file, std::string name)
        : m_options(options), m_file(file), m_name(std::move(name))
    {
    }
    void reportProgress(int percent) override
    {
        m_file.Check();
        if (m_options.progress) m_options.progress(percent);
        if (m_options.cancelled && m_options.cancelled()) {
            throw CPdfError(PdfProblem::Cancelled, m_name + ": saving was cancelled");
        }
    }

private:
    const PdfSaveOptions& m_options;
    const COutputFile& m_file;
    std::string m_name;
};

void WriteInto(COutputFile& file, CPdfDocument::State& state, const PdfSaveOptions& options,
               const std::string& target, bool linearise)
{
    CFilePipeline pipeline(file);
    QPDF& library = state.Current();
    QPDFWriter writer(library);
    writer.setOutputPipeline(&pipeline);
    CopyStreams(writer, library);
    ApplySecurity(writer, state);
    writer.setLinearization(linearise);
    writer.registerProgressReporter(std::make_shared<CSaveProgress>(options, file, target));
    try {
        writer.write();
    } catch (...) {
        file.Check();  // the reason, when it is the disk
        throw;
    }
}

platform::Existing WhatExists(const PdfSaveOptions& options)
{
    return options.mustNotExist ? platform::Existing::Fail : platform::Existing::Replace;
}

/// The large source of a document that is about to replace its own file; null when nothing stands in the way.
CFileSource* SourceInTheWay(const CPdfDocument::State& state, const std::string& target)
{
    if (!platform::kOpenFilesKeepTheirNames) return nullptr;
    auto* const source = dynamic_cast<CFileSource*>(state.source.get());
    if (!source) return nullptr;
    const auto mine = platform::StampOf(source->getName()), other = platform::StampOf(target);
    const bool same = mine && other && mine->device == other->device && mine->inode == other->inode;
    return same ? source : nullptr;
}

/// A copy leaves the document as it is, reading from what is replaced.
void LetGoOfTarget(CFileSource* source, const PdfSaveOptions& options)
{
    if (source) options.copy ? source->Swallow() : source->LetGo();
    if (options.beforeReplacing) options.beforeReplacing();
}

/// How the file is going to be encrypted.
std::optional<WrittenEncryption> EncryptionToCome(const CPdfDocument::State& state)
{
    if (state.change == SecurityChange::Apply)
        return WrittenEncryption{state.plan.record, state.plan.fileKey, state.plan.userPasswordBytes,
                                 state.plan.ownerPasswordBytes};
    if (state.change == SecurityChange::Remove || !state.encryption) return std::nullopt;
    return WrittenEncryption{*state.encryption, state.fileKey, state.passwordBytes};
}

void ReadBack(COutputFile& file, CPdfDocument::State& state, const PdfSaveOptions& options, const std::string& target,
              const std::vector<FormerText>& former)
{
    const std::string& path = file.Complete();
    if (path.empty()) return;  // a trial run writes nothing
    if (options.beforeReadBack) options.beforeReadBack(path);
    state.TakeWarnings();
    const std::string problem = ReadBackProblem(path, state.Current(), state.warnings, EncryptionToCome(state));
    if (!problem.empty())
        throw CPdfError(PdfProblem::NotReadBack,
                        target + ": the new file could not be read back as it should be (" + problem + ")");
    if (!options.forget) return;
    const std::string trace = FormerTextProblem(path, former, state.oldInfo, EncryptionToCome(state));
    if (!trace.empty()) throw CPdfError(PdfProblem::CannotWrite, target + ": " + trace);
}

bool SameStamp(const platform::FileStamp& one, const platform::FileStamp& other)
{
    return one.device == other.device && one.inode == other.inode && one.size == other.size &&
           one.modifiedNanoseconds == other.modifiedNanoseconds;
}

/// Somebody else's newer version of the document's own file is not replaced by what was made of the older one.
void CheckUnchanged(const CPdfDocument::State& state, const std::string& target)
{
    const bool ownFile =
        target == state.path ||
        (platform::NameExists(target) && platform::CanonicalPath(target) == platform::CanonicalPath(state.path));
    if (!state.stamp || !ownFile) return;
    const auto now = platform::StampOf(state.path);
    if (now && SameStamp(*now, *state.stamp)) return;
    throw CPdfError(PdfProblem::InputChanged, target + ": the input changed while it was processed");
}

void CopySource(CPdfDocument::State& state, COutputFile& file, CSaveProgress& progress)
{
    constexpr std::size_t kPieceOfCopy = 64 * 1024;
    InputSource& source = *state.source;
    source.seek(0, SEEK_END);
    const qpdf_offset_t size = std::max<qpdf_offset_t>(source.tell(), 1);
    source.seek(0, SEEK_SET);
    std::string piece(kPieceOfCopy, '\0');
    while (const std::size_t got = source.read(piece.data(), piece.size())) {
        file.Write(piece.data(), got);
        progress.reportProgress(static_cast<int>(100 * source.tell() / size));
    }
}

void AppendAndCommit(CPdfDocument::State& state, const PdfSaveOptions& options, const std::string& target,
                     CFileSource* source, const IncrementalUpdate& update)
{
    COutputFile file(target, WhatExists(options), options.source.empty() ? state.path : options.source);
    CSaveProgress progress(options, file, target);
    CopySource(state, file, progress);
    file.Write(update.bytes.data(), update.bytes.size());
    file.Check();
    if (const std::string& path = file.Complete(); !path.empty()) {
        if (options.beforeReadBack) options.beforeReadBack(path);
        state.TakeWarnings();
        const std::string problem =
            AppendedProblem(path, state.Current(), *state.source, update, state.warnings, EncryptionToCome(state));
        if (!problem.empty())
            throw CPdfError(PdfProblem::NotReadBack,
                            target + ": the appended part did not come back (" + problem + ")");
    }
    CheckUnchanged(state, state.path);  // also when another file is written: this one was copied
    LetGoOfTarget(source, options);
    file.Commit();
}

/// Answers why the document was not saved by appending; empty when it was.
std::string TryToAppend(CPdfDocument::State& state, const PdfSaveOptions& options, const std::string& target,
                        CFileSource* source)
{
    if (options.linearise) return "linearisation was asked for";
    if (std::string obstacle = state.AppendObstacle(); !obstacle.empty()) return obstacle;
    try {
        const IncrementalUpdate update = MakeIncrementalUpdate(state.Current(), *state.source, state.changedInfo);
        state.lateObstacle = update.obstacle;
        if (update.obstacle.empty()) AppendAndCommit(state, options, target, source, update);
    } catch (const CPdfError& error) {
        // Cancelled, disk full and their like: writing all would end the same.
        if (error.Problem() != PdfProblem::NotReadBack) throw;
        state.lateObstacle = error.ReasonFirst();
    } catch (const std::runtime_error& error) {
        state.lateObstacle = error.what();
    } catch (const std::logic_error& error) {
        state.lateObstacle = error.what();
    }
    return state.lateObstacle;
}

/// Fast display in a browser is no reason to lose a save: a document that the library cannot linearise, or whose
/// linearised file does not come back, is written without it, and the client is told.
void WriteAndCommit(CPdfDocument::State& state, const PdfSaveOptions& options, const std::string& target,
                    CFileSource* source)
{
    const std::vector<FormerText> former =
        options.forget ? FormerTextsOf(state.Current(), state.oldInfo) : std::vector<FormerText>();
    const auto write = [&](bool linearise) {
        COutputFile file(target, WhatExists(options), options.source.empty() ? state.path : options.source);
        WriteInto(file, state, options, target, linearise);
        ReadBack(file, state, options, target, former);
        CheckUnchanged(state, target);
        LetGoOfTarget(source, options);
        file.Commit();
    };
    const auto writePlain = [&](const std::string& reason) {
        if (options.remark) options.remark(target + ": written without linearisation: " + reason);
        write(false);
    };
    const PreparedDocument prepared = Prepare(state, options.forget, former);
    if (!options.linearise) return write(false);
    if (!prepared.mayLinearise) return writePlain("the library cannot linearise such a document");
    try {
        write(true);
    } catch (const CPdfError& error) {
        // Cancelled, disk full and their like: a second try would end the same.
        if (error.Problem() != PdfProblem::NotReadBack) throw;
        writePlain(error.Message());
    } catch (const std::runtime_error& error) {
        writePlain(error.what());
    } catch (const std::logic_error& error) {
        writePlain(error.what());
    }
}

/// The document lives in the new file from here on. After a trial there is no such file, and only the object at hand
/// knows what would be in it.
void MoveTo(CPdfDocument::State& state, const std::string& target, bool pretended)
{
    if (state.change == SecurityChange::Apply) {
        state.encryption = state.plan.record;
        state.openedWith = OpenedWith::Owner;
        state.passwordBytes = state.plan.userPasswordBytes;
        state.emptyPasswordOpens = state.passwordBytes.empty();
        state.fileKey = state.plan.fileKey;
    } else if (state.change == SecurityChange::Remove) {
        state.encryption.reset();
        state.openedWith = OpenedWith::None;
        state.passwordBytes.clear();
        state.fileKey.clear();
    }
    state.changeIsSaved = true;
    state.path = state.description = target;
    state.stamp = platform::StampOf(target);
    state.modified = state.maySave = state.moreThanInfo = false;
    state.contentChanged = pretended;
    state.changedInfo.clear();
    state.oldInfo.clear();
    state.lateObstacle.clear();
    state.packetTexts.reset();
    state.reload = !pretended;
}

}  // namespace

std::string CPdfDocument::State::AppendObstacle()
{
    Current();
    TakeWarnings();
    if (path.empty() || !source) return "it has no file yet";
    if (repaired) return "its file was repaired";
    if (loss && !loss->empty()) return "its file is damaged";
    if (change != SecurityChange::Keep && !changeIsSaved) return "its protection is to change";
    if (moreThanInfo) return "more than its properties has changed";
    if (!lateObstacle.empty()) return lateObstacle;
    return FindUpdatePlace(*library, *source).obstacle;
}

void CPdfDocument::Save(const PdfSaveOptions& options)
{
    State& state = *m_state;
    CheckMaySave(*this, state);
    const std::string target = options.path.empty() ? state.path : options.path;
    if (target.empty()) throw CPdfError(PdfProblem::NoPath, state.description + ": has no file to be saved to");
    RefuseOwnLink(state, target);
    Guarded(target, PdfProblem::Damaged, [&] {
        state.Current();
        CFileSource* const source = SourceInTheWay(state, target);
        std::string whole = "a full save was asked for";
        const Appending append = options.forget ? Appending::Never : options.append;
        if (append != Appending::Never) whole = TryToAppend(state, options, target, source);
        if (!whole.empty() && append == Appending::Only)
            throw CPdfError(PdfProblem::CannotWrite, target + ": the changes cannot be appended to it: " + whole);
        if (!whole.empty()) WriteAndCommit(state, options, target, source);
        state.writtenWhole = whole;
        if (options.copy) return;
        const COverseer* const overseer = Overseer();
        const bool pretended = overseer && overseer->Pretends();
        MoveTo(state, target, pretended);
        if (source && !pretended) {  // nothing is left of the old file; the new one is held from now on
            source->LetGoForEver();
            state.Reload();
        }
    });
}

std::string CPdfDocument::WriteToMemory()
{
    return Guarded(m_state->description, PdfProblem::Damaged, [&] {
        QPDF& library = m_state->Current();
        MendPageTree(library);
        PrepareForWriter(library, m_state->source.get());
        QPDFWriter writer(library);
        writer.setOutputMemory();
        CopyStreams(writer, library);
        writer.setPreserveEncryption(false);
        writer.write();
        const auto buffer = writer.getBufferSharedPointer();
        return std::string(reinterpret_cast<const char*>(buffer->getBuffer()), buffer->getSize());
    });
}

}  // namespace openhost
