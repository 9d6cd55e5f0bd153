// A sequence file as the jobs on sequences look at it.
#pragma once

#include "engine/Sequence.h"
#include "engine/WorkflowAudit.h"
#include "engine/WorkflowModel.h"

#include <functional>
#include <optional>
#include <string>
#include <variant>
#include <vector>

/// What is to be said about a sequence. Texts in host encoding.
using SequenceFinding = WorkflowRemark;

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

/// Visits the commands in order until `visit` answers false; their handlers are looked up in the host. The cabs of one
/// step at a time are in memory. Throws CHostException.
void ForEachStep(const SequenceSource& source, const std::function<bool(const SequenceStep&)>& visit);

/// Whether any step holds a password. Throws CHostException.
[[nodiscard]] bool HoldsPasswords(const SequenceSource& source);

/// The host's title of a step; empty when it has none. A handler that fails to tell has none.
[[nodiscard]] std::string HostTitle(const std::string& handler);

/// Finding as a sentence with the file's name in front.
[[nodiscard]] std::string FindingSentence(const std::string& path, const SequenceFinding& finding);
