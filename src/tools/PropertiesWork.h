// Reads the properties of many documents.
#pragma once

#include <string>
#include <vector>

#include "protocol/Metadata.h"
#include "tools/ChosenFilesWork.h"

/// Finds the properties of each document; changes and writes nothing.
class CPropertiesWork final : public CChosenFilesWork {
public:
    explicit CPropertiesWork(MetadataOrder order) : m_order(std::move(order)) {}

    [[nodiscard]] std::string Load(CLogWriter&) override { return {}; }
    [[nodiscard]] WorkFacts Facts(const PlanRequest& request) const override;
    [[nodiscard]] ProcessedFile Process(const std::string& path, int number) override;

private:
    MetadataOrder m_order;
};
