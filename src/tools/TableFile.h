// The file that a tool writes a table of documents into.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "common/ReportWriter.h"
#include "ui/Windows.h"

struct TableFile {
    std::string path;
    ReportFormat format = ReportFormat::ExcelXml;
};

/// Asks where the table is to go; nothing when that was cancelled.
[[nodiscard]] std::optional<TableFile> AskForTableFile(const DialogServices& dialogs);

/// Creates it, with columns of these names. False, and the user was told, when it cannot be created.
[[nodiscard]] bool OpenTable(CReportWriter& table, const TableFile& file, const std::vector<std::string>& columns,
                             const DialogServices& dialogs);

/// Puts the complete table in place, and shows it when the user wants that. Tells when it cannot be written.
void CloseTable(CReportWriter& table, const TableFile& file, const DialogServices& dialogs);
