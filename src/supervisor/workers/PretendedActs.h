// What a trial run would have made of the disk.
#pragma once

#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>

#include "supervisor/journal/Journal.h"

class CPretendedActs {
public:
    void Add(const Intent& intent);
    /// Nothing: as on disk.
    [[nodiscard]] std::optional<bool> Exists(const std::string& path) const;
    /// Whether the file behind the name, which may be a link, would be gone by now.
    [[nodiscard]] bool IsGone(const std::string& path) const;
    /// Whether it would have another content by now.
    [[nodiscard]] bool IsReplaced(const std::string& path) const;

private:
    std::unordered_map<std::string, bool> m_paths;  // by folder without links and name
    std::unordered_set<std::string> m_replaced;     // likewise
};
