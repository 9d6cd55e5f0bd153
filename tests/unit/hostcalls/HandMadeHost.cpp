#include "unit/hostcalls/HandMadeHost.h"

#include <cstdlib>
#include <cstring>

#include "hostapi/HostInterface.h"

namespace {

CHandMadeHost* g_host = nullptr;

template <class Procedure>
void* Entry(Procedure procedure)
{
    return reinterpret_cast<void*>(procedure);
}

}  // namespace

CHandMadeHost::CHandMadeHost()
{
    g_host = this;
    for (const char* name : {"Core", "Cos", "PDModel", "PDFEditWrite", "PDFEditRead", "PDSysFont", "PagePDEContent",
                             "AcroView", "PDSWrite", "PDSRead", "Win", "ASExtra", "PDMetadata", "AcroSupport"})
        tables[name].version = 0x000A0000;
    auto& core = tables["Core"].slots;
    core[kSlotASPushExceptionFrame] = Entry<ASPushExceptionFrameSlotProc>(&PushFrame);
    core[kSlotASPopExceptionFrame] = Entry<ASPopExceptionFrameSlotProc>(&PopFrame);
    core[kSlotASGetExceptionErrorCode] = Entry<ASGetExceptionErrorCodeSlotProc>(&LastCode);
    core[kSlotASAtomFromString] = Entry<ASAtomFromStringSlotProc>(&AtomFromString);
    core[kSlotASExtensionMgrGetHFT] = Entry<ASExtensionMgrGetHFTSlotProc>(&GetTable);
    auto& support = tables["AcroSupport"].slots;
    support[kSlotHFTGetVersion] = Entry<HFTGetVersionSlotProc>(&GetVersion);
    support[kSlotASGetErrorString] = Entry<ASGetErrorStringSlotProc>(&GetErrorString);
}

CHandMadeHost::~CHandMadeHost() { g_host = nullptr; }

void CHandMadeHost::Raise(ASErrorCode code)
{
    g_host->m_lastCode = code;
    if (g_host->m_frames.empty()) std::abort();  // nobody is there to catch it
    const Frame top = g_host->m_frames.back();
    top.restore(top.environment);
    std::abort();  // the restore function must not come back
}

void CHandMadeHost::PushFrame(void* environment, void(HOSTCALL* restore)(void*))
{
    g_host->m_frames.push_back({environment, restore});
}

void CHandMadeHost::PopFrame()
{
    ++g_host->m_pops;
    g_host->m_frames.pop_back();
}

ASErrorCode CHandMadeHost::LastCode() { return g_host->m_lastCode; }

ASAtom CHandMadeHost::AtomFromString(const char* text)
{
    auto& atoms = g_host->m_atoms;
    for (std::size_t i = 0; i < atoms.size(); ++i)
        if (atoms[i] == text) return static_cast<ASAtom>(i);
    atoms.push_back(text);
    return static_cast<ASAtom>(atoms.size() - 1);
}

HFT CHandMadeHost::GetTable(ASAtom name, ASVersion version)
{
    const auto found = g_host->tables.find(g_host->m_atoms.at(name));
    if (found == g_host->tables.end()) return nullptr;
    if (found->second.raises) Raise(genErrNoMemory);
    return found->second.version >= version ? found->second.slots.data() : nullptr;
}

ASVersion CHandMadeHost::GetVersion(HFT table)
{
    for (auto& [name, known] : g_host->tables)
        if (known.slots.data() == table) return known.version;
    return kUnknown;
}

const char* CHandMadeHost::GetErrorString(ASErrorCode code, char* buffer, ASTArraySize size)
{
    if (g_host->errorTextRaises) Raise(genErrNoMemory);
    const auto found = g_host->errorTexts.find(code);
    if (found != g_host->errorTexts.end()) {
        std::strncpy(buffer, found->second.c_str(), static_cast<std::size_t>(size) - 1);
        buffer[size - 1] = '\0';
    }
    return buffer;
}
