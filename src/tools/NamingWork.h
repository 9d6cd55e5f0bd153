// Finds new names for many documents.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "engine/Work.h"
#include "naming/DocumentName.h"
#include "protocol/RenameOrder.h"

/// Builds the new name of each document from its content; changes and renames nothing. A document without a valid
/// name fails, with the reason.
class CNamingWork final : public CWork {
public:
    /// `settingsFile`: a file of settings that says what the order would; empty: the order counts.
    CNamingWork(NamingOrder order, std::string settingsFile)
        : m_order(std::move(order)), m_settingsFile(std::move(settingsFile))
    {
    }

    [[nodiscard]] std::string Load(CLogWriter& log) override;
    [[nodiscard]] std::string Refusal(CLogWriter&) override { return {}; }
    [[nodiscard]] std::vector<std::string> Extensions(CLogWriter&) const override { return {"pdf"}; }
    [[nodiscard]] Expected<std::vector<std::string>> InputPlaces(const ExecutorSettings& settings,
                                                                 const std::vector<std::string>& extensions,
                                                                 Asking asking, CLogWriter& log) const override;
    [[nodiscard]] bool TakesEachFileOnce() const override { return true; }
    [[nodiscard]] WorkFacts Facts(const PlanRequest& request) const override;
    void Begin(const WorkServices& services) override { m_run.emplace(services); }
    [[nodiscard]] ProcessedFile Process(const std::string& path, int number) override;

private:
    [[nodiscard]] std::string NameDocument(const std::string& path, int number, ProcessedFile& file) const;

    NamingOrder m_order;
    std::string m_settingsFile;
    RenameSettings m_settings;
    std::optional<CNameBuilder> m_builder;
    NameSurroundings m_surroundings;
    std::optional<WorkServices> m_run;
};
