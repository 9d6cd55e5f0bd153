#include "tools/DlgSpreadsheet.h"

#include <utility>

#include "base/Names.h"
#include "base/Text.h"
#include "platform/NarrowText.h"
#include "tools/DlgAddMetadataFields.h"
#include "tools/DlgMetadataLoadOptions.h"
#include "tools/TableFile.h"
#include "ui/DlgErrorReport.h"

namespace {

constexpr char kTooManyColumns[] = "Cannot add more than 200 fields.";
constexpr char kTooManyAtOnce[] = "Cannot add more than 100 fields.";
constexpr char kCannotOpenTable[] =
    "Cannot open input file. Please verify that this file is not open in another application.";
constexpr char kImportFilter[] = "Text CSV File (*.csv)|*.csv|Tab-delimited Text File (*.txt)|*.txt||";
constexpr char kUnsaved[] =
    "%d cell(s) of %d document(s) have been changed and not applied. Do you want to close without applying them?";

int Number(std::size_t count) { return static_cast<int>(count); }

std::string Joined(const std::vector<std::string>& texts)
{
    std::string joined;
    for (const std::string& text : texts) joined += (joined.empty() ? "" : ", ") + text;
    return joined;
}

}  // namespace

CDlgSpreadsheet::CDlgSpreadsheet(DialogServices services, CMetadataTable& table)
    : m_services(services), m_table(table), m_rows(table.Model()), m_replace(std::move(services), m_rows)
{
    m_rows.MoveTo({0, 1});
}

void CDlgSpreadsheet::Show()
{
    DialogForm form = Describe();
    (void)m_services.windows.Show(form);
}

FormControl CDlgSpreadsheet::PlainButton(const char* label, void (CDlgSpreadsheet::*act)())
{
    return {.what = Button{label, [this, act] {
                               (this->*act)();
                               return FormAnswer::StayOpen;
                           }}};
}

FormControl CDlgSpreadsheet::FilterRow()
{
    const auto filter = [this] { Filter(); };
    return {.what = Row{{{.what = TextField{.label = "Show &rows with:", .value = &m_filter, .width = 30},
                          .id = "filter",
                          .changed = filter},
                         {.what = Choice{"i&n:", {"All columns", "Column of the cursor"}, &m_filterScope},
                          .id = "scope",
                          .changed = filter},
                         {.what = CheckBox{"Chan&ged only", &m_changedOnly}, .id = "changed", .changed = filter}}}};
}

FormControl CDlgSpreadsheet::ToolRow()
{
    FormControl undo = PlainButton("&Undo", &CDlgSpreadsheet::Undo);
    undo.enabled = [this] { return m_table.Model().CanUndo(); };
    FormControl redo = PlainButton("Re&do", &CDlgSpreadsheet::Redo);
    redo.enabled = [this] { return m_table.Model().CanRedo(); };
    FormControl replace = PlainButton("Re&place...", &CDlgSpreadsheet::Replace);
    replace.id = "replace";
    return {.what = Row{{std::move(undo), std::move(redo), PlainButton("Add &Fields...", &CDlgSpreadsheet::AddFields),
                         std::move(replace), PlainButton("&Import...", &CDlgSpreadsheet::Import),
                         PlainButton("&Export...", &CDlgSpreadsheet::Export)}}};
}

DialogForm CDlgSpreadsheet::Describe()
{
    GridView cells{.name = "Documents",
                   .rows = &m_rows,
                   .finds = "replace",
                   .pasted = [this](const PasteResult& result) { Pasted(result); },
                   .lines = 18,
                   .width = 130};
    return {.title = "Edit Metadata",
            .controls = {{.what = StaticText{.text = "", .bold = true, .current = [this] { return Heading(); }},
                          .id = "heading"},
                         FilterRow(),
                         {.what = std::move(cells), .id = "cells", .grows = true},
                         {.what = StaticText{.text = "", .current = [this] { return Status(); }}, .id = "status"},
                         ToolRow()},
            .buttons = {{.what = Button{"&Help...",
                                        [this] {
                                            m_services.showHelp("EditMetadata.htm");
                                            return FormAnswer::StayOpen;
                                        }}},
                        // Also while nothing is changed: a cell that is being edited counts when it is pressed.
                        PlainButton("&Apply", &CDlgSpreadsheet::Apply),
                        {.what = Button{"Cancel", [this] { return Close(); }, ButtonRole::Cancel}}},
            .focus = "cells"};
}

std::string CDlgSpreadsheet::Heading() const
{
    std::string text = "Edit Document Metadata" + FormatText(" - %d record(s)", Number(m_table.Model().Rows()));
    if (m_rows.Size() < m_table.Model().Rows()) text += FormatText(", %d of them shown", Number(m_rows.Size()));
    return text;
}

std::string CDlgSpreadsheet::Status() const
{
    const CGridModel& model = m_table.Model();
    const std::string changed = model.ChangedCells() == 0
                                    ? "No cell is changed."
                                    : FormatText("%d cell(s) of %d document(s) are changed.",
                                                 Number(model.ChangedCells()), Number(model.ChangedRows().size()));
    return m_said + (m_said.empty() || m_said.back() == '\n' ? "" : " ") + changed;
}

void CDlgSpreadsheet::Filter()
{
    GridFilter filter{.text = m_filter, .changedOnly = m_changedOnly};
    if (m_filterScope == 1) filter.column = m_rows.Cursor().column;
    m_rows.Filter(std::move(filter));
}

void CDlgSpreadsheet::Undo() { (void)m_rows.Undo(); }

void CDlgSpreadsheet::Redo() { (void)m_rows.Redo(); }

void CDlgSpreadsheet::Replace() { m_replace.Show(); }

void CDlgSpreadsheet::Pasted(const PasteResult& result)
{
    m_said = FormatText("%d cell(s) have been pasted.", Number(result.changed));
    if (result.refused > 0)
        m_said += FormatText(" %d value(s) did not meet a cell that can be edited.", Number(result.refused));
}

void CDlgSpreadsheet::AddFields()
{
    const std::size_t columns = m_table.Model().Columns();
    if (columns >= kMostFieldColumns) return Warn(kTooManyColumns);
    CDlgAddMetadataFields chooser(m_services);
    if (!chooser.Show()) return;
    const std::vector<std::string> fields = chooser.Fields();
    if (fields.size() > kMostFieldsAtOnce) return Warn(kTooManyAtOnce);
    if (columns + fields.size() > kMostFieldColumns) return Warn(kTooManyColumns);
    CCustomMonitor progress;
    progress.Start([this] { return m_services.windows.MakeProgress(); });
    if (m_table.AddFields(fields, progress)) m_rows.MoveTo({m_rows.Cursor().row, m_table.Model().Columns() - 1});
}

void CDlgSpreadsheet::Import()
{
    const auto path = m_services.windows.OpenFile({.filter = kImportFilter, .defaultExtension = "csv"});
    if (!path) return;
    CDlgMetadataLoadOptions options(m_services, EqualsIgnoreCaseAscii(Extension(*path), "txt") ? '\t' : ',');
    if (!options.Show()) return;
    const auto text = ReadDecodedText(*path, options.Set());
    if (!text) return Warn(kCannotOpenTable);
    const auto table = ParseSeparated(text->utf8, {.separator = options.Separator()});
    if (!table) return Warn(platform::Utf8FromNarrow(*path) + ": " + table.Error());
    auto plan = m_table.PlanImport(*table, options.Rules());
    if (!plan) return Warn(plan.Error());
    if (!MayImport(*plan, *path, text->set)) return;
    (void)m_table.Model().Change(std::move(plan->changes));
    m_said = FormatText("%d record(s) have been updated.", Number(plan->documents));
    m_services.windows.Message(MessageKind::Note, m_said);
}

/// Tells what would happen; false when the user does not want it.
bool CDlgSpreadsheet::MayImport(const ImportPlan& plan, const std::string& path, const std::string& set)
{
    if (!plan.refused.empty()) {
        CErrorReport report;
        for (const std::string& sentence : plan.refused) report.Add({sentence, true, path, 1});
        CDlgErrorReport(m_services, report, "Import Metadata",
                        "These records of the file cannot be imported. The others can.")
            .Show();
    }
    std::string text =
        FormatText("The file holds %d record(s) in %s. %d cell(s) of %d document(s) will be changed.",
                   Number(plan.records), set.c_str(), Number(plan.changes.size()), Number(plan.documents));
    if (plan.unmatched > 0)
        text += FormatText("\n%d record(s) name no document of the table.", Number(plan.unmatched));
    if (!plan.readOnly.empty())
        text += "\nThese columns stay as they are, because they cannot be edited before they are added as fields: " +
                Joined(plan.readOnly) + ".";
    return m_services.windows.Message(MessageKind::Confirm, text);
}

void CDlgSpreadsheet::Export()
{
    const auto file = AskForTableFile(m_services);
    if (!file) return;
    const CGridModel& model = m_table.Model();
    std::vector<std::string> row(model.Columns());
    for (std::size_t column = 0; column < row.size(); ++column) row[column] = model.Column(column).name;
    CReportWriter table;
    if (!OpenTable(table, *file, row, m_services)) return;
    for (std::size_t place = 0; place < m_rows.Size(); ++place) {
        for (std::size_t column = 0; column < row.size(); ++column) row[column] = m_rows.Text(place, column);
        table.AddRow(row);
    }
    CloseTable(table, *file, m_services);
}

void CDlgSpreadsheet::Apply()
{
    const std::size_t wanted = m_table.Model().ChangedRows().size();
    if (wanted == 0) return m_said.clear();
    CErrorReport report;
    CCustomMonitor progress;
    progress.Start([this] { return m_services.windows.MakeProgress(); });
    const std::size_t done = m_table.Apply(progress, report);
    m_said = FormatText("%d out of %d document(s) have been updated.\n", Number(done), Number(wanted));
    if (m_changedOnly) m_rows.Refresh();
    if (report.Empty()) return;
    CDlgErrorReport(m_services, report, "Processing Results",
                    m_said + "The following errors and warnings were encountered during the processing:")
        .Show();
}

FormAnswer CDlgSpreadsheet::Close()
{
    const CGridModel& model = m_table.Model();
    const std::string question =
        FormatText(kUnsaved, Number(model.ChangedCells()), Number(model.ChangedRows().size()));
    if (model.ChangedCells() == 0 || m_services.windows.Message(MessageKind::Question, question))
        return FormAnswer::Cancel;
    return FormAnswer::StayOpen;
}
