// Command files that start an unattended run: variables for the settings, and the host.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/Expected.h"
#include "protocol/FinalAction.h"

/// Texts are UTF-8.
struct BatchFileSettings {
    std::string sequence = {};
    FinalAction finalAction = FinalAction::Nothing;
    std::string destination = {};
    bool executeInSteps = false;
    bool showProgress = true;
    bool startHidden = false;
    std::optional<std::string> extensions = {};  ///< separated by commas; none: whatever the sequence accepts
    bool includeSubfolders = true;
    std::string hostProgram = {};
};

enum class BatchFileForm {
    Bat,  ///< for the command interpreter of Windows
    Sh    ///< for a shell
};
#ifdef _WIN32
inline constexpr BatchFileForm kSystemBatchFileForm = BatchFileForm::Bat;
#else
inline constexpr BatchFileForm kSystemBatchFileForm = BatchFileForm::Sh;
#endif
/// Without its dot.
[[nodiscard]] const char* ExtensionOf(BatchFileForm form);

/// What is missing for the final action; empty when nothing is.
[[nodiscard]] std::string DestinationProblem(FinalAction action, const std::string& destination);

/// The bytes of the file. Its first argument is the folder or file to take inputs from, its second the folder for the
/// results. Fails with a sentence when a value would not arrive as it is.
[[nodiscard]] Expected<std::string> MakeBatchFile(const BatchFileSettings& settings, BatchFileForm form);

/// Whether the sequence in this file wants a host's optimizer, which an unattended run does without. Fails with a
/// sentence when the file cannot be read as a sequence. Throws CHostException.
[[nodiscard]] Expected<bool> SequenceRunsOptimizer(const std::string& path);

/// Puts the file in its place, complete or not at all; a shell's file can be executed by whoever may read it.
/// Answers a sentence that says why not; empty when it is there.
[[nodiscard]] std::string WriteBatchFile(const std::string& path, const std::string& bytes, BatchFileForm form,
                                         bool overwrite);

/// The sequences that the user's folders hold for a host of this version: ours, and those of the hosts that write
/// such files. Narrow paths, in the order of the folders.
[[nodiscard]] std::vector<std::string> FindSequenceFiles(int hostMajorVersion);
