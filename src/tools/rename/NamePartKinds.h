// The kinds of filename components, and the dialogs that ask for their settings.
#pragma once

#include <span>

#include "naming/FileNamePart.h"
#include "ui/Windows.h"

struct NamePartKindRow {
    NamePartKind kind;
    const char* name;  ///< in the choice of a new component, and the title of its settings
    const char* meaning;
    /// Lets the user change the component; `depth`: how many lookups it stands in, and 1. False when cancelled.
    bool (*edit)(const DialogServices& services, CFileNamePart& part, int depth);
};

/// In the order of their numbers.
[[nodiscard]] std::span<const NamePartKindRow> NamePartKinds();
/// Null for a number that is no kind.
[[nodiscard]] const NamePartKindRow* FindNamePartKind(NamePartKind kind);

/// What every component can have: a space in front, and a text for nothing. `part` outlives the form.
[[nodiscard]] FormControl NamePartOptions(CFileNamePart& part);
