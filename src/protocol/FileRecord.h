// What a plan says of an input file, and what became of it: the lines of manifest and record.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "protocol/Acts.h"
#include "protocol/JsonType.h"
#include "protocol/Outcomes.h"

/// A line of the manifest. Paths are bytes, here and below.
struct PlannedFile {
    int number = 0;  ///< in the whole run, from 1
    std::string path = {};
    std::uint64_t size = 0;                ///< bytes
    std::int64_t modifiedNanoseconds = 0;  ///< since 1970; 0 when there was no such file
    std::uint32_t group = 0;               ///< 0: its names collide with nobody's
};

struct FileOutput {
    std::string path = {};
    std::string sha256 = {};                 ///< empty when nothing was written really
    bool copy = false;                       ///< that a step made beside the results
    std::optional<std::uint64_t> size = {};  ///< bytes; nothing when it is not known
};

struct FinalActionRecord {
    enum class State { Done, Failed, Unknown };
    std::optional<Act> act = {};  ///< nothing when it failed before it came to that
    std::string target = {};      ///< empty for a deletion
    State state = State::Failed;
};
/// "done", "failed", "unknown".
[[nodiscard]] std::string_view FinalStateWord(FinalActionRecord::State state);

/// Of the lines of a record, which its first line tells. Those of version 1, which told none, had neither the sizes
/// of results nor their protection.
inline constexpr int kRecordVersion = 2;

/// A line of the record: what became of one input file.
struct FileRecord {
    int number = 0;  ///< in the whole run, from 1
    std::string path = {};
    std::uint64_t size = 0;
    std::string sha256 = {};  ///< of the input before anything was done to it; empty when unknown
    FileOutcome outcome = FileOutcome::Failed;
    std::string message = {};  ///< UTF-8; a path in it as in base/Text.h
    std::int64_t milliseconds = 0;
    std::vector<FileOutput> outputs = {};
    std::optional<FinalActionRecord> finalAction = {};
    bool signaturesBroken = false;     ///< a signed document was written as a whole
    ProtectionChange protection = {};  ///< of the document that was read, and of its last result
    /// Everything that was allowed to happen for the file, in its order: what is needed to take it back.
    std::vector<IntendedAct> acts = {};
    /// What the work has found in it, a JSON array; empty when it does not look for anything.
    std::string findings = {};
};

/// One line of JSON, without line end.
[[nodiscard]] std::string PlannedFileLine(const PlannedFile& file);
/// Nothing when number or path is missing.
[[nodiscard]] std::optional<PlannedFile> PlannedFileFrom(const Json& object);

[[nodiscard]] Json FileRecordJson(const FileRecord& record);
/// Nothing when there is no known outcome.
[[nodiscard]] std::optional<FileRecord> FileRecordFrom(const Json& object);
