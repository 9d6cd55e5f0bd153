#include "supervisor/DoneIndex.h"

namespace {

// Lowest bits first: done, logged, outcome (3), journal (16), offset (43).
constexpr int kLoggedBit = 1, kOutcomeShift = 2, kJournalShift = 5, kOffsetShift = 21;

}  // namespace

DonePlace CDoneIndex::At(int number) const
{
    const std::uint64_t packed = m_places[static_cast<std::size_t>(number)];
    return {.offset = packed >> kOffsetShift,
            .journal = static_cast<int>((packed >> kJournalShift) & 0xFFFF),
            .outcome = static_cast<FileOutcome>((packed >> kOutcomeShift) & 7),
            .logged = ((packed >> kLoggedBit) & 1) != 0};
}

void CDoneIndex::Set(int number, const DonePlace& place)
{
    m_places[static_cast<std::size_t>(number)] = 1 | static_cast<std::uint64_t>(place.logged) << kLoggedBit |
                                                 static_cast<std::uint64_t>(place.outcome) << kOutcomeShift |
                                                 static_cast<std::uint64_t>(place.journal) << kJournalShift |
                                                 place.offset << kOffsetShift;
}
