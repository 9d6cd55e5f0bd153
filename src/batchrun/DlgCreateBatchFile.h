#pragma once

#include <functional>
#include <string>
#include <vector>

#include "batchrun/BatchFile.h"
#include "ui/Windows.h"

/// What the dialog remembers for as long as the plug-in is loaded.
struct BatchFileChoices {
    bool showProgress = true;
    bool startHidden = false;
    bool restrictExtensions = false;
    std::string extensions = "pdf";
};

/// The plug-in's log, as the dialog shows it.
struct BatchFileLog {
    std::string path;  ///< narrow
    std::function<bool()> isOpen;
    std::function<bool()> clear;  ///< false when that failed
    bool* allowed;                ///< whether the user wants a log; borrowed
};

/// Composes and writes a command file that starts an unattended run.
class CDlgCreateBatchFile {
public:
    struct Facts {
        int hostMajorVersion;
        std::string hostProgram;                    ///< narrow
        std::vector<std::string> sequences;         ///< narrow paths of what was found
        BatchFileForm form = kSystemBatchFileForm;  ///< what is proposed
    };
    /// `choices` and the log's flag are changed when the user confirms.
    CDlgCreateBatchFile(DialogServices services, Facts facts, BatchFileChoices& choices, BatchFileLog log);
    CDlgCreateBatchFile(const CDlgCreateBatchFile&) = delete;
    CDlgCreateBatchFile& operator=(const CDlgCreateBatchFile&) = delete;

    /// True when a file was written. Throws CHostException.
    bool Show();
    [[nodiscard]] DialogForm Describe();

private:
    [[nodiscard]] std::vector<FormControl> SequenceControls();
    [[nodiscard]] Group ActionGroup();
    [[nodiscard]] Group OptionGroup();
    [[nodiscard]] Row LogRow();
    [[nodiscard]] const FinalActionFacts* Action() const;  ///< null when none is chosen
    void AddSequence();
    void Browse();
    void ViewLog();
    void ClearLog();
    [[nodiscard]] FormAnswer Confirm();
    [[nodiscard]] Expected<BatchFileSettings> Settings() const;
    /// False when nothing was written, which the user knows then.
    [[nodiscard]] bool Write(const BatchFileSettings& settings);
    FormAnswer Refuse(const std::string& text);

    DialogServices m_services;
    Facts m_facts;
    BatchFileChoices& m_choices;
    BatchFileLog m_log;
    std::vector<const FinalActionFacts*> m_actions;  // in the order of the list
    std::vector<std::size_t> m_sequence;             // the selected one
    int m_action = -1, m_progress;
    std::string m_destination, m_extensions;
    bool m_inSteps = false, m_subfolders = true, m_restrict, m_disableLog;
};
