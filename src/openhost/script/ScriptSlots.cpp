#include "openhost/core/Memory.h"
#include "openhost/script/Scripts.h"
#include "openhost/script/Slots.h"
#include "openhost/values/Text.h"

namespace openhost {

namespace {

ASBool ExecuteThisScript(PDDoc document, const char* source, char** value)
{
    if (value) *value = nullptr;
    const std::string_view given = Given(source);
    const std::u16string text =
        given.starts_with("\xFE\xFF") ? Utf16FromPdText(PdTextUpToZero(source)) : Utf16FromHost(given);
    const std::string about = DocumentAt(document).pdf.Description();
    try {
        const ScriptResult result = Translated([&] { return RunScript(document, text); });
        if (value && result.value) *value = SharedCopy(HostFromUtf16(*result.value));
        return result.rc;
    } catch (const CScriptError& error) {
        Raise(genErrGeneral, "the script " + std::string(error.what()) + "; the document is " + about);
    }
}

}  // namespace

void OfferScriptSlots(CTables& tables)
{
    OFFER(tables, Forms, AFExecuteThisScript, ExecuteThisScript);
    tables.SetAvailable(Table::Forms, true);
}

}  // namespace openhost
