// Writes the XML form of a sequence file.
#pragma once

#include "base/Expected.h"
#include "engine/WorkflowModel.h"

#include <string>

/// The text of a workflow in the layout that hosts give it: one tab a level, the items of a level in the order of a
/// cab, every line end inside a value as a reference. Reading the text gives the same workflow again.
///
/// Fails with a sentence that names the item when a value has no place in XML: bytes that are no UTF-8 text, control
/// characters, numbers that are none.
[[nodiscard]] Expected<std::string> WriteWorkflow(const Workflow& workflow);

/// Base64 with padding, in one line.
[[nodiscard]] std::string EncodeBase64(const std::string& bytes);

/// Whether the first key stands before the second in a cab: keys of digits first, by number, then the others by
/// bytes.
[[nodiscard]] bool ComesFirstInCab(const std::string& key, const std::string& other);
