// What is done to a file or program for good, in the words of journal, record and worker messages.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "base/FileTraits.h"
#include "base/Overseer.h"
#include "protocol/JsonType.h"
#include "protocol/Protection.h"

/// The numbers are those of the jobs table.
using Act = COverseer::Act;
using ActAnswer = COverseer::Answer;

/// "put", "move", "delete", "start".
[[nodiscard]] std::string_view ActWord(Act act);
[[nodiscard]] std::optional<Act> ActFromWord(std::string_view word);

/// "go", "refuse", "pretend".
[[nodiscard]] std::string_view ActAnswerWord(ActAnswer answer);
/// Whatever is no answer is a refusal.
[[nodiscard]] ActAnswer ActAnswerFromWord(std::string_view word);

/// What an act takes away: what stood at the target, or the file that is deleted.
struct FormerFile {
    std::string sha256 = {};  ///< of the content; empty for a link, and when nobody has looked
    std::string link = {};    ///< where it led, when it was a symbolic link; bytes
    FileTraits traits = {};
    std::string kept = {};  ///< where it was kept; bytes; empty: nowhere
};

/// Something that is going to be done for good.
struct IntendedAct {
    int number = 0;            ///< of the input file that it is done for; 0 between files
    bool finalAction = false;  ///< else it belongs to the results of the file
    Act act = Act::Put;
    std::string file = {}, target = {};  ///< bytes
    std::string sha256 = {};             ///< of the content of `file`; may be empty while pretending
    bool replaces = false;               ///< something stood at the target before; found out by who allows the act
    std::optional<FormerFile> former = {};
    std::optional<FileTraits> traits = {};  ///< of a file that is moved
    std::string objection = {};  ///< why it must not happen, known already to who asks; UTF-8; empty: nothing known
    std::uint64_t order = 0;     ///< a later act of the run has a greater one; given by who allows the act
    bool copy = false;           ///< what is put is a copy that a step makes beside the results
    std::optional<std::uint64_t> size = {};  ///< bytes of what is put; nothing when it is not known
    ProtectionChange protection = {};        ///< of the input, and of what is put
};

[[nodiscard]] Json IntendedActJson(const IntendedAct& intended);
/// Nothing when there is no known act.
[[nodiscard]] std::optional<IntendedAct> IntendedActFrom(const Json& object);
