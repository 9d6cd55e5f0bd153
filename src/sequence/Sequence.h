// One loaded sequence: its parts, its commands, its paths.
#pragma once

#include "hostcalls/Cab.h"

#include <optional>
#include <string>
#include <utility>

/// Where a sequence takes its input files from.
enum InputKind { kInputFiles = 0, kInputFolder = 1, kInputAskUser = 2 };

/// The key of the folder that a sequence names, of its inputs, of its output and of its save steps.
inline constexpr char kFolderKey[] = "PreselectedFolderPath";

/// The platform path under a key: of a path cab, or of a text that is a device-independent path. Nothing when there
/// is no usable path.
[[nodiscard]] std::optional<std::string> PathEntry(CCabView cab, const char* key);

/// Owns the cab of a sequence. The views are borrowed from it; a part that is missing is a null view.
class CSequence {
public:
    explicit CSequence(CCab cab) : m_cab(std::move(cab)) {}

    [[nodiscard]] CCabView Commands() const { return m_cab.Cab("Commands"); }
    [[nodiscard]] CCabView Input() const { return m_cab.Cab("Input"); }
    [[nodiscard]] CCabView Output() const { return m_cab.Cab("Output"); }
    [[nodiscard]] CCabEditor EditOutput() { return m_cab.EditCab("Output"); }

    /// Everything, entries of other makers among it.
    [[nodiscard]] CCabView Whole() const { return m_cab.View(); }

    /// Whether all three parts are there. Throws CHostException.
    [[nodiscard]] bool IsComplete() const { return Commands() && Input() && Output(); }

private:
    CCab m_cab;
};

/// The name of the handler of a sequence's command; nothing when it has none. Throws CHostException.
[[nodiscard]] std::optional<std::string> HandlerNameOf(CCabView command);
