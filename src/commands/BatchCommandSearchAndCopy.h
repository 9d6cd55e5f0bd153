// The step "Search and Copy Files".
#pragma once

#include <memory>
#include <vector>

#include "commands/BatchCommand.h"
#include "pdflib/DocumentSearch.h"
#include "search/SearchReport.h"
#include "search/SearchRules.h"

/// Searches the text of each document by rules. A rule that finds something may run a script in the document and copy
/// its file; all that is found goes into reports. What goes wrong with a rule is logged and ends neither the others
/// nor the step; settings that lack a rule put the step in error.
///
/// In a job the reports are written by whoever gave it; else by this object, and what "overwrite" replaces is
/// replaced once as long as the object lives.
class CBatchCommandSearchAndCopy final : public CBatchCommand {
public:
    /// The log is borrowed and must outlive the object.
    explicit CBatchCommandSearchAndCopy(CLogWriter& log);

private:
    /// Parameters as they are used, for all documents that come with the same ones.
    struct Prepared {
        CSettingsRecord record;
        CDocumentSearch search;
    };

    void SetDefaultParameters(CCabEditor parameters) override;
    std::vector<std::string> DescribeParameters(CCabView parameters) const override;
    DialogOutcome ShowSettingsDialog(CCabEditor parameters, const DialogServices& dialogs) override;
    bool ProcessDocument(const CommandTarget& target, CCabView parameters) override;

    const Prepared& Prepare(CCabView parameters);
    void SearchDocument(PDDoc document, const Prepared& prepared);
    void Report(const CDocumentSearch& search, const SearchedDocument& searched);

    CLogWriter& m_log;
    std::vector<std::unique_ptr<Prepared>> m_prepared;  // the latest last
    CSearchReport m_report;
};
