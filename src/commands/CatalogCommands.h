// The steps "Rebuild Catalog Index" and "Purge Catalog Index".
#pragma once

#include <string>

#include "commands/BatchCommand.h"

/// How one catalog step differs from the other.
struct CatalogStepText {
    const StepDescription& step;
    const char* displayName;  // also the title of its log entries
    const char* description;  // "%s" stands for the index path
};

/// Runs one catalog operation on the index file of its parameters, once for each document; the document is not used.
/// A missing index file, a host without a catalog and a host error end the step quietly; every answer of the catalog
/// is only logged.
class CCatalogCommand : public CBatchCommand {
protected:
    /// The log is borrowed and must outlive the object.
    CCatalogCommand(const CatalogStepText& text, CLogWriter& log);

private:
    /// Answers the catalog's status code. Throws CHostException.
    virtual int RunCatalog(const std::string& indexPath) = 0;

    void SetDefaultParameters(CCabEditor parameters) final;
    std::vector<std::string> DescribeParameters(CCabView parameters) const final;
    DialogOutcome ShowSettingsDialog(CCabEditor parameters, const DialogServices& dialogs) final;
    bool ProcessDocument(const CommandTarget& target, CCabView parameters) final;

    CatalogStepText m_text;
    CLogWriter& m_log;
};

class CBatchCommandRebuildIndex final : public CCatalogCommand {
public:
    explicit CBatchCommandRebuildIndex(CLogWriter& log);

private:
    int RunCatalog(const std::string& indexPath) override;
};

class CBatchCommandPurgeIndex final : public CCatalogCommand {
public:
    explicit CBatchCommandPurgeIndex(CLogWriter& log);

private:
    int RunCatalog(const std::string& indexPath) override;
};

/// The sentence for a status code of the catalog, with the index path; empty for a code that it does not know.
[[nodiscard]] std::string CatalogStatusText(int status, const std::string& indexPath);
