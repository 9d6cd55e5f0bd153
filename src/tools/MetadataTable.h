// The information entries of many documents as a table that is edited and then written back.
#pragma once

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "base/Expected.h"
#include "common/ErrorReport.h"
#include "common/MetadataImport.h"
#include "common/Progress.h"
#include "ui/GridModel.h"

/// The documents behind the rows. Paths are in the narrow code page, texts UTF-8.
class CMetadataDocuments {
public:
    virtual ~CMetadataDocuments() = default;
    /// The texts of all property columns (protocol/Metadata.h) and then of the entries with these keys. Fails with a
    /// reason.
    [[nodiscard]] virtual Expected<std::vector<std::string>> Read(const std::string& path,
                                                                  const std::vector<std::string>& keys) = 0;
    /// Sets entries by their keys, an empty text takes one away, and saves. Answers what there is to say of it, which
    /// is nothing as a rule. Fails with a reason, and then nothing was written.
    [[nodiscard]] virtual Expected<std::string> Write(const std::string& path,
                                                      const std::map<std::string, std::string>& entries) = 0;
};

inline constexpr std::size_t kMostFieldColumns = 200;
inline constexpr std::size_t kMostFieldsAtOnce = 100;

/// What an import would do.
struct ImportPlan {
    std::vector<CellChange> changes;  ///< cells that would have another text
    std::size_t documents = 0;        ///< rows of these
    std::size_t records = 0, unmatched = 0;
    std::vector<std::string> refused;   ///< sentences about records
    std::vector<std::string> readOnly;  ///< columns that have values in the file and cannot be edited
};

/// One row for each document that could be read. The documents are borrowed.
class CMetadataTable {
public:
    explicit CMetadataTable(CMetadataDocuments& documents);

    CGridModel& Model() { return m_model; }
    const CGridModel& Model() const { return m_model; }
    /// Of the document in this row.
    const std::string& Path(std::size_t row) const { return m_paths.at(row); }

    /// Adds a row for each document. Those that cannot be read go into the report. False when the user has stopped
    /// it.
    bool Load(const std::vector<std::string>& paths, CProgressMonitorWrapper& progress, CErrorReport& report);
    /// Adds an editable column for each key, with what the documents have under it; a column that is there becomes
    /// editable. False when the user has stopped it: nothing was added.
    bool AddFields(const std::vector<std::string>& keys, CProgressMonitorWrapper& progress);
    /// Changes nothing. Fails with a sentence for people.
    [[nodiscard]] Expected<ImportPlan> PlanImport(const std::vector<SeparatedRecord>& table,
                                                  MetadataImportRules rules) const;
    /// Writes what was changed, document by document, and answers how many were saved. What fails goes into the
    /// report and stays changed in the table.
    std::size_t Apply(CProgressMonitorWrapper& progress, CErrorReport& report);
    bool HasApplied() const { return m_hasApplied; }
    /// How many documents were saved at least once.
    std::size_t Updated() const { return m_updated.size(); }

private:
    std::map<std::string, std::string> Entries(std::size_t row) const;
    void ReadFactsAgain(std::size_t row);

    CMetadataDocuments& m_documents;
    CGridModel m_model;
    std::vector<std::string> m_paths;
    bool m_hasApplied = false;
    std::set<std::size_t> m_updated;  // rows
};
