// What a trial run would have made of the disk.
#pragma once

#include "supervisor/Journal.h"

#include <optional>
#include <string>
#include <unordered_map>

class CPretendedActs {
public:
    void Add(const Intent& intent);
    /// Nothing: as on disk.
    [[nodiscard]] std::optional<bool> Exists(const std::string& path) const;

private:
    std::unordered_map<std::string, bool> m_paths;  // by folder without links and name
};
