// One loaded sequence: its parts, where it takes its input from, and its commands.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "hostcalls/Cab.h"

// Everything here may throw CHostException.

/// Where a sequence takes its input files from; another number means nothing.
enum InputKind { kInputFiles = 0, kInputFolder = 1, kInputAskUser = 2 };

/// The input part of a sequence, borrowed. A null view is a part that says nothing. Paths are platform paths.
class CSequenceInput : public CCabView {
public:
    CSequenceInput(CCabView input) : CCabView(input) {}

    [[nodiscard]] int Kind() const;  // an InputKind, -1 for none, or a number that nobody knows
    [[nodiscard]] bool NamesFolder() const;
    [[nodiscard]] std::optional<std::string> Folder() const;  // nothing, too, when the path cannot be used
    [[nodiscard]] std::vector<std::string> Listed() const;    // the files, or folders, that it lists
    [[nodiscard]] CCabView SourceOptions() const;             // a null view when every type of file is taken
    [[nodiscard]] CCabView Formats() const;                   // the converters of the source options
};

/// Owns the cab of a sequence. The views are borrowed from it; a part that is missing is a null view.
class CSequence {
public:
    explicit CSequence(CCab cab) : m_cab(std::move(cab)) {}
    /// The entries of `commands` have the keys of CabKey().
    CSequence(CCab commands, CCab input, CCab output);

    [[nodiscard]] CCabView Commands() const;
    [[nodiscard]] CCabEditor EditCommands();
    [[nodiscard]] CSequenceInput Input() const;
    [[nodiscard]] CCabView Output() const;
    [[nodiscard]] CCabEditor EditOutput();

    /// Everything, entries of other makers among it.
    [[nodiscard]] CCabView Whole() const { return m_cab.View(); }

    /// Whether all three parts are there.
    [[nodiscard]] bool IsComplete() const { return Commands() && Input() && Output(); }

private:
    CCab m_cab;
};

/// A command of a sequence, borrowed from its entry.
struct StepEntry {
    std::optional<std::string> handler;
    std::optional<std::string> title;  // narrow
    CCabView parameters, configuration;
    int uiPolicy = 0;  // silent unless the entry says otherwise

    [[nodiscard]] static StepEntry Read(CCabView entry);
};

/// The title as UTF-8; nothing when there is none.
[[nodiscard]] std::optional<std::string> StepTitleUtf8(CCabView entry);

/// An entry that shows no windows and has no configuration.
[[nodiscard]] CCab MakeStepEntry(const std::string& handler, const std::string& titleUtf8, CCab parameters);

/// An input part; `isFolder` is the kind of the first of the paths. Without paths the user is asked.
[[nodiscard]] CCab MakeInput(const std::vector<std::string>& pathsUtf8, bool isFolder);

/// The platform path under a key: of a path cab, or of a text that is a device-independent path. Nothing when there
/// is no usable path.
[[nodiscard]] std::optional<std::string> PathEntry(CCabView cab, const char* key);

/// The device-independent path of such an entry, UTF-8, as it stands there; empty when there is none.
[[nodiscard]] std::string DIPathEntry(CCabView cab, const char* key);
