// The single checks that make up the check of a sequence. None of them tells a value that may be a password.
#pragma once

#include "batchrun/RunSettings.h"
#include "sequence/OutputSettings.h"
#include "sequence/SequenceFile.h"

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/// What a run brings along besides the sequence.
struct RunSurroundings {
    bool hasInput = false, hasOutputFolder = false;
    int finalAction = 0;

    [[nodiscard]] static RunSurroundings Read(const EnvironmentReader& settings);
};

/// The parameters that steps have when none are given, each handler asked once.
class CStepDefaults {
public:
    /// A null view when the host makes no such step. Throws CHostException.
    CCabView Of(const std::string& handler);

private:
    std::map<std::string, std::optional<CCab>> m_defaults;
};

// All of them throw CHostException.

/// Everything that is to be said about a sequence. Errors keep a run from doing what the sequence says.
[[nodiscard]] std::vector<SequenceFinding> CheckSource(const SequenceSource& source, const RunSurroundings& run);

void CheckInput(const SequenceSource& source, const RunSurroundings& run, CSequenceFindings& findings);

/// Where results go, whether anything is overwritten or lost. Looks at one step after the other.
class CSavingCheck {
public:
    /// Both are borrowed.
    CSavingCheck(const RunSurroundings& run, CSequenceFindings& findings) : m_run(run), m_findings(findings) {}

    void Look(const SequenceStep& step);
    /// `output`: the settings of the whole sequence.
    void Finish(const OutputSettings& output);

private:
    void CheckSaveStep(const SequenceStep& step);
    void CheckAfterLastSave();

    const RunSurroundings& m_run;
    CSequenceFindings& m_findings;
    int m_saveSteps = 0;
    struct Later {
        int number;
        TextPlace place;
    };
    std::vector<Later> m_afterSave;  // the steps behind the last save step
};

/// Whether the host has the step and what it lacks of it in an unattended run; its parameters when it is one of ours.
void CheckStep(const SequenceStep& step, CStepDefaults& defaults, CSequenceFindings& findings);

/// Weak, missing or useless protection; of our own security step and of the host's.
void CheckSecurity(const SequenceStep& step, CSequenceFindings& findings);

/// What is cut from a password. Told of it by `which`, never by its text, here and below.
void CheckPasswordText(const char* which, const std::string& password, CSequenceFindings& findings);
/// Whether the encryption can express it: AES with 256 bits, or an older method. `password` as it is used.
void CheckPasswordIsTaken(const char* which, const std::string& password, bool aes256, CSequenceFindings& findings);

/// The handlers of the plug-in's own steps begin like this.
inline constexpr char kOwnStepPrefix[] = "QLNX_Ferrule";
inline constexpr char kProtectStep[] = "QLNX_FerrulePasswordProtectCommand";
