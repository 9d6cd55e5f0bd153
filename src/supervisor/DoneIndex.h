// Where the outcome of each file stands, in eight bytes a file.
#pragma once

#include "supervisor/RunObserver.h"

#include <cstdint>
#include <vector>

struct DonePlace {
    std::uint64_t offset = 0;  ///< in its journal
    int journal = 0;           ///< position in a list of the caller, below 65536
    FileOutcome outcome = FileOutcome::Failed;
    bool logged = false;  ///< its part of the log is written already
};

/// For files numbered from 1 to `total`.
class CDoneIndex {
public:
    explicit CDoneIndex(int total) : m_places(static_cast<std::size_t>(total) + 1, 0) {}

    int Total() const { return static_cast<int>(m_places.size()) - 1; }
    bool Contains(int number) const { return number >= 1 && number <= Total(); }
    /// The others only for numbers that it contains.
    bool IsDone(int number) const { return m_places[static_cast<std::size_t>(number)] != 0; }
    DonePlace At(int number) const;  ///< only when done
    void Set(int number, const DonePlace& place);
    void Forget(int number) { m_places[static_cast<std::size_t>(number)] = 0; }

private:
    std::vector<std::uint64_t> m_places;
};
