#include "hostcalls/Menus.h"

#include "hostcalls/HostFrame.h"
#include "hostcalls/HostTables.h"

CMenuRef::~CMenuRef()
{
    if (m_menu) hostcalls::Quietly([this] { HostCall(HOST_SLOT(AcroView, AVMenuRelease), m_menu); });
}

CMenuItemRef::~CMenuItemRef()
{
    if (m_item) hostcalls::Quietly([this] { HostCall(HOST_SLOT(AcroView, AVMenuItemRelease), m_item); });
}

void CMenuItemRef::SetExecute(AVExecuteProc procedure, void* data)
{
    HostCall(HOST_SLOT(AcroView, AVMenuItemSetExecuteProc), m_item, Callback(procedure), data);
}

void CMenuItemRef::SetComputeEnabled(AVComputeEnabledProc procedure, void* data)
{
    HostCall(HOST_SLOT(AcroView, AVMenuItemSetComputeEnabledProc), m_item, Callback(procedure), data);
}

void CMenuItemRef::Execute() { HostCall(HOST_SLOT(AcroView, AVMenuItemExecute), m_item); }

std::optional<CMenuRef> FindMenu(const std::string& name)
{
    AVMenubar menubar = HostCall(HOST_SLOT(AcroView, AVAppGetMenubar));
    if (!menubar) return std::nullopt;
    AVMenu menu = HostCall(HOST_SLOT(AcroView, AVMenubarAcquireMenuByName), menubar, name.c_str());
    if (!menu) return std::nullopt;
    return CMenuRef(menu);
}

std::optional<CMenuItemRef> FindMenuItem(const std::string& name)
{
    AVMenubar menubar = HostCall(HOST_SLOT(AcroView, AVAppGetMenubar));
    if (!menubar) return std::nullopt;
    AVMenuItem item = HostCall(HOST_SLOT(AcroView, AVMenubarAcquireMenuItemByName), menubar, name.c_str());
    if (!item) return std::nullopt;
    return CMenuItemRef(item);
}

CMenuRef NewMenu(const std::string& title, const std::string& name)
{
    AVMenu menu = HostCall(HOST_SLOT(AcroView, AVMenuNew), title.c_str(), name.c_str(), HostTables().Extension());
    if (!menu) hostcalls::ThrowHostError(genErrNoMemory);
    return CMenuRef(menu);
}

CMenuItemRef NewMenuItem(const std::string& title, const std::string& name, const CMenuRef* subMenu)
{
    AVMenuItem item =
        HostCall(HOST_SLOT(AcroView, AVMenuItemNew), title.c_str(), name.c_str(), subMenu ? subMenu->Get() : nullptr,
                 ASBool{false}, char{NO_SHORTCUT}, AVFlagBits16{0}, nullptr, HostTables().Extension());
    if (!item) hostcalls::ThrowHostError(genErrNoMemory);
    return CMenuItemRef(item);
}

void AppendMenuItem(const CMenuRef& menu, const CMenuItemRef& item)
{
    HostCall(HOST_SLOT(AcroView, AVMenuAddMenuItem), menu.Get(), item.Get(), APPEND_MENUITEM);
}
