// Protects many documents with one set of security settings.
#pragma once

#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "commands/SecuritySettings.h"
#include "engine/Work.h"
#include "protocol/ProtectOrder.h"

class CAcrobatDoc;

/// Paths; empty: there is none.
struct PasswordFiles {
    std::string owner, open;  // the password is the first line, UTF-8
    std::string table;        // of open passwords, see PasswordTableFromText
};

/// Protects each document in place, or into the output folder. Whatever fails leaves the input as it is, and nothing
/// is written for it. No password is logged or told.
///
/// A file in the table gets the open password that stands there, any other one the open password of all. With a table
/// and no such password the others fail: nobody is to find documents open that were to be closed.
class CProtectWork final : public CWork {
public:
    CProtectWork(ProtectOrder order, PasswordFiles files);
    /// With these settings and passwords; nothing is loaded then.
    CProtectWork(ProtectOrder order, SecuritySettings settings);

    /// Whether the file failed before anything was to be done to it.
    [[nodiscard]] static bool WasNotOpened(const ProcessedFile& file);

    /// Reads the passwords. Fails when one cannot be had or used.
    [[nodiscard]] std::string Load(CLogWriter& log) override;
    [[nodiscard]] std::string Refusal(CLogWriter&) override { return {}; }
    [[nodiscard]] std::vector<std::string> Extensions(CLogWriter&) const override { return {"pdf"}; }
    [[nodiscard]] Expected<std::vector<std::string>> InputPlaces(const ExecutorSettings& settings,
                                                                 const std::vector<std::string>& extensions,
                                                                 Asking asking, CLogWriter& log) const override;
    [[nodiscard]] bool TakesEachFileOnce() const override { return true; }
    [[nodiscard]] WorkFacts Facts(const PlanRequest& request) const override;
    void Begin(const WorkServices& services) override;
    [[nodiscard]] ProcessedFile Process(const std::string& path, int number) override;

private:
    [[nodiscard]] std::string ReadPasswords();
    [[nodiscard]] std::string ReadTable();
    [[nodiscard]] std::string CheckPasswords();
    [[nodiscard]] std::string Open(CAcrobatDoc& document, const std::string& path) const;
    [[nodiscard]] std::string Objection(const CAcrobatDoc& document, const ProcessedFile& file) const;
    [[nodiscard]] std::string Apply(CAcrobatDoc& document, const std::string& path) const;
    [[nodiscard]] std::string Save(CAcrobatDoc& document, const ProcessedFile& file) const;
    [[nodiscard]] std::string SaveInPlace(CAcrobatDoc& document, const ProcessedFile& file) const;
    void ProtectOpen(CAcrobatDoc& document, ProcessedFile& file) const;
    void Fail(ProcessedFile& file, const char* failure, const std::string& reason) const;

    ProtectOrder m_order;
    PasswordFiles m_files;
    SecuritySettings m_settings;
    std::unordered_map<std::string, std::string> m_table;  // by the name in small letters
    std::vector<std::string> m_warnings;
    std::optional<WorkServices> m_run;
};
