#include "ui/DlgErrorReport.h"

#include "platform/NarrowText.h"

namespace {

enum Column { kDescription, kFileName, kFileNumber };

std::string CellOf(const ErrorReportEntry& entry, std::size_t column)
{
    switch (column) {
        case kDescription:
            return entry.description;
        case kFileName:
            return platform::Utf8FromNarrow(entry.fileName);
        default:
            return std::to_string(entry.fileNumber);
    }
}

}  // namespace

CDlgErrorReport::CDlgErrorReport(DialogServices services, const CErrorReport& report, std::string title,
                                 std::string heading, std::string listName)
    : m_services(std::move(services)),
      m_report(report),
      m_title(std::move(title)),
      m_heading(heading.empty() ? kErrorReportHeading : std::move(heading)),
      m_listName(std::move(listName))
{
}

void CDlgErrorReport::Show()
{
    DialogForm form = Describe();
    m_services.windows.Show(form);
}

DialogForm CDlgErrorReport::Describe()
{
    const auto& entries = m_report.Entries();
    ListView list{
        .name = m_listName,
        .columns = {{" Description"}, {" File Name", 36}, {" File Number", 12}},
        .count = [&entries] { return entries.size(); },
        .text = [&entries](std::size_t row, std::size_t column) { return CellOf(entries[row], column); },
        .icon = [&entries](std::size_t row) { return entries[row].isError ? ListIcon::Error : ListIcon::Warning; },
        .lines = 14,
        .width = 110};
    return {.title = m_title,
            .controls = {{.what = StaticText{.text = m_heading, .bold = true}, .id = "heading"},
                         {.what = StaticText{.text = m_listName}},
                         {.what = std::move(list), .id = "list", .grows = true}},
            .buttons = {{.what = Button{"&Save...",
                                        [this] {
                                            Save();
                                            return FormAnswer::StayOpen;
                                        }}},
                        {.what = Button{"OK", [] { return FormAnswer::Confirm; }, ButtonRole::Default}}},
            .focus = "list"};
}

void CDlgErrorReport::Save()
{
    const auto path =
        m_services.windows.SaveFile({.filter = "Text Document (*.txt)|*.txt; *.txt|All Files (*.*)|*.*||",
                                     .defaultExtension = "txt",
                                     .initial = "Report.txt"});
    if (path && !m_report.Save(*path))
        m_services.windows.Message(MessageKind::Warning, "The report cannot be written to " +
                                                             platform::Utf8FromNarrow(*path) +
                                                             ". Please choose another folder or name.");
}
