// Reads the properties of many documents.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "engine/Work.h"
#include "protocol/Metadata.h"

/// Finds the properties of each document; changes and writes nothing.
class CPropertiesWork final : public CWork {
public:
    explicit CPropertiesWork(MetadataOrder order) : m_order(std::move(order)) {}

    [[nodiscard]] std::string Load(CLogWriter&) override { return {}; }
    [[nodiscard]] std::string Refusal(CLogWriter&) override { return {}; }
    [[nodiscard]] std::vector<std::string> Extensions(CLogWriter&) const override { return {"pdf"}; }
    [[nodiscard]] Expected<std::vector<std::string>> InputPlaces(const ExecutorSettings& settings,
                                                                 const std::vector<std::string>& extensions,
                                                                 Asking asking, CLogWriter& log) const override;
    [[nodiscard]] WorkFacts Facts(const PlanRequest& request) const override;
    void Begin(const WorkServices& services) override { m_run.emplace(services); }
    [[nodiscard]] ProcessedFile Process(const std::string& path, int number) override;

private:
    MetadataOrder m_order;
    std::optional<WorkServices> m_run;
};
