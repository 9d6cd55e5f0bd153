// A plug-in that says each stage of its life in an alert and fails at the stage that FAILS_AT names.
#include <cstring>
#include <string>

#include "hostapi/HostInterface.h"

#define TEXT_OF(word) #word
#define TEXT(word) TEXT_OF(word)

namespace {

HFT g_core = nullptr;

HFT Table(const char* name, ASVersion version)
{
    const auto atom = reinterpret_cast<ASAtomFromStringSlotProc>(g_core[kSlotASAtomFromString]);
    return reinterpret_cast<ASExtensionMgrGetHFTSlotProc>(g_core[kSlotASExtensionMgrGetHFT])(atom(name), version);
}

void Say(const char* stage)
{
    const HFT view = Table(HOST_TABLE_ACROVIEW, 0x00060000);
    const std::string line = std::string(TEXT(SAYS)) + " " + stage;
    reinterpret_cast<AVAlertNoteSlotProc>(view[kSlotAVAlertNote])(line.c_str());
}

/// Says the stage, then fails when it is the one to fail at: raising, or declining.
ASBool Reach(const char* stage)
{
    Say(stage);
    if (std::strcmp(TEXT(FAILS_AT), stage) != 0) return 1;
    if (std::strcmp(TEXT(HOW), "raise") == 0) reinterpret_cast<ASRaiseSlotProc>(g_core[kSlotASRaise])(genErrBadParm);
    return 0;
}

void HOSTCALL Started(void*) { Say("started"); }
ASBool HOSTCALL Export() { return Reach("export"); }
ASBool HOSTCALL Import()
{
    const HFT view = Table(HOST_TABLE_ACROVIEW, 0x00060000);
    reinterpret_cast<AVAppRegisterNotificationSlotProc>(view[kSlotAVAppRegisterNotification])(
        AVAppDidInitializeNSEL, nullptr, reinterpret_cast<void*>(&Started), nullptr);
    return Reach("import");
}
ASBool HOSTCALL Init() { return Reach("init"); }
ASBool HOSTCALL Unload() { return Reach("unload"); }

ASBool HOSTCALL Handshake(ASUns32, void* data)
{
    auto& handshake = *static_cast<PIHandshakeData_V0200*>(data);
    if (std::strlen(TEXT(NAMED)) > 0)
        handshake.extensionName =
            reinterpret_cast<ASAtomFromStringSlotProc>(g_core[kSlotASAtomFromString])(TEXT(NAMED));
    handshake.exportHFTsCallback = reinterpret_cast<ASCallback>(&Export);
    handshake.importReplaceAndRegisterCallback = reinterpret_cast<ASCallback>(&Import);
    handshake.initCallback = reinterpret_cast<ASCallback>(&Init);
    handshake.unloadCallback = reinterpret_cast<ASCallback>(&Unload);
    return Reach("handshake");
}

ASBool HOSTCALL Setup(ASUns32, void* data)
{
    auto& sdk = *static_cast<PISDKData_V0200*>(data);
    g_core = sdk.coreHFT;
    sdk.handshakeCallback = reinterpret_cast<ASCallback>(&Handshake);
    return Reach("setup");
}

}  // namespace

extern "C" HOSTEXPORT ASBool HOSTCALL ENTRY(ASUns32 hostVersion, ASUns32* version, PISetupSDKProcType* setup, void*)
{
    *version = hostVersion;
    *setup = &Setup;
    return 1;
}
