#include "openhost/program/PlugIns.h"

#include <algorithm>
#include <filesystem>

#include "openhost/app/AppState.h"
#include "openhost/app/Events.h"
#include "openhost/app/HostWindow.h"
#include "openhost/app/Menus.h"
#include "openhost/commands/Commands.h"
#include "openhost/commands/Handlers.h"
#include "openhost/conversion/Converters.h"
#include "openhost/core/Extensions.h"
#include "openhost/core/Host.h"
#include "openhost/core/Tables.h"
#include "platform/NarrowText.h"

namespace openhost {

namespace {

constexpr ASUns32 kHandshakeVersion = 0x00020000;

/// Runs one step of a plug-in's start; answers whether it agreed, else why not.
template <class Step>
bool Agrees(Step step, std::string& problem, const std::string& what)
{
    try {
        if (step()) return true;
        problem = "it declined at its " + what;
    } catch (const CHostRaise& raise) {
        problem = "it raised an error at its " + what + ": " + raise.Message();
    }
    return false;
}

void TakeBackRegistrations(ASExtension extension)
{
    Part<CIdleProcedures>().DropOwner(extension);
    Part<CNotifications>().DropOwner(extension);
    Part<CCommands>().DropOwner(extension);
    Part<CCommandHandlers>().DropOwner(extension);
    Part<CConverters>().DropOwner(extension);
    Part<CMenus>().DropOwner(extension);
}

bool CallEntry(PlugInMainProc entry, void* library, PISetupSDKProcType& setup)
{
    const CHostWindow* const window = Part<WindowPlace>().window;
    void* words[2] = {window ? window->Handle() : nullptr, library};
    ASUns32 version = 0;
    return CallPlugIn(entry, kHandshakeVersion, &version, &setup, static_cast<void*>(words)) &&
           version == kHandshakeVersion && setup;
}

bool CallSetup(PISetupSDKProcType setup, ASExtension extension, ASCallback& handshake)
{
    PISDKData_V0200 data = {};
    data.handshakeVersion = kHandshakeVersion;
    data.extensionID = extension;
    data.coreHFT = Part<CTables>().Get(Table::Core);
    const bool agreed = CallPlugIn(setup, kHandshakeVersion, static_cast<void*>(&data)) != 0;
    handshake = data.handshakeCallback;
    return agreed && handshake;
}

bool CallHandshake(ASCallback handshake, PIHandshakeData_V0200& data)
{
    data = {};
    data.handshakeVersion = kHandshakeVersion;
    data.appName = AtomFromText(kHostName);
    data.extensionName = kNullAtom;
    return CallPlugIn(reinterpret_cast<PIHandshakeProcType>(handshake), kHandshakeVersion,
                      static_cast<void*>(&data)) != 0;
}

}  // namespace

void CPlugIns::Load(const PlugInSource& source)
{
    PlugIn plugIn;
    plugIn.path = source.path;
    std::string problem;
    PlugInMainProc entry = source.entry;
    if (!entry) {
        plugIn.library = CPlugInLibrary::Load(source.path, problem);
        if (plugIn.library) entry = plugIn.library->Entry();
        if (plugIn.library && !entry) problem = "it exports no PlugInMain";
    }
    if (!entry) {
        Diagnose("plug-in " + source.path + " cannot be loaded: " + problem);
        return;
    }
    plugIn.extension = Part<CExtensions>().Add(source.path);
    plugIn.living = true;
    m_plugIns.push_back(std::move(plugIn));
    if (!ShakeHands(m_plugIns.back(), entry, problem)) GiveUp(m_plugIns.back(), problem);
}

bool CPlugIns::ShakeHands(PlugIn& plugIn, PlugInMainProc entry, std::string& problem)
{
    const CActiveExtensionScope active(plugIn.extension);
    PISetupSDKProcType setup = nullptr;
    ASCallback handshake = nullptr;
    void* const library = plugIn.library ? plugIn.library->Handle() : nullptr;
    return Agrees([&] { return CallEntry(entry, library, setup); }, problem, "entry") &&
           Agrees([&] { return CallSetup(setup, plugIn.extension, handshake); }, problem, "setup") &&
           Agrees([&] { return CallHandshake(handshake, plugIn.callbacks); }, problem, "handshake") &&
           TakeName(plugIn, problem);
}

bool CPlugIns::TakeName(PlugIn& plugIn, std::string& problem)
{
    ASAtom name = plugIn.callbacks.extensionName;
    if (name == kNullAtom) name = AtomFromText(platform::TextOf(platform::StandardPath(plugIn.path).filename()));
    if (Part<CExtensions>().NameTaken(name)) {
        problem = "another plug-in already has its name \"" + AtomText(name) + "\"";
        return false;
    }
    Part<CExtensions>().At(plugIn.extension).registeredName = name;
    return true;
}

void CPlugIns::RunStages()
{
    RunStage("export of tables", &PIHandshakeData_V0200::exportHFTsCallback);
    RunStage("import of tables", &PIHandshakeData_V0200::importReplaceAndRegisterCallback);
    RunStage("initialisation", &PIHandshakeData_V0200::initCallback);
}

void CPlugIns::RunStage(const char* stage, ASCallback PIHandshakeData_V0200::*callback)
{
    for (PlugIn& plugIn : m_plugIns) {
        const auto procedure = reinterpret_cast<PIInitProcType>(plugIn.callbacks.*callback);
        if (!plugIn.living || !procedure) continue;
        std::string problem;
        bool agreed = false;
        {
            const CActiveExtensionScope active(plugIn.extension);
            agreed = Agrees([&] { return CallPlugIn(procedure) != 0; }, problem, stage);
        }
        if (agreed) continue;
        TellToUnload(plugIn);
        GiveUp(plugIn, problem);
    }
}

void CPlugIns::TellToUnload(PlugIn& plugIn)
{
    const auto unload = reinterpret_cast<PIUnloadProcType>(plugIn.callbacks.unloadCallback);
    if (!unload) return;
    const CActiveExtensionScope active(plugIn.extension);
    try {
        CallPlugIn(unload);
    } catch (const CHostRaise& raise) {
        Diagnose("plug-in " + plugIn.path + " raised an error when it was unloaded: " + raise.Message());
    }
}

void CPlugIns::GiveUp(PlugIn& plugIn, const std::string& problem)
{
    Diagnose("plug-in " + plugIn.path + " is not used: " + problem);
    plugIn.living = false;
    Part<CExtensions>().At(plugIn.extension).living = false;
    TakeBackRegistrations(plugIn.extension);
}

void CPlugIns::Unload()
{
    for (auto plugIn = m_plugIns.rbegin(); plugIn != m_plugIns.rend(); ++plugIn) {
        if (!plugIn->living) continue;
        TellToUnload(*plugIn);
        plugIn->living = false;
        Part<CExtensions>().At(plugIn->extension).living = false;
        TakeBackRegistrations(plugIn->extension);
    }
}

std::size_t CPlugIns::Living() const
{
    return static_cast<std::size_t>(
        std::count_if(m_plugIns.begin(), m_plugIns.end(), [](const PlugIn& one) { return one.living; }));
}

}  // namespace openhost
