// The journal of taking a run back: which acts are undone. See docs/runs.md.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/HeldFiles.h"
#include "supervisor/undo/ActsToUndo.h"
#include "supervisor/undo/UndoStep.h"

class CUndoJournal {
public:
    /// What tells an act from the others of a run: its order, and the number of its file, for parts of a run.
    using Key = std::pair<std::uint64_t, int>;
    static Key KeyOf(const IntendedAct& act) { return {act.order, act.number}; }

    /// A journal that is not there is empty. Fails with a sentence.
    [[nodiscard]] std::string Read(const std::string& path, const std::string& run);
    /// After reading it: goes on with it. Fails with a sentence.
    [[nodiscard]] std::string Open(const std::string& path, const std::string& run);

    bool IsUndone(const IntendedAct& act) const;
    /// Before the next act is touched this one must be on disk, because what stands under its names tells later only
    /// what the latest act made of them.
    platform::FileResult Add(const IntendedAct& act, const UndoStep& step);
    /// `left`: acts that could not be taken back.
    platform::FileResult AddEnd(int left);

private:
    platform::FileResult AddLine(std::string line);

    platform::CAppendFile m_file;
    std::vector<Key> m_undone;  // sorted
    std::uint64_t m_length = 0;
};
