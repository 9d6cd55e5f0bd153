#include <algorithm>

#include <qpdf/Buffer.hh>
#include <qpdf/BufferInputSource.hh>
#include <qpdf/QPDFExc.hh>

#include "openhost/pdf/DocumentFiles.h"
#include "openhost/pdf/DocumentLoss.h"
#include "openhost/pdf/DocumentState.h"
#include "openhost/pdf/FileRebuilder.h"
#include "openhost/pdf/PageTree.h"
#include "openhost/pdf/PdfError.h"

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

/// Makes a fresh library document accept the password that is known, see UnlockingText.
using Unlock = std::function<std::string(QPDF&)>;

/// Reads cross-reference and encryption, and repairs nothing; answers false when the password does not fit.
bool Process(QPDF& library, const std::shared_ptr<InputSource>& source, const Unlock& unlock)
{
    try {
        library.processInputSource(source, unlock(library).c_str());
        return true;
    } catch (const QPDFExc& error) {
        if (error.getErrorCode() == qpdf_e_password) return false;
        throw;
    }
}

[[noreturn]] void ThrowDamaged(const CPdfDocument::State& state, const std::string& detail)
{
    throw CPdfError(PdfProblem::Damaged, state.description + ": damaged: " + detail);
}

[[noreturn]] void ThrowNoPages(const CPdfDocument::State& state)
{
    throw CPdfError(PdfProblem::NoPages, state.description + ": has no pages");
}

/// A page tree that says it is empty; there is nothing to search for then.
bool IsMeantToBeEmpty(QPDF& library)
{
    QPDFObjectHandle tree = library.getTrailer().getKey("/Root").getKey("/Pages");
    QPDFObjectHandle kids = tree.getKey("/Kids"), count = tree.getKey("/Count");
    return kids.isArray() && kids.getArrayNItems() == 0 && count.isInteger() && count.getIntValue() == 0;
}

/// Whether objects come behind the last reference to a table: an update that was being written when it broke off.
bool EndsInAnUpdate(InputSource& source)
{
    constexpr qpdf_offset_t kReferenceWithin = 1054;  // bytes before the end, as far as the library looks back
    source.seek(0, SEEK_END);
    const qpdf_offset_t size = source.tell(), length = std::min(size, kReferenceWithin);
    std::string end(static_cast<std::size_t>(length), '\0');
    source.seek(size - length, SEEK_SET);
    end.resize(source.read(end.data(), end.size()));
    const std::size_t reference = end.rfind("startxref");
    return reference != std::string::npos && !ScanFile(std::string_view(end).substr(reference)).objects.empty();
}

/// Takes the document over when it can be read as it stands. Throws what is wrong with it, when that is a damage.
void ReadAsItIs(CPdfDocument::State& state, const Unlock& unlock)
{
    const auto read = [&] {
        auto library = NewLibraryDocument(false);
        state.locked = !Process(*library, state.source, unlock);
        state.library = std::move(library);
    };
    read();
    if (state.locked) return;
    if (const auto misplaced = MisplacedObjects(*state.library, *state.source); !misplaced.empty()) {
        if (UsesAnyOf(*state.library, misplaced))
            ThrowDamaged(state,
                         "object " + std::to_string(misplaced.front().getObj()) + " is not where the file says");
        read();  // forgets what could not be read meanwhile
    }
    if (EndsInAnUpdate(*state.source)) ThrowDamaged(state, "an update at its end broke off");
    if (EnsureCatalogue(*state.library, false) == Catalogue::Missing) ThrowDamaged(state, "it has no catalogue");
    if (!PagesOf(*state.library).empty()) return;
    if (IsMeantToBeEmpty(*state.library)) ThrowNoPages(state);
    ThrowDamaged(state, "its page tree leads to no page");
}

std::string AllBytes(InputSource& source)
{
    source.seek(0, SEEK_END);
    std::string bytes(static_cast<std::size_t>(source.tell()), '\0');
    source.seek(0, SEEK_SET);
    bytes.resize(source.read(bytes.data(), bytes.size()));
    return bytes;
}

/// The pages that no tree leads to, in the order of the file.
std::vector<QPDFObjectHandle> StrayPages(QPDF& library, const CFileRebuilder& rebuilder)
{
    std::vector<QPDFObjectHandle> pages;
    for (const auto& [place, object] : rebuilder.ByPlace())
        if (QPDFObjectHandle page = library.getObject(object); page.isDictionaryOfType("/Page"))
            pages.push_back(page);
    return pages;
}

void FindPages(CPdfDocument::State& state, const CFileRebuilder& rebuilder)
{
    QPDF& library = *state.library;
    RepairFacts facts{.scan = &rebuilder.Scan()};
    facts.catalogueSearched = EnsureCatalogue(library, true) == Catalogue::Searched;
    if (PagesOf(library).empty()) {
        std::vector<QPDFObjectHandle> pages;
        if (!IsMeantToBeEmpty(library)) pages = StrayPages(library, rebuilder);
        if (pages.empty()) ThrowNoPages(state);
        MakePageTree(library, std::move(pages));
        facts.pagesSearched = true;
    }
    state.loss = LossOf(library, *state.source, facts);
}

/// Takes the document over from a file that was put together anew; answers false when there is nothing to put
/// together.
bool ReadRebuilt(CPdfDocument::State& state, const Unlock& unlock)
{
    CFileRebuilder rebuilder(AllBytes(*state.source));
    if (rebuilder.Scan().objects.empty()) return false;
    const auto read = [&] {
        auto library = NewLibraryDocument(false);
        auto source = rebuilder.Source(state.description);
        state.locked = !Process(*library, source, unlock);
        library->setAttemptRecovery(true);
        state.library = std::move(library);
        return source;
    };
    auto source = read();
    if (state.locked) return true;  // read from the file once more when the password is known
    if (rebuilder.AddObjectStreams(*state.library)) source = read();
    state.source = source;
    FindPages(state, rebuilder);
    state.repaired = true;
    state.contentChanged = true;  // other readers may make something else of the file
    return true;
}

/// Reads the document from its file, which is put together anew when it cannot be read as it stands and repair is
/// wanted; locked afterwards when the password does not fit.
void Read(CPdfDocument::State& state, const Unlock& unlock)
{
    try {
        ReadAsItIs(state, unlock);
    } catch (const QPDFExc& error) {
        state.warnings.emplace_back(error.what());
        const bool hopeless = !state.repair || error.getErrorCode() == qpdf_e_unsupported;
        if (hopeless || !ReadRebuilt(state, unlock)) throw;
    } catch (const CPdfError& error) {
        state.warnings.emplace_back(error.what());
        const bool hopeless = !state.repair || error.Problem() != PdfProblem::Damaged;
        if (hopeless || !ReadRebuilt(state, unlock)) throw;
    }
    state.TakeWarnings();
    if (state.locked) return;
    state.library->setAttemptRecovery(true);
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

void UnlockWith(CPdfDocument::State& state, const PasswordMatch& match)
{
    if (state.locked)
        Read(state, [&](QPDF& library) {
            return UnlockingText(library, *state.encryption, match.passwordBytes, match.fileKey);
        });
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
    state.source = std::move(source);
    Read(state, [](QPDF&) { return std::string(); });
    QPDF& library = *state.library;
    state.encryption = ReadEncryption(library);
    if (state.locked) {
        if (state.encryption) return;
        throw CPdfError(PdfProblem::UnsupportedSecurity, state.description + ": unsupported security handler");
    }
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
        state->stamp = platform::StampOf(path);
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
