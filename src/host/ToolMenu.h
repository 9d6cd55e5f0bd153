// The plug-in's menu items, and what they run.
#pragma once

#include <optional>

#include "common/Log.h"
#include "host/AppSettings.h"
#include "ui/Windows.h"

/// What the tools work with. Borrowed until the host exits.
struct ToolServices {
    const AppPaths& paths;
    std::optional<AppSettings>& settings;  // none until they have been read; no tool can be started then
    CNumberedLog& log;
    DialogSource dialogs;
};

/// Product and version.
[[nodiscard]] DialogForm AboutForm();

/// Adds the sub-menu "Ferrule Tools" with its items, and the items for help and about. Items of a menu that the host
/// does not have are left out. Call once; the items keep using the services, which must live until the host exits.
/// May throw CHostException.
void BuildMenus(ToolServices& toolServices);
