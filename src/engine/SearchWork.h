#pragma once

#include <optional>
#include <string>
#include <vector>

#include "engine/Work.h"
#include "pdflib/TextSearch.h"
#include "protocol/SearchOrder.h"

/// Finds texts in documents and changes none. What it finds goes with the file's outcome.
class CSearchWork final : public CWork {
public:
    explicit CSearchWork(const SearchOrder& order);

    /// Fails for an expression that does not compile.
    [[nodiscard]] std::string Load(CLogWriter& log) override;
    [[nodiscard]] std::string Refusal(CLogWriter&) override { return {}; }
    [[nodiscard]] std::vector<std::string> Extensions(CLogWriter&) const override { return {"pdf"}; }
    [[nodiscard]] Expected<std::vector<std::string>> InputPlaces(const ExecutorSettings& settings,
                                                                 const std::vector<std::string>& extensions,
                                                                 Asking asking, CLogWriter& log) const override;
    [[nodiscard]] WorkFacts Facts(const PlanRequest& request) const override;
    void Begin(const WorkServices& services) override;
    [[nodiscard]] ProcessedFile Process(const std::string& path, int number) override;

private:
    void SearchIn(PDDoc document, ProcessedFile& file) const;

    CTextSearch m_search;
    CLogWriter* m_log = nullptr;
};
