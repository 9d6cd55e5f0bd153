#pragma once

#include <string>
#include <vector>

#include "ui/GridRows.h"
#include "ui/Windows.h"

/// Shows the new names of files before anything is renamed, and lets the user change them.
class CDlgReviewNames {
public:
    /// One name for each path, without folder; empty: none. All UTF-8.
    CDlgReviewNames(DialogServices services, const std::vector<std::string>& paths,
                    const std::vector<std::string>& names);
    CDlgReviewNames(const CDlgReviewNames&) = delete;
    CDlgReviewNames& operator=(const CDlgReviewNames&) = delete;

    /// True when the user has confirmed; then Names() are what counts, in the order of the paths.
    [[nodiscard]] bool Show();
    [[nodiscard]] std::vector<std::string> Names() const;

    [[nodiscard]] DialogForm Describe();

private:
    FormAnswer Close();

    DialogServices m_services;
    CGridModel m_model;
    CGridRows m_rows;
};
