#pragma once

#include <string>

// What the plug-in's menu items run.

enum class Tool { CreateBatchFile, PasswordProtect, EditMetadata, ExportMetadata, Rename };

/// The guard in front of every tool: true for hosts from version 9 on, else an alert tells the user. May throw
/// CHostException, as all functions here.
[[nodiscard]] bool HostCanRunTools();

/// Runs a tool when the host is new enough. No tool is built yet: the user is told that it is not available.
void RunTool(Tool tool);

/// No help viewer is built yet: an alert names the help file.
void ShowHelp(const std::string& helpFile);

/// Product and version.
void ShowAbout();

// The plug-in's items in the host's menus.

/// Adds the sub-menu "Ferrule Tools" with its items, and the items for help and about. Items of a menu that the host
/// does not have are left out. Call once; the items keep using `helpFile`, which must live until the host exits.
/// May throw CHostException.
void BuildMenus(const std::string& helpFile);
