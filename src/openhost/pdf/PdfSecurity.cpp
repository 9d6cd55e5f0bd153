#include "openhost/pdf/DocumentState.h"
#include "openhost/pdf/PdfGuard.h"

namespace openhost {
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
