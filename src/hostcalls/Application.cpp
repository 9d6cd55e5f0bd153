#include "hostcalls/Application.h"

#include "hostcalls/Atoms.h"
#include "hostcalls/HostEntry.h"
#include "hostcalls/HostSlot.h"
#include "hostcalls/Menus.h"

#include <cstdint>

namespace {

constexpr double kQuitYieldSeconds = 2.0;

}  // namespace

HostVersion GetHostVersion()
{
    AVTVersionNumPart major = 0;
    AVTVersionNumPart minor = 0;
    HostCall(HOST_SLOT(AcroView, AVAppGetVersion), &major, &minor);
    return {major, static_cast<std::uint16_t>(minor) >> 8};
}

std::string HostName() { return AtomText(HostCall(HOST_SLOT(AcroView, AVAppGetName))); }

std::string HostLanguage()
{
    char code[16] = {};  // four bytes are due; the rest is a margin
    HostCall(HOST_SLOT(AcroView, AVAppGetLanguage), code);
    code[sizeof code - 1] = '\0';
    return code;
}

std::optional<std::string> Product()
{
    const void* answer = HostCall(HOST_SLOT(Core, ASGetConfiguration), Atom("Product"));
    const auto unknown = reinterpret_cast<const void*>(~std::uintptr_t{0});
    if (!answer || answer == unknown) return std::nullopt;
    return std::string(static_cast<const char*>(answer));
}

void AlertNote(const std::string& text) { HostCall(HOST_SLOT(AcroView, AVAlertNote), text.c_str()); }

bool AlertConfirm(const std::string& text)
{
    return HostCall(HOST_SLOT(AcroView, AVAlertConfirm), text.c_str()) != 0;
}

bool ExecuteQuit()
{
    auto quit = FindMenuItem("Quit");
    if (!quit) return false;
    HostCall(HOST_SLOT(AcroView, AVAppYieldToOtherApps), kQuitYieldSeconds);
    quit->Execute();
    return true;
}

void RegisterIdle(AVIdleProc procedure, unsigned periodTicks)
{
    HostCall(HOST_SLOT(AcroView, AVAppRegisterIdleProc), Callback(procedure), nullptr, periodTicks);
}

void RegisterNotification(NSelector selector, void* procedure)
{
    HostCall(HOST_SLOT(AcroView, AVAppRegisterNotification), selector, HostTables().Extension(),
             WrapCallback(procedure), nullptr);
}

void SetWaitCursor()
{
    AVCursor cursor = HostCall(HOST_SLOT(AcroView, AVSysGetStandardCursor), WAIT_CURSOR);
    HostCall(HOST_SLOT(AcroView, AVSysSetCursor), cursor);
}

bool ModalWindowIsOpen() { return HostCall(HOST_SLOT(AcroView, AVAppModalWindowIsOpen)) != 0; }

void* ModalParent() { return HostCall(HOST_SLOT(Win, WinAppGetModalParent), nullptr); }
