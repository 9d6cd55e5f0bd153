// What the tests of copying and moving find at a target, and elsewhere, on each system.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/Files.h"

struct MovingRow {
    const char* what;
    /// Makes the target; what it answers is kept until the act has been tried.
    std::function<std::shared_ptr<void>(const std::string& path)> makeTarget;
    platform::Existing existing;
    platform::FileProblem problem;
};

std::vector<MovingRow> RowsOfThisSystem();

/// A folder on another file system than the temporary folder; nothing when the machine has none.
std::optional<std::string> OtherFileSystem();
