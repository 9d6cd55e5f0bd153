// The entry of the plug-in: binds to the host's tables and hands the host the life-cycle callbacks.
#include <algorithm>
#include <memory>

#include "host/FerruleApp.h"
#include "hostapi/HostRecords.h"
#include "hostcalls/Application.h"
#include "hostcalls/Cab.h"
#include "hostcalls/HostFrame.h"
#include "hostcalls/HostTables.h"
#include "platform/Paths.h"

namespace {

constexpr ASUns32 kHandshakeVersion = 0x00020000;
constexpr char kExtensionName[] = "QLNX:Ferrule";

platform::WindowHandle hostWindow = nullptr;
void* moduleInstance = nullptr;
std::unique_ptr<CFerruleApp> app;  // goes with the library

ASBool HOSTCALL ExportTables() { return 1; }

ASBool HOSTCALL ImportReplaceAndRegister()
{
    return GuardCallback(ASBool{0}, [] {
        app = std::make_unique<CFerruleApp>(platform::ModulePath(reinterpret_cast<const void*>(&ExportTables)),
                                            hostWindow);
        app->ImportAndRegister();
        return ASBool{1};
    });
}

ASBool HOSTCALL Initialize()
{
    return GuardCallback(ASBool{0}, [] {
        if (!app) return ASBool{0};
        app->Initialize();
        return ASBool{1};
    });
}

ASBool HOSTCALL Unload()
{
    GuardCallback([] {
        if (app) app->Unload();
    });
    return 1;
}

/// The host without editing: its maker demands that plug-ins which are not made for it decline. Asked with all care,
/// because every other host is to go on, also one that cannot say what it is.
bool IsReader()
{
    std::optional<std::string> product;
    return !CatchHostError([&] { product = Product(); }) && product == "Reader";
}

ASBool HOSTCALL Handshake(ASUns32 version, void* data)
{
    if (version != kHandshakeVersion || data == nullptr) return 0;
    return GuardCallback(ASBool{0}, [data] {
        if (IsReader()) return ASBool{0};
        auto& handshake = *static_cast<PIHandshakeData_V0200*>(data);
        handshake.extensionName = Atom(kExtensionName);
        handshake.exportHFTsCallback = WrapCallback(reinterpret_cast<void*>(&ExportTables));
        handshake.importReplaceAndRegisterCallback = WrapCallback(reinterpret_cast<void*>(&ImportReplaceAndRegister));
        handshake.initCallback = WrapCallback(reinterpret_cast<void*>(&Initialize));
        handshake.unloadCallback = WrapCallback(reinterpret_cast<void*>(&Unload));
        return ASBool{1};
    });
}

ASBool HOSTCALL Setup(ASUns32 version, void* data)
{
    if (version != kHandshakeVersion || data == nullptr) return 0;
    auto& sdk = *static_cast<PISDKData_V0200*>(data);
    if (sdk.handshakeVersion != kHandshakeVersion || sdk.coreHFT == nullptr) return 0;
    return GuardCallback(ASBool{0}, [&sdk] {
        if (!HostTables().Import(sdk.coreHFT)) return ASBool{0};
        HostTables().SetExtension(sdk.extensionID);  // the import forgets all that was before
        sdk.handshakeCallback = WrapCallback(reinterpret_cast<void*>(&Handshake));
        return ASBool{1};
    });
}

}  // namespace

/// Called by the host right after loading. `platformWords` points to the host's main window handle and the plug-in's
/// module handle, in this order; either may be null.
extern "C" HOSTEXPORT ASBool HOSTCALL PlugInMain(ASUns32 hostVersion, ASUns32* handshakeVersion,
                                                 PISetupSDKProcType* setup, void* platformWords)
{
    if (handshakeVersion == nullptr || setup == nullptr) return 0;
    if (platformWords != nullptr) {
        void* const* words = static_cast<void* const*>(platformWords);
        hostWindow = words[0];
        moduleInstance = words[1];
    }
    *handshakeVersion = std::min(hostVersion, kHandshakeVersion);
    *setup = &Setup;
    return 1;
}
