#pragma once

#include <vector>

#include "naming/FileNamePart.h"
#include "ui/Windows.h"

/// Asks for the kind of a new filename component.
class CDlgSelectWhatToAddToFilenameRename {
public:
    /// `lookups`: whether it may be one that holds components.
    CDlgSelectWhatToAddToFilenameRename(DialogServices services, bool lookups);
    CDlgSelectWhatToAddToFilenameRename(const CDlgSelectWhatToAddToFilenameRename&) = delete;
    CDlgSelectWhatToAddToFilenameRename& operator=(const CDlgSelectWhatToAddToFilenameRename&) = delete;

    /// True when the user has confirmed; then Kind() is the answer.
    [[nodiscard]] bool Show();
    [[nodiscard]] NamePartKind Kind() const;

    [[nodiscard]] DialogForm Describe();

private:
    [[nodiscard]] FormAnswer Confirm();

    DialogServices m_services;
    std::size_t m_count;
    std::vector<std::size_t> m_selected;
};
