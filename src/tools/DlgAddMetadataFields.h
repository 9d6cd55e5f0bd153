#pragma once

#include <string>
#include <vector>

#include "ui/Windows.h"

/// Asks which further entries of the document information a table is to show.
class CDlgAddMetadataFields {
public:
    explicit CDlgAddMetadataFields(DialogServices services) : m_services(std::move(services)) {}
    CDlgAddMetadataFields(const CDlgAddMetadataFields&) = delete;
    CDlgAddMetadataFields& operator=(const CDlgAddMetadataFields&) = delete;

    /// True when the user has confirmed; then Fields() are the keys, each once.
    [[nodiscard]] bool Show();
    [[nodiscard]] std::vector<std::string> Fields() const;

    [[nodiscard]] DialogForm Describe();

private:
    FormAnswer Confirm();

    DialogServices m_services;
    std::vector<std::size_t> m_selected;
    std::string m_others;  // one on each line
};
