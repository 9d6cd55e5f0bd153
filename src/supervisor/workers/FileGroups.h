// Files whose names meet those of others: handed out one at a time, and kept from being replaced.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include "supervisor/RunObserver.h"

/// Streams through the files in input order. Files of one group are handed out one at a time, in order; a file whose
/// group is in hand is held back, and at most `lookahead` files are.
class CGroupedFiles {
public:
    /// Answers the files in order, then nothing.
    using Source = std::function<std::optional<PlannedFile>()>;
    static constexpr std::size_t kLookahead = 1000;

    explicit CGroupedFiles(Source source, std::size_t lookahead = kLookahead);

    /// The next file that may be processed now. The caller says Done with its group when it is dealt with.
    [[nodiscard]] std::optional<PlannedFile> Take();
    void Done(std::uint32_t group) { m_busy.erase(group); }
    /// No file is left to be taken, now or later.
    [[nodiscard]] bool Empty();

private:
    bool IsBusy(const PlannedFile& file) const { return file.group != 0 && m_busy.contains(file.group); }
    std::optional<PlannedFile> TakeHeldBack();
    std::optional<PlannedFile> Read();
    PlannedFile Handed(PlannedFile file);

    Source m_source;
    std::size_t m_lookahead;
    bool m_sourceEnded = false;
    std::optional<PlannedFile> m_peeked;
    std::deque<PlannedFile> m_heldBack;
    std::unordered_set<std::uint32_t> m_busy;  // groups in hand
};

/// The inputs of a run that are in groups.
/// Memory: eight bytes for each input of a group.
class CGroupedInputs {
public:
    /// A file of the manifest; those that are alone do not count.
    void Add(const PlannedFile& file);
    /// Once, after the last file.
    void Complete();

    bool Contains(const std::string& path) const;

private:
    std::vector<std::uint64_t> m_hashes;  // of the paths, sorted
};
