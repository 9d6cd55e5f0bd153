#pragma once

#include <string>

#include "common/ErrorReport.h"
#include "ui/Windows.h"

/// Shows the problems of a run, and saves them as a text file on request. Everything is borrowed.
class CDlgErrorReport {
public:
    CDlgErrorReport(DialogServices services, const CErrorReport& report, std::string title, std::string heading = {},
                    std::string listName = "Errors And Warnings");

    void Show();
    [[nodiscard]] DialogForm Describe();

private:
    void Save();

    DialogServices m_services;
    const CErrorReport& m_report;
    std::string m_title, m_heading, m_listName;
};
