#include "openhost/pdf/PdfDocument.h"

#include <qpdf/QPDFExc.hh>

#include "openhost/pdf/DocumentState.h"
#include "openhost/pdf/PageTree.h"
#include "openhost/pdf/PdfGuard.h"

namespace openhost {
namespace {

constexpr int kFieldsLookedAt = 10000;

/// Whether a field below `fields` is a signature that has a value.
bool HasFilledSignature(QPDFObjectHandle fields)
{
    std::vector<std::pair<QPDFObjectHandle, bool>> open{
        {fields, false}};  // a list of fields, and: is it of signatures
    for (int looked = 0; !open.empty() && looked < kFieldsLookedAt;) {
        const auto [list, inheritedSignature] = open.back();
        open.pop_back();
        QPDFObjectHandle fieldList = list;
        for (QPDFObjectHandle field : fieldList.aitems()) {
            if (++looked > kFieldsLookedAt || !field.isDictionary()) continue;
            QPDFObjectHandle type = field.getKey("/FT");
            const bool signature = type.isName() ? type.isNameAndEquals("/Sig") : inheritedSignature;
            if (signature && field.getKey("/V").isDictionary()) return true;
            if (field.getKey("/Kids").isArray()) open.emplace_back(field.getKey("/Kids"), signature);
        }
    }
    return false;
}

}  // namespace

CPdfDocument::CPdfDocument(std::unique_ptr<State> state) : m_state(std::move(state)) {}
CPdfDocument::CPdfDocument(CPdfDocument&&) noexcept = default;
CPdfDocument& CPdfDocument::operator=(CPdfDocument&&) noexcept = default;
CPdfDocument::~CPdfDocument() = default;

QPDF& CPdfDocument::State::Current()
{
    if (locked) throw CPdfError(PdfProblem::NeedsPassword, description, "needs a password");
    if (reload) Reload();
    return *library;
}

void CPdfDocument::State::Reload()
{
    reload = false;
    try {
        auto fresh = NewLibraryDocument(true);
        auto file = OpenSource(path);
        const std::string unlocking =
            encryption ? UnlockingText(*fresh, *encryption, passwordBytes, fileKey) : std::string();
        fresh->processInputSource(file, unlocking.c_str());
        TakeWarnings();
        library = std::move(fresh);
        source = std::move(file);
        change = SecurityChange::Keep;
        repaired = false;
    } catch (const std::exception&) {
        // The saved file is gone or was replaced. What was written came from the object at hand, so that still shows
        // the same document.
    }
}

void CPdfDocument::State::TakeWarnings()
{
    for (const QPDFExc& warning : library->getWarnings()) {
        warnings.emplace_back(warning.what());
        if (warning.getMessageDetail().find("reconstruct") != std::string::npos) repaired = true;
    }
}

const std::string& CPdfDocument::Path() const { return m_state->path; }
const std::string& CPdfDocument::Description() const { return m_state->description; }
bool CPdfDocument::IsLocked() const { return m_state->locked; }
bool CPdfDocument::IsEncrypted() const { return m_state->encryption.has_value(); }
bool CPdfDocument::IsModified() const { return m_state->modified; }
bool CPdfDocument::WasRepaired() const { return m_state->repaired; }
const std::string& CPdfDocument::Loss() const { return m_state->loss; }
OpenedWith CPdfDocument::OpenedBy() const { return m_state->openedWith; }
const std::string& CPdfDocument::PasswordBytes() const { return m_state->passwordBytes; }
QPDF& CPdfDocument::Library() { return m_state->Current(); }

bool CPdfDocument::FileShowsPresentState() const { return !m_state->contentChanged && !m_state->path.empty(); }

void CPdfDocument::PermitSave() { m_state->maySave = true; }

void CPdfDocument::SetModified(bool modified)
{
    m_state->modified = modified;
    if (!modified) return;
    m_state->contentChanged = true;
    m_state->pageCount.reset();
}

bool CPdfDocument::HasPendingSecurity() const
{
    return m_state->change != SecurityChange::Keep && !m_state->changeIsSaved;
}

int CPdfDocument::PageCount()
{
    State& state = *m_state;
    if (state.locked) return 0;
    if (!state.pageCount) {
        Guarded(state.description, PdfProblem::Damaged,
                [&] { state.pageCount = static_cast<int>(PagesOf(state.Current()).size()); });
    }
    return *state.pageCount;
}

std::string CPdfDocument::PdfVersion()
{
    return Guarded(m_state->description, PdfProblem::Damaged, [&] {
        QPDF& library = m_state->Current();
        std::string version = library.getPDFVersion();
        QPDFObjectHandle override = library.getRoot().getKey("/Version");
        if (override.isName() && override.getName().size() == 4 && override.getName().substr(1) > version) {
            version = override.getName().substr(1);
        }
        return version;
    });
}

bool CPdfDocument::IsLinearised()
{
    return Guarded(m_state->description, PdfProblem::Damaged, [&] { return m_state->Current().isLinearized(); });
}

bool CPdfDocument::IsSigned()
{
    return Guarded(m_state->description, PdfProblem::Damaged, [&] {
        QPDFObjectHandle root = m_state->Current().getRoot();
        if (QPDFObjectHandle granted = root.getKey("/Perms"); granted.isDictionary()) {
            for (const char* key : {"/DocMDP", "/UR", "/UR3"}) {
                if (granted.getKey(key).isDictionary()) return true;
            }
        }
        QPDFObjectHandle form = root.getKey("/AcroForm");
        return form.isDictionary() && form.getKey("/Fields").isArray() && HasFilledSignature(form.getKey("/Fields"));
    });
}

std::vector<std::string> CPdfDocument::Warnings() const
{
    m_state->TakeWarnings();
    return m_state->warnings;
}

}  // namespace openhost
