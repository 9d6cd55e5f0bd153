// What a run may have touched: whoever takes it back touches nothing else.
#pragma once

#include <string>
#include <vector>

#include "protocol/JsonType.h"

struct RunReach {
    std::string run = {};                   ///< its id
    std::vector<std::string> inputs = {};   ///< files and folders that inputs come from
    std::vector<std::string> folders = {};  ///< that results and final actions go to, besides those of the inputs
    bool anywhere = false;                  ///< a step may have written to any folder
    std::string kept = {};                  ///< the folder of kept originals; empty: there is none

    /// Whether the run could read this file. The path must be absolute and lead nowhere up.
    [[nodiscard]] bool CoversInput(const std::string& path) const;
    /// Whether the run could write, move or delete this file for the input.
    [[nodiscard]] bool Covers(const std::string& path, const std::string& input) const;
    /// Whether an original may have been kept there.
    [[nodiscard]] bool CoversKept(const std::string& path) const;
    /// Whether it names nothing that the other does not name.
    [[nodiscard]] bool IsWithin(const RunReach& other) const;
};

/// Paths are bytes.
[[nodiscard]] Json RunReachJson(const RunReach& reach);
[[nodiscard]] RunReach RunReachFrom(const Json& object);
