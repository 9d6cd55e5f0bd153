#include "openhost/pdf/PdfDocument.h"

#include <qpdf/QPDFExc.hh>

#include "base/Xml.h"
#include "openhost/pdf/DocumentLoss.h"
#include "openhost/pdf/DocumentState.h"
#include "openhost/pdf/PageTree.h"
#include "openhost/pdf/PdfError.h"
#include "openhost/pdf/Xmp.h"

namespace openhost {
namespace {

constexpr int kFieldsLookedAt = 10000;

/// Whether a field below `fields` is a signature that has a value, and of which `holds`.
template <class Condition>
bool HasFilledSignature(QPDFObjectHandle fields, Condition holds)
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
            if (signature && field.getKey("/V").isDictionary() && holds(field)) return true;
            if (field.getKey("/Kids").isArray()) open.emplace_back(field.getKey("/Kids"), signature);
        }
    }
    return false;
}

/// Certification and usage rights.
bool HasGrants(QPDFObjectHandle root)
{
    QPDFObjectHandle granted = root.getKey("/Perms");
    if (!granted.isDictionary()) return false;
    for (const char* key : {"/DocMDP", "/UR", "/UR3"}) {
        if (granted.getKey(key).isDictionary()) return true;
    }
    return false;
}

QPDFObjectHandle FieldsOf(QPDFObjectHandle root)
{
    QPDFObjectHandle form = root.getKey("/AcroForm");
    QPDFObjectHandle fields = form.isDictionary() ? form.getKey("/Fields") : form;
    return fields.isArray() ? fields : QPDFObjectHandle::newArray();
}

/// Whether a filled signature says which later changes it allows: by a transformation, or by the lock of its field.
bool LimitsLaterChanges(QPDFObjectHandle field)
{
    QPDFObjectHandle lock = field.getKey("/Lock"), references = field.getKey("/V").getKey("/Reference");
    if (lock.isDictionary() && lock.hasKey("/P")) return true;
    if (!references.isArray()) return false;
    for (QPDFObjectHandle reference : references.aitems()) {
        if (reference.isDictionary() && reference.getKey("/TransformMethod").isNameAndEquals("/DocMDP")) return true;
    }
    return false;
}

/// ISO 32000-2, 12.8.2.2: whatever level of changes a certification allows, those of the properties are not among
/// them.
bool LimitsChanges(QPDFObjectHandle root)
{
    return HasGrants(root) || HasFilledSignature(FieldsOf(root), LimitsLaterChanges);
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
OpenedWith CPdfDocument::OpenedBy() const { return m_state->openedWith; }
const std::string& CPdfDocument::PasswordBytes() const { return m_state->passwordBytes; }
QPDF& CPdfDocument::Library() { return m_state->Current(); }

bool CPdfDocument::FileShowsPresentState() const { return !m_state->contentChanged && !m_state->path.empty(); }

void CPdfDocument::PermitSave() { m_state->maySave = true; }

void CPdfDocument::SetModified(bool modified)
{
    m_state->modified = modified;
    if (!modified) return;
    m_state->contentChanged = m_state->moreThanInfo = true;
    m_state->pageCount.reset();
}

bool CPdfDocument::HasPendingSecurity() const
{
    return m_state->change != SecurityChange::Keep && !m_state->changeIsSaved;
}

const std::string& CPdfDocument::Loss()
{
    State& state = *m_state;
    if (state.locked || !state.source) {
        static const std::string nothing;
        return state.loss ? *state.loss : nothing;
    }
    if (!state.loss)
        state.loss = Guarded(state.description, PdfProblem::Damaged,
                             [&] { return LossOf(*state.library, *state.source, {}); });
    return *state.loss;
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

bool CPdfDocument::IsCertified()
{
    return Guarded(m_state->description, PdfProblem::Damaged,
                   [&] { return LimitsChanges(m_state->Current().getRoot()); });
}

std::string CPdfDocument::AppendObstacle()
{
    return Guarded(m_state->description, PdfProblem::Damaged, [&] { return m_state->AppendObstacle(); });
}

const std::optional<std::string>& CPdfDocument::WrittenWhole() const { return m_state->writtenWhole; }

bool CPdfDocument::IsSigned()
{
    return Guarded(m_state->description, PdfProblem::Damaged, [&] {
        QPDFObjectHandle root = m_state->Current().getRoot();
        return HasGrants(root) || HasFilledSignature(FieldsOf(root), [](QPDFObjectHandle) { return true; });
    });
}

std::vector<std::string> CPdfDocument::Warnings() const
{
    m_state->TakeWarnings();
    return m_state->warnings;
}

namespace {

QPDFObjectHandle InfoDictionary(QPDF& library) { return library.getTrailer().getKey("/Info"); }

QPDFObjectHandle MakeInfoDictionary(QPDF& library)
{
    QPDFObjectHandle info = InfoDictionary(library);
    if (info.isDictionary()) return info;
    info = library.makeIndirectObject(QPDFObjectHandle::newDictionary());
    library.getTrailer().replaceKey("/Info", info);
    return info;
}

}  // namespace

std::optional<std::string> CPdfDocument::Info(const std::string& key)
{
    return Guarded(m_state->description, PdfProblem::Damaged, [&]() -> std::optional<std::string> {
        QPDFObjectHandle info = InfoDictionary(m_state->Current());
        if (!info.isDictionary()) return std::nullopt;
        QPDFObjectHandle value = info.getKey('/' + key);
        if (!value.isString()) return std::nullopt;
        return value.getStringValue();
    });
}

std::optional<std::string> CPdfDocument::InfoOrMetadata(const std::string& key)
{
    auto value = Info(key);
    State& state = *m_state;
    if (value || state.changedInfo.contains(key)) return value;
    return Guarded(state.description, PdfProblem::Damaged, [&]() -> std::optional<std::string> {
        if (!state.packetTexts)
            state.packetTexts = TextsInPacket(MetadataPacket(state.Current()).value_or(std::string()));
        const auto found = state.packetTexts->find(key);
        if (found == state.packetTexts->end()) return std::nullopt;
        return QPDFObjectHandle::newUnicodeString(found->second).getStringValue();
    });
}

std::vector<std::string> CPdfDocument::InfoKeys()
{
    return Guarded(m_state->description, PdfProblem::Damaged, [&] {
        std::vector<std::string> keys;
        QPDFObjectHandle info = InfoDictionary(m_state->Current());
        if (!info.isDictionary()) return keys;
        for (const std::string& key : info.getKeys()) keys.push_back(key.substr(1));
        return keys;
    });
}

void CPdfDocument::SetInfo(const std::string& key, const std::string& value)
{
    State& state = *m_state;
    if (!Allows(PdfRight::Change)) {
        throw CPdfError(PdfProblem::NotPermitted, state.description, "changing the document is not permitted");
    }
    // The library writes a number sign as it is, and readers take it for the start of a code: another key.
    if (key.empty() || key.find('#') != std::string::npos || key.find('\0') != std::string::npos) {
        throw CPdfError(PdfProblem::UnsupportedInput, state.description, "cannot write this information key");
    }
    if (!state.changedInfo.contains(key)) state.oldInfo.emplace(key, Info(key).value_or(std::string()));
    Guarded(state.description, PdfProblem::Damaged, [&] {
        if (!value.empty())
            MakeInfoDictionary(state.Current()).replaceKey('/' + key, QPDFObjectHandle::newString(value));
        else if (QPDFObjectHandle info = InfoDictionary(state.Current()); info.isDictionary())
            info.removeKey('/' + key);
    });
    state.changedInfo.insert(key);
    state.modified = state.contentChanged = true;
}

bool CPdfDocument::MetadataHold(const std::string& utf8)
{
    return Guarded(m_state->description, PdfProblem::Damaged, [&] {
        const auto packet = MetadataPacket(m_state->Current());
        return !packet || packet->find(XmlEscaped(utf8)) != std::string::npos;
    });
}

namespace {

/// The bits of which any one grants the right. Revision 2 knows only the first four: each finer right hangs on one of
/// them.
std::uint32_t GrantingBits(PdfRight right, int revision)
{
    using namespace pdfright;
    const bool coarse = revision <= 2;
    switch (right) {
        case PdfRight::PrintLow:
            return kPrint;
        case PdfRight::PrintHigh:
            return coarse ? kPrint : kPrintHigh;
        case PdfRight::Copy:
            return kCopy;
        case PdfRight::CopyForAccessibility:
            return coarse ? kCopy : kCopy | kAccessibility;
        case PdfRight::Annotate:
            return kAnnotate;
        case PdfRight::FillForms:
            return coarse ? kAnnotate : kAnnotate | kFillForms;
        case PdfRight::Assemble:
            return coarse ? kChange : kChange | kAssemble;
        case PdfRight::Change:
        case PdfRight::FullSave:
            return kChange;
        case PdfRight::ChangeSecurity:
            break;
    }
    return 0;
}

void RequireOwner(const CPdfDocument::State& state)
{
    if (state.HasOwnerRights()) return;
    throw CPdfError(PdfProblem::NotPermitted, state.description,
                    "changing the security is not permitted without the permissions password");
}

}  // namespace

std::uint32_t CPdfDocument::PermissionWord() const
{
    return m_state->HasOwnerRights() || !m_state->encryption ? pdfright::kAll : m_state->encryption->info.permissions;
}

bool CPdfDocument::Allows(PdfRight right) const
{
    const State& state = *m_state;
    if (state.locked) return false;
    if (state.HasOwnerRights()) return true;
    const std::uint32_t word = state.encryption->info.permissions;
    // High-quality printing refines the right to print at all.
    if (right == PdfRight::PrintHigh && !(word & pdfright::kPrint)) return false;
    return (word & GrantingBits(right, state.encryption->info.revision)) != 0;
}

SecurityInfo CPdfDocument::Security() const
{
    const State& state = *m_state;
    if (state.change == SecurityChange::Apply) return state.plan.record.info;
    if (state.change == SecurityChange::Remove || !state.encryption) return {};
    SecurityInfo info = state.encryption->info;
    info.hasUser = !state.emptyPasswordOpens;
    info.hasOwner =
        !(state.emptyPasswordOpens && state.openedWith == OpenedWith::Owner && state.passwordBytes.empty());
    return info;
}

const std::optional<CPdfError>& CPdfDocument::SecurityRefusal() const { return m_state->refusal; }

void CPdfDocument::SetSecurity(const StandardSecurity& security)
{
    State& state = *m_state;
    try {
        RequireOwner(state);
        state.plan = Guarded(state.description, PdfProblem::Internal, [&] {
            return PlanEncryption(security, IdentifierOf(state.Current()), state.description);
        });
    } catch (const CPdfError& refusal) {
        state.refusal = refusal;
        throw;
    }
    state.refusal.reset();
    state.change = SecurityChange::Apply;
    state.changeIsSaved = false;
    state.modified = true;
}

void CPdfDocument::RefuseSecurity(const CPdfError& reason) { m_state->refusal = reason; }

void CPdfDocument::RemoveSecurity()
{
    State& state = *m_state;
    RequireOwner(state);
    state.refusal.reset();
    state.Current();
    state.change = state.encryption ? SecurityChange::Remove : SecurityChange::Keep;
    state.changeIsSaved = false;
    if (state.encryption) state.modified = true;
}

}  // namespace openhost
