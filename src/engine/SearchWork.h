#pragma once

#include <optional>
#include <string>
#include <vector>

#include "engine/Work.h"
#include "pdflib/DocumentSearch.h"
#include "protocol/SearchOrder.h"

/// Finds texts in documents and changes none. What it finds goes with the file's outcome, and what a report gets of
/// it, too. Copies are made when that is ordered, or when a rule of a file of rules says so.
class CSearchWork final : public CWork {
public:
    /// `rulesFile`: empty for the terms of the order.
    CSearchWork(SearchOrder order, std::string rulesFile);

    /// Fails for rules that cannot be read or used.
    [[nodiscard]] std::string Load(CLogWriter& log) override;
    [[nodiscard]] std::string Refusal(CLogWriter&) override { return {}; }
    [[nodiscard]] std::vector<std::string> Extensions(CLogWriter&) const override { return {"pdf"}; }
    [[nodiscard]] std::string InputPlaces(const ExecutorSettings& settings,
                                          const std::vector<std::string>& extensions, Asking asking, CLogWriter& log,
                                          const TakePlace& take) const override;
    [[nodiscard]] std::vector<std::string> OwnOutputFolders() const override;
    [[nodiscard]] WorkFacts Facts(const PlanRequest& request) const override;
    void Begin(const WorkServices& services) override;
    [[nodiscard]] ProcessedFile Process(const std::string& path, int number) override;

private:
    [[nodiscard]] Expected<SearchSettings> Settings() const;
    [[nodiscard]] std::vector<ResultName> Copies() const;
    void SearchIn(PDDoc document, ProcessedFile& file) const;

    SearchOrder m_order;
    std::string m_rulesFile;
    std::optional<CDocumentSearch> m_search;  // made by Load
    CLogWriter* m_log = nullptr;
};
