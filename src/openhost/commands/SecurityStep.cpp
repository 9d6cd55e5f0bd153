#include "openhost/commands/Step.h"
#include "openhost/values/Text.h"
#include "platform/NarrowText.h"

namespace openhost {

namespace {

constexpr char kStandard[] = "Standard";

/// Not by way of the host encoding, which need not hold every character of a password.
std::string PasswordUtf8(const CCabinet& settings, std::string_view key)
{
    if (const CHostText* const text = settings.GetText(key)) return text->Utf8();
    const char* const string = settings.GetString(key);
    return string ? platform::Utf8FromNarrow(string) : std::string();
}

/// The settings carry the names of the fields of the security record. A password that is there counts unless its
/// "has" flag says no.
StandardSecurity ReadSettings(const CCabinet& settings)
{
    StandardSecurity security;
    security.userPasswordUtf8 = PasswordUtf8(settings, "userPW");
    security.ownerPasswordUtf8 = PasswordUtf8(settings, "ownerPW");
    security.hasUser = !security.userPasswordUtf8.empty() && settings.GetBool("hasUserPW", true);
    security.hasOwner = !security.ownerPasswordUtf8.empty() && settings.GetBool("hasOwnerPW", true);
    security.permissions = static_cast<std::uint32_t>(settings.GetInt("perms", -1));
    security.keyLengthBytes = settings.GetInt("keyLength", 32);
    security.revision = settings.GetInt("revision", 6);
    security.method = settings.GetInt("encryptMethod", 7);
    security.encryptMetadata = settings.GetBool("encryptMetadata", true);
    return security;
}

void RemoveSecurity(CHostDocument& held)
{
    Translated([&] { held.pdf.RemoveSecurity(); });
    held.newHandler = kNullAtom;
    held.newHandlerHasData = false;
}

/// Protection was asked for: until it is accepted the document is not written at all.
void ForbidSavingUnprotected(CHostDocument& held)
{
    held.newHandler = AtomFromText(kStandard);
    held.newHandlerHasData = false;
}

void SetStandardSecurity(CHostDocument& held, const CCabinet* settings)
{
    if (!settings)
        Raise(genErrBadParm, held.pdf.Path() + ": the security step names a handler but gives it no settings");
    Translated([&] { held.pdf.SetSecurity(ReadSettings(*settings)); });
    held.newHandlerHasData = true;
}

/// Prepares the document's security; the next full save writes it.
StepResult SetDocumentSecurity(CStepRun& run)
{
    CHostDocument& held = run.Held();
    const CCabinet* const params = run.Params();
    const std::string handler = params ? AtomText(params->GetAtom("CryptHandler")) : std::string();
    if (handler.empty()) {
        RemoveSecurity(held);
        return StepResult::Unchanged;
    }
    ForbidSavingUnprotected(held);
    if (handler != kStandard)
        Raise(pdErrNoCryptHandler, held.pdf.Path() + ": there is no security handler named " + handler);
    SetStandardSecurity(held, params->GetCab("SecuritySettings"));
    return StepResult::Unchanged;
}

}  // namespace

/// The security itself counts as pending; the content of the document stays as it is.
const StepDescription& SecurityStep()
{
    static const StepDescription step{
        .names = {"DocSecurity"}, .group = "Document", .title = "Security", .work = &SetDocumentSecurity};
    return step;
}

}  // namespace openhost
