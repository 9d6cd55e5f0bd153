#include <qpdf/Buffer.hh>
#include <qpdf/BufferInputSource.hh>
#include <qpdf/QPDFExc.hh>

#include "openhost/pdf/DocumentState.h"
#include "openhost/pdf/FileSource.h"
#include "openhost/pdf/PageTree.h"
#include "openhost/pdf/PdfGuard.h"
#include "openhost/pdf/SourceFile.h"

namespace openhost {
namespace {

constexpr std::size_t kHeaderWithin = 1024;
constexpr std::uint64_t kSmallFile = 16 << 20;

bool HasHeader(InputSource& source)
{
    std::string start(kHeaderWithin, '\0');
    source.seek(0, SEEK_SET);
    start.resize(source.read(start.data(), start.size()));
    return start.find("%PDF-") != std::string::npos;
}

/// Reads the cross-reference and unlocks with `password`; answers false when that does not fit.
bool Process(QPDF& library, const std::shared_ptr<InputSource>& source, const std::string& password, bool repair)
{
    try {
        library.processInputSource(source, password.c_str());
        return true;
    } catch (const QPDFExc& error) {
        if (error.getErrorCode() == qpdf_e_password) return false;
        // Everything is read by the time a missing root is noticed. Damage in the encryption itself stays an error:
        // the file would be read as if its secret bytes were the content.
        const bool missingRoot = error.getErrorCode() == qpdf_e_damaged_pdf && !library.isEncrypted();
        if (!missingRoot || !EnsureCatalogue(library, repair)) throw;
        return true;
    }
}

/// What a file that the library gives up on is.
PdfProblem Verdict(InputSource& source, bool repair)
{
    try {
        if (!HasHeader(source)) return PdfProblem::NotAPdf;
    } catch (...) {
        return PdfProblem::CannotRead;
    }
    return repair ? PdfProblem::Damaged : PdfProblem::NeedsRepair;
}

void CheckPages(CPdfDocument::State& state)
{
    QPDF& library = *state.library;
    const bool usable = EnsureCatalogue(library, state.repair) && HasUsablePages(library);
    if (!usable) throw CPdfError(PdfProblem::NoPages, state.description + ": has no pages");
}

void UnlockWith(CPdfDocument::State& state, const PasswordMatch& match)
{
    if (state.locked) {
        auto library = NewLibraryDocument(state.repair);
        const std::string unlocking = UnlockingText(*library, *state.encryption, match.passwordBytes, match.fileKey);
        Process(*library, state.source, unlocking, state.repair);
        state.library = std::move(library);
        CheckPages(state);
        state.TakeWarnings();
        state.library->setAttemptRecovery(true);
    }
    state.locked = false;
    state.openedWith = match.openedWith;
    state.passwordBytes = match.passwordBytes;
    state.fileKey = match.fileKey;
}

CPdfError DamageError(const CPdfError& cause, InputSource& source, const CPdfDocument::State& state)
{
    const PdfProblem verdict = Verdict(source, state.repair);
    const std::string reason = verdict == PdfProblem::NotAPdf       ? state.description + ": is not a PDF document"
                               : verdict == PdfProblem::NeedsRepair ? cause.Message() + " (not repaired)"
                                                                    : cause.Message();
    return {verdict, reason};
}

/// Opens, asks for a password where needed, and checks that there are pages.
CPdfDocument OpenFrom(std::unique_ptr<CPdfDocument::State> state, std::shared_ptr<InputSource> source,
                      const std::function<bool(CPdfDocument&)>& authorise)
{
    const std::string name = state->description;
    CPdfDocument::State& view = *state;
    CPdfDocument document(std::move(state));
    try {
        Guarded(name, PdfProblem::Damaged, [&] { LoadDocument(view, source); });
    } catch (const CPdfError& error) {
        if (error.Problem() == PdfProblem::Damaged) throw DamageError(error, *source, view);
        throw;
    }
    if (view.locked && authorise) authorise(document);
    if (view.locked) throw CPdfError(PdfProblem::NeedsPassword, name + ": needs a password");
    return document;
}

}  // namespace

namespace {

/// Nothing when the file is large or cannot be read to its end; it then stands at its beginning.
std::unique_ptr<Buffer> SmallContent(std::FILE* file)
{
    const auto size = SizeOf(file);
    if (!size || *size > kSmallFile) return nullptr;
    auto content = std::make_unique<Buffer>(static_cast<std::size_t>(*size));
    const bool whole = std::fread(content->getBuffer(), 1, content->getSize(), file) == content->getSize();
    if (whole) return content;
    std::rewind(file);
    return nullptr;
}

}  // namespace

/// The library jumps about in the file in small steps, each a few calls of the system. A file of usual size is faster
/// read at once, and nobody can change it under the library's hands then.
std::shared_ptr<InputSource> OpenSource(const std::string& path)
{
    platform::Stream file = OpenForReading(path);
    if (auto content = SmallContent(file.get())) {
        return std::make_shared<BufferInputSource>(path, content.release(), true);
    }
    return std::make_shared<CFileSource>(path, std::move(file));
}

void LoadDocument(CPdfDocument::State& state, std::shared_ptr<InputSource> source)
{
    state.source = source;
    state.library = NewLibraryDocument(state.repair);
    QPDF& library = *state.library;
    state.locked = !Process(library, source, "", state.repair);
    state.encryption = ReadEncryption(library);
    if (state.locked) {
        if (state.encryption) return;
        throw CPdfError(PdfProblem::UnsupportedSecurity, state.description + ": unsupported security handler");
    }
    state.TakeWarnings();
    CheckPages(state);
    library.setAttemptRecovery(true);
    if (!state.encryption) return;
    state.emptyPasswordOpens = true;
    state.openedWith = library.ownerPasswordMatched() ? OpenedWith::Owner : OpenedWith::User;
    state.fileKey = library.getEncryptionKey();
}

CPdfDocument CPdfDocument::Open(const std::string& path, const PdfOpenOptions& options)
{
    return Guarded(path, PdfProblem::Damaged, [&] {
        auto state = std::make_unique<State>();
        state->path = state->description = path;
        state->repair = options.repair;
        return OpenFrom(std::move(state), OpenSource(path), options.authorise);
    });
}

CPdfDocument CPdfDocument::FromMemory(std::string bytes, const std::string& description)
{
    return Guarded(description, PdfProblem::Damaged, [&] {
        auto state = std::make_unique<State>();
        state->description = description;
        state->modified = state->contentChanged = true;
        return OpenFrom(std::move(state), std::make_shared<BufferInputSource>(description, bytes), {});
    });
}

bool CPdfDocument::Authorize(std::string_view candidateUtf8, WantedRights wanted)
{
    State& state = *m_state;
    const auto satisfied = [&] { return !state.locked && (wanted == WantedRights::Open || state.HasOwnerRights()); };
    if (satisfied() || !state.encryption) return satisfied();
    return Guarded(state.description, PdfProblem::Damaged, [&] {
        const auto match = TryPasswordForms(*state.encryption, candidateUtf8, wanted);
        const bool better = match && (state.locked || match->openedWith == OpenedWith::Owner);
        if (better) UnlockWith(state, *match);
        return satisfied();
    });
}

}  // namespace openhost
