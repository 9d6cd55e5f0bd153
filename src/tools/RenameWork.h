// Gives many files the names of a list.
#pragma once

#include <optional>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "engine/Work.h"
#include "protocol/RenameOrder.h"
#include "tools/RenameList.h"
#include "tools/RenameScript.h"

/// Renames each file of a list, or moves it, so that swaps, chains and cycles of names come out as they are written.
/// No document is opened. Neither an input nor a result of the run is ever replaced; another file only when the order
/// says so. Whatever fails leaves the file where it is.
class CRenameWork final : public CWork {
public:
    /// `listPath`: a list as ForEachRename takes it. `settingsFile`: settings of which only the script counts, if
    /// they want it run; may be empty.
    CRenameWork(RenameOrder order, std::string listPath, std::string settingsFile = {})
        : m_order(order), m_listPath(std::move(listPath)), m_settingsFile(std::move(settingsFile))
    {
    }

    [[nodiscard]] std::string Load(CLogWriter& log) override;
    [[nodiscard]] std::string Refusal(CLogWriter&) override { return {}; }
    [[nodiscard]] std::vector<std::string> Extensions(CLogWriter&) const override { return {"*"}; }
    [[nodiscard]] std::string InputPlaces(const ExecutorSettings& settings,
                                          const std::vector<std::string>& extensions, Asking asking, CLogWriter& log,
                                          const TakePlace& take) const override;
    [[nodiscard]] WorkFacts Facts(const PlanRequest& request) const override;
    void Begin(const WorkServices& services) override;
    [[nodiscard]] ProcessedFile Process(const std::string& path, int number) override;

    /// Where the file that was processed last is now; empty: it did not get its new name.
    [[nodiscard]] const std::string& LastTarget() const { return m_lastTarget; }

private:
    [[nodiscard]] const CRenameList& ListFor(const std::string& folder) const;
    [[nodiscard]] std::string PlanProblem(const CRenameList& list) const;
    [[nodiscard]] std::string LoadScript();
    void RunScript(const std::string& target, ProcessedFile& file) const;
    void TakeTarget(const std::string& target, ProcessedFile& file);
    void Rename(const PlannedRename& rename, ProcessedFile& file);
    [[nodiscard]] bool MakeRoom(const PlannedRename& rename, ProcessedFile& file);
    [[nodiscard]] bool IsStillToLeave(const std::string& path) const;
    [[nodiscard]] platform::FileResult Move(const std::string& from, const PlannedRename& rename, std::string& target,
                                            std::string& problem) const;
    [[nodiscard]] bool IsOfThisRun(const PlannedRename& rename) const;
    void Fail(ProcessedFile& file, const std::string& target, int errorNumber, const std::string& reason) const;

    RenameOrder m_order;
    std::string m_listPath, m_settingsFile;
    std::string m_scriptText;  // empty: none is run
    std::optional<CRenameScript> m_script;
    mutable std::optional<CRenameList> m_list;  // in the order for one output folder
    std::unordered_set<std::string> m_left;     // inputs that no longer have their names
    std::string m_lastTarget;
    std::optional<WorkServices> m_run;
};
