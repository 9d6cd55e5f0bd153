// The host application: identity, alerts, dialogs, idle time, notifications, and its full-text catalog, which need
// not be there. Everything may throw CHostException.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "hostapi/HostRecords.h"
#include "hostapi/HostTypes.h"

struct HostVersion {
    int major = 0;
    int minor = 0;  // the upper of the two halves of the host's minor number
};

[[nodiscard]] HostVersion GetHostVersion();
[[nodiscard]] std::string HostName();
[[nodiscard]] std::string HostLanguage();            // three letters
[[nodiscard]] std::optional<std::string> Product();  // nothing when the host does not say

void AlertNote(const std::string& text);
[[nodiscard]] bool AlertConfirm(const std::string& text);

/// Lets the host end: yields two seconds to other programs, then executes the menu item "Quit". False, without the
/// yield, when the menu bar has no such item.
[[nodiscard]] bool ExecuteQuit();

/// Has a procedure called in idle moments, at least `periodTicks` (1/60 second) apart, until the host exits.
void RegisterIdle(AVIdleProc procedure, unsigned periodTicks);

/// Has a procedure called on an event until the host exits; its signature depends on the selector, its client data is
/// null.
void RegisterNotification(NSelector selector, void* procedure);

void SetWaitCursor();

/// True while the host shows a modal window; documents are better left alone then.
[[nodiscard]] bool ModalWindowIsOpen();

/// The window for our own dialogs to belong to; null when the host has none.
[[nodiscard]] void* ModalParent();

struct FileFilter {
    std::string description;
    std::vector<std::string> extensions;  // without dots
};

/// Lets the user choose existing files; nothing when the user cancelled.
[[nodiscard]] std::optional<std::vector<std::string>> OpenFilesDialog(const std::vector<FileFilter>& filters);

/// Lets the user choose a folder; nothing when the user cancelled.
[[nodiscard]] std::optional<std::string> ChooseFolderDialog();

// The host's full-text catalog, which need not be there.

[[nodiscard]] bool CatalogPresent();

/// Build or purge the index with that definition file, in the host's status codes. Throw CHostException, also when
/// there is no catalog.
[[nodiscard]] IndexStatus BuildCatalogIndex(const std::string& indexPath);
[[nodiscard]] IndexStatus PurgeCatalogIndex(const std::string& indexPath);
