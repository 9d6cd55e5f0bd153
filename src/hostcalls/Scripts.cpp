#include "hostcalls/Scripts.h"

#include "base/Unicode.h"
#include "hostcalls/HostTables.h"
#include "platform/NarrowText.h"

namespace {

/// Every character survives in this form, whatever the host's encoding is.
std::string WideSource(std::string_view source)
{
    return "\xFE\xFF" + Utf8ToUtf16Bytes(source, true) + std::string(2, '\0');
}

}  // namespace

bool CanRunScripts()
{
    HFT forms = HostTables().Table(HostTable::Forms);
    return forms != nullptr && forms[kSlotAFExecuteThisScript] != nullptr;
}

Expected<std::string> RunScript(PDDoc document, std::string_view source)
{
    if (!CanRunScripts()) return Failure("this host runs no scripts");
    if (source.find('\0') != source.npos) return Failure("the script holds a character with the number 0");
    bool succeeded = false;
    std::string value;
    const auto error = CatchHostError([&] {
        const std::string wide = WideSource(source);
        char* answer = nullptr;
        succeeded = HostCall(HOST_SLOT(Forms, AFExecuteThisScript), document, wide.c_str(), &answer) != 0;
        const CHostMemory owned(answer);
        if (answer) value = platform::Utf8FromNarrow(owned.Text());
    });
    if (error) return Failure(error->text);
    if (!succeeded) return Failure("the script failed, or set event.rc to false");
    return value;
}
