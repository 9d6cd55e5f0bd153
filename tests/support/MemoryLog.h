#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "common/Log.h"

/// A log that a test can read.
class CMemoryLog final : public CLogWriter {
public:
    bool Line(std::string_view text) override
    {
        lines.emplace_back(OneLogLine(text));
        return true;
    }

    std::vector<std::string> lines;
};
