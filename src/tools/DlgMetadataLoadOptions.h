#pragma once

#include <string>

#include "common/MetadataImport.h"
#include "ui/Windows.h"

/// Asks how a file is to be loaded into a table of documents.
class CDlgMetadataLoadOptions {
public:
    /// `separator`: what the name of the file suggests.
    CDlgMetadataLoadOptions(DialogServices services, char separator);
    CDlgMetadataLoadOptions(const CDlgMetadataLoadOptions&) = delete;
    CDlgMetadataLoadOptions& operator=(const CDlgMetadataLoadOptions&) = delete;

    /// True when the user has confirmed; then the other functions say what was chosen.
    [[nodiscard]] bool Show();
    [[nodiscard]] CharacterSet Set() const;
    [[nodiscard]] char Separator() const;
    /// Without fields.
    [[nodiscard]] MetadataImportRules Rules() const;

    [[nodiscard]] DialogForm Describe();

private:
    DialogServices m_services;
    int m_set = 0, m_separator = 0, m_empty = 0, m_match = 0;
};
