#include "tools/TableFile.h"

#include "base/Names.h"
#include "platform/NarrowText.h"
#include "platform/Programs.h"

namespace {

constexpr char kCannotCreate[] = "Cannot create output file. Please select a different location or filename.";

}  // namespace

std::optional<TableFile> AskForTableFile(const DialogServices& dialogs)
{
    const auto path = dialogs.windows.SaveFile({.filter = "Microsoft Excel XML File (*.xml)|*.xml|Text CSV File "
                                                          "(*.csv)|*.csv|Tab-delimited Text File (*.txt)|*.txt||",
                                                .defaultExtension = "xml",
                                                .initial = "Metadata"});
    if (!path) return std::nullopt;
    return TableFile{*path, ReportFormatOf(Extension(*path))};
}

bool OpenTable(CReportWriter& table, const TableFile& file, const std::vector<std::string>& columns,
               const DialogServices& dialogs)
{
    std::vector<ReportColumn> reported;
    for (const std::string& name : columns) reported.push_back({.name = name});
    if (table.Open(file.path, std::move(reported), file.format)) return true;
    dialogs.windows.Message(MessageKind::Warning, kCannotCreate);
    return false;
}

void CloseTable(CReportWriter& table, const TableFile& file, const DialogServices& dialogs)
{
    if (const auto closed = table.Close(); !closed.Ok()) {
        dialogs.windows.Message(MessageKind::Warning, platform::Utf8FromNarrow(file.path) + " cannot be written (" +
                                                          platform::ErrorText(closed.errorNumber) + ").");
        return;
    }
    if (dialogs.windows.Message(MessageKind::Question, "Do you want to open output file in the editor?") &&
        !platform::OpenDocument(file.path))
        dialogs.windows.Message(MessageKind::Warning,
                                "There is no program that shows " + platform::Utf8FromNarrow(file.path) + ".");
}
