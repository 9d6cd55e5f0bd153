// The plug-in's items in the host's menus.
#pragma once

#include <string>

/// Adds the sub-menu "Ferrule Tools" with its items, and the items for help and about. Items of a menu that the host
/// does not have are left out. Call once; the items keep using `helpFile`, which must live until the host exits.
/// May throw CHostException.
void BuildMenus(const std::string& helpFile);
