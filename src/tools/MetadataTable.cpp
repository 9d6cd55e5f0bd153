#include "tools/MetadataTable.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>

#include "base/Text.h"
#include "protocol/Metadata.h"

namespace {

constexpr char kProgressOfTable[] = "Processing file %d out of %d...";
constexpr char kNoFilenameColumn[] = "Cannot find a \"Filename\" field in the current data view.";
/// Those of the first columns that can be edited from the start.
constexpr std::array kEditableColumns = {"Title", "Subject", "Author", "Keywords"};
constexpr int kPathWidth = 40, kTextWidth = 24, kFactWidth = 12;  // characters

std::vector<CSpreadsheetColumn> FirstColumns()
{
    std::vector<CSpreadsheetColumn> columns;
    for (std::size_t column = 0; column < kPropertyColumns.size(); ++column) {
        const std::string name = kPropertyColumns[column];
        const bool isText = column >= kFirstInfoColumn && column < kFirstInfoColumn + kInfoColumns;
        columns.push_back({name, std::ranges::find(kEditableColumns, name) != kEditableColumns.end(),
                           column == 0 ? kPathWidth
                           : isText    ? kTextWidth
                                       : kFactWidth});
    }
    return columns;
}

/// Does something with each of so many documents and shows how far it is. False when the user has stopped it.
template <class Work>
bool ForEachDocument(std::size_t count, CProgressMonitorWrapper& progress, Work work)
{
    const int total = static_cast<int>(count);
    progress.BeginOperation();
    progress.SetDuration(total);
    bool cancelled = false;
    for (int number = 1; number <= total && !cancelled; ++number) {
        progress.SetOperationText(FormatText(kProgressOfTable, number, total));
        progress.SetCurrentValue(number);
        work(static_cast<std::size_t>(number) - 1);
        cancelled = progress.IsCancelled();
    }
    progress.EndOperation();
    return !cancelled;
}

}  // namespace

CMetadataTable::CMetadataTable(CMetadataDocuments& documents) : m_documents(documents), m_model(FirstColumns()) {}

bool CMetadataTable::Load(const std::vector<std::string>& paths, CProgressMonitorWrapper& progress,
                          CErrorReport& report)
{
    return ForEachDocument(paths.size(), progress, [&](std::size_t place) {
        auto texts = m_documents.Read(paths[place], {});
        if (!texts) {
            report.Add(
                {kCannotOpenDocument + (": " + texts.Error()), true, paths[place], static_cast<int>(place) + 1});
            return;
        }
        m_model.AddRow(*std::move(texts));
        m_paths.push_back(paths[place]);
    });
}

bool CMetadataTable::AddFields(const std::vector<std::string>& keys, CProgressMonitorWrapper& progress)
{
    std::vector<std::string> added;
    for (const std::string& key : keys)
        if (!m_model.ColumnNamed(key)) added.push_back(key);
    std::vector<std::vector<std::string>> columns(added.size(), std::vector<std::string>(m_paths.size()));
    const bool complete = added.empty() || ForEachDocument(m_paths.size(), progress, [&](std::size_t row) {
                              const auto texts = m_documents.Read(m_paths[row], added);
                              for (std::size_t place = 0; texts && place < added.size(); ++place)
                                  columns[place][row] = texts->at(kPropertyColumns.size() + place);
                          });
    if (!complete) return false;
    for (std::size_t place = 0; place < added.size(); ++place)
        m_model.AddColumn({added[place], true, kTextWidth}, std::move(columns[place]));
    for (std::size_t column = kFirstInfoColumn; column < kFirstInfoColumn + kInfoColumns; ++column)
        if (std::ranges::find(keys, m_model.Column(column).name) != keys.end()) m_model.MakeEditable(column);
    return true;
}

Expected<ImportPlan> CMetadataTable::PlanImport(const std::vector<SeparatedRecord>& table,
                                                MetadataImportRules rules) const
{
    const auto filename = m_model.ColumnNamed(kPropertyColumns[0]);
    if (!filename) return Failure(kNoFilenameColumn);
    std::vector<std::size_t> columns;  // those of the fields that can be imported
    for (std::size_t column = 0; column < m_model.Columns(); ++column) {
        const bool isInfo = column >= kFirstInfoColumn && column < kFirstInfoColumn + kInfoColumns;
        if (isInfo || column >= kPropertyColumns.size()) columns.push_back(column);
    }
    rules.fields.clear();
    for (const std::size_t column : columns) rules.fields.push_back(m_model.Column(column).name);
    rules.notAValue = kCannotOpenDocument;
    std::vector<std::string> paths;
    for (std::size_t row = 0; row < m_model.Rows(); ++row) paths.push_back(m_model.Cell({row, *filename}));

    auto import = ImportMetadata(table, paths, rules);
    if (!import) return Failure(import.Error());
    ImportPlan plan{.changes = {},
                    .records = import->records,
                    .unmatched = import->unmatched,
                    .refused = std::move(import->refused),
                    .readOnly = {}};
    std::set<std::size_t> rows, fixed;
    for (ImportedValue& value : import->values) {
        const GridCell cell{value.document, columns[value.field]};
        if (m_model.Cell(cell) == value.text) continue;
        if (!m_model.Column(cell.column).editable) {
            fixed.insert(cell.column);
            continue;
        }
        rows.insert(cell.row);
        plan.changes.push_back({cell, std::move(value.text)});
    }
    plan.documents = rows.size();
    for (const std::size_t column : fixed) plan.readOnly.push_back(m_model.Column(column).name);
    return plan;
}

std::map<std::string, std::string> CMetadataTable::Entries(std::size_t row) const
{
    std::map<std::string, std::string> entries;
    for (std::size_t column = 0; column < m_model.Columns(); ++column)
        if (m_model.IsChanged({row, column})) entries[m_model.Column(column).name] = m_model.Cell({row, column});
    return entries;
}

/// Size, time of change and their like: the row tells them as they are in the file that was written.
void CMetadataTable::ReadFactsAgain(std::size_t row)
{
    auto texts = m_documents.Read(m_paths[row], {});
    if (!texts) return;
    for (std::size_t column = 0; column < kPropertyColumns.size(); ++column)
        m_model.Refresh({row, column}, std::move(texts->at(column)));
}

std::size_t CMetadataTable::Apply(CProgressMonitorWrapper& progress, CErrorReport& report)
{
    const std::vector<std::size_t> rows = m_model.ChangedRows();
    std::size_t done = 0;
    m_hasApplied = true;
    (void)ForEachDocument(rows.size(), progress, [&](std::size_t place) {
        const std::size_t row = rows[place];
        const auto written = m_documents.Write(m_paths[row], Entries(row));
        const int number = static_cast<int>(row) + 1;
        if (!written) return report.Add({written.Error(), true, m_paths[row], number});
        if (!written->empty()) report.Add({*written, false, m_paths[row], number});
        m_model.Accept(row);
        ReadFactsAgain(row);
        m_updated.insert(row);
        ++done;
    });
    return done;
}
