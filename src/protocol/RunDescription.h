// What somebody wants done to which files, as it goes from the command line through manifest and supervisor to the
// plug-in, and what a plan finds out about it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "base/Expected.h"
#include "protocol/FinalAction.h"
#include "protocol/JsonType.h"
#include "protocol/RunReach.h"

/// A file that work is read from.
struct WorkFile {
    std::string name = {};  ///< what people call it, behind "the": "sequence"
    std::string path = {};  ///< absolute, any bytes
};

/// What is done to each file. The plug-in has a table of the kinds; nobody else tells one from another.
struct WorkDescription {
    std::string kind = {};  ///< a noun that people read, too: "sequence"; empty: none is described
    std::vector<WorkFile> files =
        {};                     ///< a run is gone on with only while they have the content that was planned with
    std::string settings = {};  ///< what else the kind wants to know: a JSON object; empty: nothing
};

/// The work that a sequence file says.
inline constexpr char kSequenceWork[] = "sequence";
[[nodiscard]] WorkDescription SequenceWork(std::string path);
/// The path of a file of the work; empty when it has none of that name.
[[nodiscard]] std::string WorkFilePath(const WorkDescription& work, std::string_view name);
/// What tells two works over the same files apart, as text. Empty for a sequence: its file says it all.
[[nodiscard]] std::string WorkIdentity(const WorkDescription& work);

/// Paths are absolute and may be any bytes.
struct RunDescription {
    WorkDescription work = {};
    std::vector<std::string> inputs = {};  ///< files and folders; empty: those that the work itself names
    std::string outputFolder = {};         ///< empty: the work says where results go
    FinalAction finalAction = FinalAction::Nothing;
    std::string destination = {};    ///< of the final action
    std::string keepOriginals = {};  ///< folder for what results and final actions take away; empty: nothing is kept
    std::string extensions = {};     ///< as typed, such as "pdf;tif"; empty: what the work accepts
    bool noSubfolders = false;
    int minAgeSeconds = 0;         ///< younger files are left alone
    bool skipUnavailable = false;  ///< steps that the host does not have are left out
    bool allowNoOutput = false;    ///< inputs may go away although nothing is saved
    bool allowInPlace = false;     ///< inputs may be replaced although there is an output folder
    bool acceptDamaged = false;    ///< a document that lost something in its repair counts as if it had not
    bool sparesRepaired = false;   ///< one that needed repair counts as damaged although nothing is known to be lost
    bool force = false;            ///< although a check of the work finds errors
};

/// In the order in which a job states them; what is as by default is left out.
[[nodiscard]] Json RunDescriptionJson(const RunDescription& description);
[[nodiscard]] RunDescription RunDescriptionFrom(const Json& object);

/// The folder below the one for originals that is this run's own; empty when nothing is to be kept.
[[nodiscard]] std::string KeptFolderOf(const RunDescription& description, const std::string& run);
/// Whether the last part of a path may be the name of such a folder, of whichever run.
[[nodiscard]] bool IsKeptFolderName(std::string_view name);

/// Where a host keeps what an act takes away, before the act.
struct Keeping {
    std::string folder = {};  ///< of this run alone; empty: nothing is kept
    bool mayLink = false;     ///< a second name for the file will do
};

/// The job of a host that plans or does a run.
struct RunOrder {
    enum class Kind { Run, Plan };
    Kind kind = Kind::Run;
    std::string run = {};  ///< letters and digits; becomes part of the names of temporary files
    bool dryRun = false;   ///< nothing is done for good
    bool hashes = true;    ///< records have those of the inputs; only a trial may do without
    RunDescription description = {};
    Keeping keeping = {};
};

/// With the version of this form.
[[nodiscard]] Json RunOrderJson(const RunOrder& order);
/// Fails with a sentence for an order of another version.
[[nodiscard]] Expected<RunOrder> RunOrderFrom(const Json& object);
/// Whether the object is meant as one.
[[nodiscard]] bool IsRunOrder(const Json& object);

/// What a plan finds out about a run as a whole.
/// Texts are UTF-8; paths in them as in base/Text.h.
struct PlanReport {
    int total = 0;                     ///< input files
    std::string oneWorkerReason = {};  ///< why only one process may do the whole run; empty when several may
    int tooYoung = 0;                  ///< files that were left out because they may still be growing
    int unreadableFolders = 0;         ///< whose files the plan had to leave out
    int outputsPerFile = 1;            ///< how many results the sequence writes for a file
    bool reports = false;              ///< a step reports what it finds in the files
    bool startsPrograms = false;       ///< a step may start programs, which may do anything to files
    bool movesInputs = false;          ///< inputs get other names, also those of each other
    RunReach reach = {};               ///< without run and kept originals
    std::vector<std::string> warnings = {};
};

[[nodiscard]] Json PlanReportJson(const PlanReport& plan);
[[nodiscard]] PlanReport PlanReportFrom(const Json& object);
