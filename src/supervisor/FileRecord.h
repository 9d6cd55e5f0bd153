// The lines of manifest and record as JSON, and the names of outcomes.
#pragma once

#include "supervisor/Json.h"
#include "supervisor/RunObserver.h"

#include <optional>

[[nodiscard]] Json PlannedFileJson(const PlannedFile& file);
/// Nothing when number or path is missing.
[[nodiscard]] std::optional<PlannedFile> PlannedFileFrom(const Json& object);

[[nodiscard]] Json FileRecordJson(const FileRecord& record);
/// Nothing when there is no known outcome.
[[nodiscard]] std::optional<FileRecord> FileRecordFrom(const Json& object);
