// Menus and menu items of the host. Everything may throw CHostException.
#pragma once

#include <optional>
#include <string>
#include <utility>

#include "hostapi/HostRecords.h"

/// Owns one reference to a menu, or nothing (after a move).
class CMenuRef {
public:
    explicit CMenuRef(AVMenu adopted) noexcept : m_menu(adopted) {}
    CMenuRef(CMenuRef&& other) noexcept : m_menu(std::exchange(other.m_menu, nullptr)) {}
    CMenuRef& operator=(CMenuRef&& other) noexcept
    {
        std::swap(m_menu, other.m_menu);
        return *this;
    }
    ~CMenuRef();
    AVMenu Get() const { return m_menu; }

private:
    AVMenu m_menu;
};

/// Owns one reference to a menu item, or nothing (after a move).
class CMenuItemRef {
public:
    explicit CMenuItemRef(AVMenuItem adopted) noexcept : m_item(adopted) {}
    CMenuItemRef(CMenuItemRef&& other) noexcept : m_item(std::exchange(other.m_item, nullptr)) {}
    CMenuItemRef& operator=(CMenuItemRef&& other) noexcept
    {
        std::swap(m_item, other.m_item);
        return *this;
    }
    ~CMenuItemRef();
    AVMenuItem Get() const { return m_item; }

    /// The procedures are ours, not yet wrapped; they get `data` back, which must live until the host exits.
    void SetExecute(AVExecuteProc procedure, void* data);
    void SetComputeEnabled(AVComputeEnabledProc procedure, void* data);
    void Execute();

private:
    AVMenuItem m_item;
};

/// The menu or item of that name, sub-menus included; nothing when the menu bar has none.
[[nodiscard]] std::optional<CMenuRef> FindMenu(const std::string& name);
[[nodiscard]] std::optional<CMenuItemRef> FindMenuItem(const std::string& name);

[[nodiscard]] CMenuRef NewMenu(const std::string& title, const std::string& name);

/// A title "-" makes a separator; `subMenu` may be null.
[[nodiscard]] CMenuItemRef NewMenuItem(const std::string& title, const std::string& name,
                                       const CMenuRef* subMenu = nullptr);

void AppendMenuItem(const CMenuRef& menu, const CMenuItemRef& item);
