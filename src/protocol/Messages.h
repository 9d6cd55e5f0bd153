// What a host and the supervisor that has started it say to each other: one line of JSON each. The host asks and
// waits for the answer, or tells and goes on. See docs/runs.md.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "protocol/Acts.h"
#include "protocol/FileRecord.h"
#include "protocol/Json.h"
#include "protocol/Outcomes.h"

/// What is left to do for an input file.
enum class ToDo {
    Whole,       // everything
    FinalAction  // its results are written already
};
/// "whole", "final-action".
[[nodiscard]] std::string_view ToDoWord(ToDo toDo);
[[nodiscard]] ToDo ToDoFromWord(std::string_view word);

/// An input file that a host is given.
struct JobInputFile {
    int number = 0;  ///< in the whole run, from 1
    int total = 0;   ///< files of the whole run
    ToDo toDo = ToDo::Whole;
    std::string path = {};  ///< bytes
};

/// Places in the plug-in's log. Everything logged before is written. The numbers are those of the jobs table.
enum class LogPlace {
    SequencePreflightBegins,  // from here on lines belong to the whole run, although they stand among those of a file
    SequencePreflightEnds,
    InputsCounted  // what a run logs before its first file is complete
};

// ---- what a host asks

struct AskJob {};
struct AskInput {};
struct AskAct {
    IntendedAct intended = {};
};
struct AskExists {
    std::string path = {};  ///< bytes
};
struct AskNote {
    LogPlace place = LogPlace::InputsCounted;
};

// ---- what a host tells

struct TellStarts {
    int inputs = -1;  ///< not known yet
};
struct TellFile {
    FileRecord record = {};
};
struct TellEnds {
    RunEnd end = RunEnd::Broken;
    std::string message = {};  ///< UTF-8
};
struct TellRemark {
    std::string text = {};  ///< UTF-8
};
struct TellReport {
    Json report = {};
};

using HostMessage = std::variant<AskJob, AskInput, AskAct, AskExists, AskNote, TellStarts, TellFile, TellEnds,
                                 TellRemark, TellReport>;

/// Without line end.
[[nodiscard]] std::string LineOf(const HostMessage& message);
/// The line of a TellReport whose report, one line of JSON, is text already.
[[nodiscard]] std::string ReportLine(std::string_view report);
/// Nothing when the line is no message.
[[nodiscard]] std::optional<HostMessage> HostMessageFrom(std::string_view line);

// ---- the answers, and what a host finds in them. An empty object answers that something was noted.

[[nodiscard]] Json JobAnswer(const Json& job);
/// An object; nothing when there is no job.
[[nodiscard]] std::optional<Json> JobFrom(const Json& answer);

/// Nothing: there is no input left.
[[nodiscard]] Json InputAnswer(const std::optional<JobInputFile>& input);
[[nodiscard]] std::optional<JobInputFile> InputFrom(const Json& answer);

[[nodiscard]] Json AnswerToAct(ActAnswer answer);
[[nodiscard]] ActAnswer ActAnswerFrom(const Json& answer);

/// Nothing: as on disk.
[[nodiscard]] Json ExistsAnswer(std::optional<bool> exists);
[[nodiscard]] std::optional<bool> ExistsFrom(const Json& answer);
