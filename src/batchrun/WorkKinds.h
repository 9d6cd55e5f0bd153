// The kinds of work that a run can do.
#pragma once

#include <memory>
#include <span>
#include <string_view>

#include "base/Expected.h"
#include "engine/Work.h"

struct WorkKind {
    std::string_view name;  ///< as descriptions have it
    /// Fails with a sentence when the description lacks something. Looks at no file.
    Expected<std::unique_ptr<CWork>> (*make)(const WorkDescription& description);
};

[[nodiscard]] std::span<const WorkKind> WorkKinds();
