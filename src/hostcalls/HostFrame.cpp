#include "hostcalls/HostFrame.h"

#include <cstdio>

#include "hostapi/HostInterface.h"
#include "hostcalls/HostTables.h"

namespace {

constexpr std::size_t kErrorTextSize = 256;  // 255 characters and the zero

template <class Procedure>
Procedure CoreEntry(HFT core, int slot)
{
    return reinterpret_cast<Procedure>(core[slot]);
}

/// Removes the frame at the end of the guarded block, however that ends.
class CFramePop {
public:
    explicit CFramePop(HFT core) : m_core(core) {}
    ~CFramePop() { CoreEntry<ASPopExceptionFrameSlotProc>(m_core, kSlotASPopExceptionFrame)(); }
    CFramePop(const CFramePop&) = delete;
    CFramePop& operator=(const CFramePop&) = delete;

private:
    HFT m_core;
};

struct ErrorTextRequest {
    ASGetErrorStringSlotProc ask;
    ASErrorCode code;
    char* buffer;
};

void AskErrorText(void* context)
{
    const auto& request = *static_cast<ErrorTextRequest*>(context);
    request.ask(request.code, request.buffer, static_cast<ASTArraySize>(kErrorTextSize));
}

}  // namespace

namespace hostcalls {

ASErrorCode RunInFrame(HFT core, FrameBody body, void* context)
{
    std::jmp_buf target;
    bool raised = false;
    CoreEntry<ASPushExceptionFrameSlotProc>(core, kSlotASPushExceptionFrame)(&target, &JumpBack);
    {
        const CFramePop pop(core);
        raised = EndsByJump(target, body, context);
    }
    if (!raised) return 0;
    const ASErrorCode code = CoreEntry<ASGetExceptionErrorCodeSlotProc>(core, kSlotASGetExceptionErrorCode)();
    return code != 0 ? code : genErrGeneral;  // a raise is never taken for success
}

ASErrorCode RunInFrame(FrameBody body, void* context)
{
    return RunInFrame(HostTables().Table(HostTable::Core), body, context);
}

}  // namespace hostcalls

std::string HostErrorText(ASErrorCode code)
{
    char buffer[kErrorTextSize] = {};  // stays empty for a code without a text
    if (HFT support = HostTables().Table(HostTable::AcroSupport)) {
        ErrorTextRequest request{reinterpret_cast<ASGetErrorStringSlotProc>(support[kSlotASGetErrorString]), code,
                                 buffer};
        if (hostcalls::RunInFrame(&AskErrorText, &request) != 0) buffer[0] = '\0';
    }
    buffer[kErrorTextSize - 1] = '\0';
    if (buffer[0] == '\0') std::snprintf(buffer, kErrorTextSize, "Host error 0x%08X", static_cast<unsigned>(code));
    return buffer;
}

ASCallback WrapCallback(void* procedure)
{
    return HostCall(HOST_SLOT(Core, ASCallbackCreate), HostTables().Extension(), procedure);
}
