// What is to be said about a sequence, and where in its text it stands.
#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "protocol/JsonType.h"

struct SequenceStep;

/// A place in a text, counted from 1; columns are characters, a tab is one. Line 0: no place in particular.
struct TextPlace {
    int line = 0, column = 0;
};

/// Texts in host encoding.
struct SequenceFinding {
    enum class Severity {
        Error,    // a run cannot do what the sequence says
        Warning,  // something may not be what was meant
        Note      // something that has no effect on documents, or that is good to know
    };
    Severity severity;
    std::string code;  // for programs
    std::string text;  // one sentence; holds names, never values that may be passwords
    int step = 0;      // from 1; 0 = no step in particular
    TextPlace place;
};

/// What is found, in the order in which it was found. Of a kind that is found very often only the first are kept.
class CSequenceFindings {
public:
    static constexpr int kMostOfAKind = 100;

    void Error(const char* code, std::string text) { Add(SequenceFinding::Severity::Error, code, std::move(text)); }
    void Warning(const char* code, std::string text)
    {
        Add(SequenceFinding::Severity::Warning, code, std::move(text));
    }
    void Note(const char* code, std::string text) { Add(SequenceFinding::Severity::Note, code, std::move(text)); }

    /// What follows is about this step, until the next call; null: about the whole sequence.
    void About(const SequenceStep* step) { m_step = step; }
    void Add(SequenceFinding finding);

    /// With a sentence for each kind of which more were found than are kept.
    [[nodiscard]] std::vector<SequenceFinding> All() const;

private:
    struct Kind {
        int count = 0, lastStep = 0;
    };

    void Add(SequenceFinding::Severity severity, const char* code, std::string text);

    const SequenceStep* m_step = nullptr;
    std::vector<SequenceFinding> m_findings;
    std::map<std::pair<SequenceFinding::Severity, std::string>, Kind> m_kinds;
};

/// How many there are of a severity.
[[nodiscard]] long CountOf(const std::vector<SequenceFinding>& findings, SequenceFinding::Severity severity);

/// The texts of the errors in one line, separated by blanks; empty without errors.
[[nodiscard]] std::string ErrorTexts(const std::vector<SequenceFinding>& findings);

/// The finding that keeps a sequence from being read as a sentence with the file's name in front.
[[nodiscard]] std::string FindingSentence(const std::string& path, const SequenceFinding& finding);

/// As JSON: {"severity", "code", "text", "step", "line", "column"} each, the last three where they mean something.
[[nodiscard]] Json FindingsReport(const std::vector<SequenceFinding>& findings);
