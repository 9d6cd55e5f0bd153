// Protects many documents with one set of security settings.
#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "commands/SecuritySettings.h"
#include "protocol/ProtectOrder.h"
#include "tools/ChangingWork.h"

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
class CProtectWork final : public CChangingWork {
public:
    CProtectWork(ProtectOrder order, PasswordFiles files);
    /// With these settings and passwords; nothing is loaded then.
    CProtectWork(ProtectOrder order, SecuritySettings settings);

    /// Reads the passwords. Fails when one cannot be had or used.
    [[nodiscard]] std::string Load(CLogWriter& log) override;

protected:
    [[nodiscard]] Expected<Applied> Apply(CAcrobatDoc& document, ProcessedFile& file) const override;
    [[nodiscard]] std::vector<std::string> Warnings() const override { return m_warnings; }

private:
    static constexpr Words kProtecting{"Protecting", "protection", "protects it",
                                       "Cannot apply security settings. Please check document access permissions."};

    [[nodiscard]] std::string ReadPasswords();
    [[nodiscard]] std::string ReadTable();
    [[nodiscard]] std::string CheckPasswords();

    ProtectOrder m_order;
    PasswordFiles m_files;
    SecuritySettings m_settings;
    std::unordered_map<std::string, std::string> m_table;  // by the name in small letters
    std::vector<std::string> m_warnings;
};
