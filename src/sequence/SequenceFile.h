// Sequence files in either form: read for a run, looked at step by step, written.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "base/Expected.h"
#include "hostcalls/Cab.h"
#include "sequence/Findings.h"
#include "sequence/Sequence.h"
#include "sequence/XmlAudit.h"
#include "sequence/XmlForm.h"

class CLogWriter;

/// Loads a sequence; `path` without quotes. A failure is logged, and comes back as a sentence that names the file.
[[nodiscard]] Expected<CSequence> LoadSequenceFile(const std::string& path, CLogWriter& log);

enum class SequenceForm { Host, Xml };

struct SequenceSource {
    std::string path;
    SequenceForm form;
    CSequence sequence;                // of the XML form without its commands
    std::optional<Workflow> workflow;  // of the XML form
    WorkflowAudit audit;               // of the XML form
};

/// One command of a sequence. The cabs live for one visit only.
struct SequenceStep {
    int number = 0;  // from 1
    int group = 0;   // from 0; in the host's own form, which has no groups, neighbours of one label count as one
    std::string handler, label;
    std::string runsAs;  // the name under which the host has it; empty when it has it not
    CCabView entry, parameters;
    bool prompts = false, pauses = false;  // what XML says; without effect on a run
    TextPlace place;                       // in XML

    [[nodiscard]] bool IsAvailable() const { return !runsAs.empty(); }
};

/// Reads a file in either form. Answers what is wrong with it when it is in none; the text then names no file.
[[nodiscard]] std::variant<SequenceSource, SequenceFinding> ReadSequenceSource(const std::string& path);

/// The same for the text of an XML sequence that is in no file yet.
[[nodiscard]] std::variant<SequenceSource, SequenceFinding> SequenceFromText(const std::string& path,
                                                                             const std::string& xml);

/// Visits the commands in order until `visit` answers false; their handlers are looked up in the host. The cabs of
/// one step at a time are in memory. Throws CHostException.
void ForEachStep(const SequenceSource& source, const std::function<bool(const SequenceStep&)>& visit);

/// Whether any step holds a password. Throws CHostException.
[[nodiscard]] bool HoldsPasswords(const SequenceSource& source);

/// The host's title of a step; empty when it has none. A handler that fails to tell has none.
[[nodiscard]] std::string HostTitle(const std::string& handler);

/// A title for a sequence that has none: the name of its file, as text.
[[nodiscard]] std::string TitleFromPath(const std::string& path);

struct SequenceTarget {
    std::string path;
    bool overwrite = false;
    bool holdsPasswords = false;  // then only the owner may read the file
};

/// Why the file cannot be written, found out before there is anything to write; empty when nothing stands against it.
[[nodiscard]] std::string TargetProblem(const SequenceTarget& target);

/// Writes the file completely or not at all. Answers a sentence that names the file and says what to do; empty when
/// it is written.
[[nodiscard]] std::string PutSequenceFile(const SequenceTarget& target, const std::string& bytes);

/// The cab in the host's own form. The host writes to files only: a temporary one, which its owner alone may read,
/// stands in the folder of `beside` meanwhile. Read back by the host before it is answered. Throws CHostException.
[[nodiscard]] Expected<std::string> HostFormOf(CCabView cab, const std::string& beside);

/// "xml" or "host".
[[nodiscard]] const char* FormWord(SequenceForm form);
