#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "base/Expected.h"
#include "platform/Files.h"
#include "protocol/Outcomes.h"
#include "protocol/RunDescription.h"

/// What the caller of a run may set beside the work itself.
struct ExecutorSettings {
    std::string alternativeInputPath;            // a folder or a file in place of the sequence's input; empty = none
    std::vector<std::string> furtherInputPaths;  // beside it; they, too, replace the sequence's input
    std::string alternativeOutputPath;           // a folder in place of the sequence's output folder; empty = none
    /// Saves nowhere else when the alternative output folder is gone; otherwise results then go where the sequence
    /// says, or beside their inputs.
    bool insistsOnOutputPath = false;
    /// After a failed step a save step saves into the alternative output folder only: anywhere else it could put a
    /// document that is not done in the place of its input. Nor does the engine save there.
    bool sparesInputs = false;
    /// Folders that get files beside the results; like the output folder they are left out of an input around them.
    std::vector<std::string> furtherOutputPaths = {};
    /// In place of the file types that the sequence accepts. An empty list accepts none.
    std::optional<std::vector<std::string>> allowedExtensions;
    bool noSubfolders = false;
    bool acceptDamaged = false;   // a document that lost something in its repair counts as if it had not
    bool sparesRepaired = false;  // one that needed repair counts as if it had lost something
    bool trialRun = false;        // nothing is to be done for good; steps that could do it anyway are left out
    bool interactive = false;     // whether a command may show its settings dialog
};

/// The input files and folders that the caller names, for work that has none of its own.
[[nodiscard]] inline std::vector<std::string> ChosenPlaces(const ExecutorSettings& settings)
{
    std::vector<std::string> places = settings.furtherInputPaths;
    if (!settings.alternativeInputPath.empty()) places.insert(places.begin(), settings.alternativeInputPath);
    return places;
}

/// What became of one input file. `message` is one sentence for people, empty when there is nothing to say.
struct ProcessedFile {
    std::string path;
    FileOutcome outcome = FileOutcome::Saved;
    std::string message = {};
    /// The input as it was processed; after a save in its own place, as it was saved. Nothing when nobody knows it.
    std::optional<platform::FileStamp> input = {};
    /// What the input has lost to damage, a sentence: then it must stay. Empty when nothing, or when that is
    /// accepted.
    std::string loss = {};
    /// What the work has found in the document: a JSON array; empty when it does not look for anything.
    std::string findings = {};
};

// What a run does to its files. The run driver asks it for everything that one kind of work does otherwise than
// another.

class CLogWriter;
class CProgressMonitorWrapper;

/// A run that is to be planned.
struct PlanRequest {
    ExecutorSettings settings;
    RunDescription wanted;  // says also what the user has said yes to
};

/// A name that something written for a file gets.
struct ResultName {
    std::optional<std::string> folder = {};  // nothing: the folder of the input
    std::string before = {}, after = {};     // around the input's base name
};

/// What planning a run wants to know of its work. Sentences end with a full stop and say what to do.
struct WorkFacts {
    std::string noun = {};       // what people call the work: "sequence"
    std::string objection = {};  // why it must not be done as requested
    std::string errors = {};     // what a check of it finds, unless the user has said yes to that
    std::string noInputs = {};   // why somebody has to name input files; empty: it has some of its own
    /// One that is not there any more is a file that fails, and no reason against the run.
    bool inputsMayBeGone = false;
    bool usesOutputFolder = true;
    bool replacesInputs = false;  // results take the place of their inputs, output folder or not
    bool movesInputs = false;     // processing a file gives it another name, and others of the run may get its name
    bool writesAnywhere = false;  // something named like the input may be written to any folder
    bool reports = false;         // what is found in the files goes into a report on all of them
    bool startsPrograms = false;  // programs of others may do anything to files
    int resultsPerFile = 0;
    std::vector<ResultName> results = {};
    std::string oneWorkerReason = {};  // why one process has to do the whole run
    std::vector<std::string> warnings = {};
    std::string howToSave = {};  // what to do about it when nothing is saved, without a full stop; may be empty
    std::string howToSpareInputs = {};  // the same for results that replace their inputs
};

/// What all files of a run share. Everything is borrowed until the work is gone.
struct WorkServices {
    const ExecutorSettings& settings;
    CLogWriter& log;
    CProgressMonitorWrapper& progress;
    /// Called before (true) and after (false) lines of the whole run that are logged among those of a file; may be
    /// empty.
    const std::function<void(bool begins)>& logsForWholeRun;
    int fileCount = 0;
};

/// Whether somebody may be asked for input files.
enum class Asking { Allowed, Unwanted };

/// One object does one run. Everything but the destructor may throw CHostException.
/// Order: Load, Refusal, then either Facts or Begin, Process for each file, and Finish after the last one.
class CWork {
public:
    CWork() = default;
    CWork(const CWork&) = delete;
    CWork& operator=(const CWork&) = delete;
    virtual ~CWork() = default;

    /// Reads what is to be done. Answers a sentence that says why that cannot be, logged; empty when all is well.
    [[nodiscard]] virtual std::string Load(CLogWriter& log) = 0;
    /// Why this host cannot do it, logged; empty when it can.
    [[nodiscard]] virtual std::string Refusal(CLogWriter& log) = 0;

    /// The accepted extensions, without dots, for settings that name none.
    [[nodiscard]] virtual std::vector<std::string> Extensions(CLogWriter& log) const = 0;
    /// Files and folders to take inputs from, logged: those of the settings, or else its own; none when it would have
    /// to ask and may not. They are handed to `take`, unless that is empty: there may be a million. Answers why there
    /// are none, logged; else empty.
    using TakePlace = std::function<void(const std::string& path)>;
    [[nodiscard]] virtual std::string InputPlaces(const ExecutorSettings& settings,
                                                  const std::vector<std::string>& extensions, Asking asking,
                                                  CLogWriter& log, const TakePlace& take) const = 0;
    /// Places of its own that a planned run takes although a run from the environment does not find them.
    [[nodiscard]] virtual std::vector<std::string> FurtherInputPlaces() const { return {}; }
    /// Whether a file is one input only, by whichever of its names it is found.
    [[nodiscard]] virtual bool TakesEachFileOnce() const { return false; }
    /// The folders for results that it names itself.
    [[nodiscard]] virtual std::vector<std::string> OwnOutputFolders() const { return {}; }
    [[nodiscard]] virtual WorkFacts Facts(const PlanRequest& request) const = 0;

    virtual void Begin(const WorkServices& services) = 0;
    /// A failure is in the outcome. `number` counts from 1.
    [[nodiscard]] virtual ProcessedFile Process(const std::string& path, int number) = 0;
    /// Why the whole run has to stop after the last file; empty when it goes on.
    [[nodiscard]] virtual std::string StopReason() const { return {}; }
    virtual void Finish() {}
};
