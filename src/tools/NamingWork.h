// Finds new names for many documents.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "naming/DocumentName.h"
#include "protocol/RenameOrder.h"
#include "tools/ChosenFilesWork.h"

/// Builds the new name of each document from its content; changes and renames nothing. A document without a valid
/// name fails, with the reason.
class CNamingWork final : public CChosenFilesWork {
public:
    /// `settingsFile`: a file of settings that says what the order would; empty: the order counts.
    CNamingWork(NamingOrder order, std::string settingsFile)
        : m_order(std::move(order)), m_settingsFile(std::move(settingsFile))
    {
    }

    [[nodiscard]] std::string Load(CLogWriter& log) override;
    [[nodiscard]] WorkFacts Facts(const PlanRequest& request) const override;
    [[nodiscard]] ProcessedFile Process(const std::string& path, int number) override;

private:
    [[nodiscard]] std::string NameDocument(const std::string& path, int number, ProcessedFile& file) const;

    NamingOrder m_order;
    std::string m_settingsFile;
    RenameSettings m_settings;
    std::optional<CNameBuilder> m_builder;
    NameSurroundings m_surroundings;
};
