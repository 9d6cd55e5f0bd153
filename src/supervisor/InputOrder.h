// Puts what is done in any order into input order.
#pragma once

#include "supervisor/DoneIndex.h"
#include "supervisor/Journal.h"

#include <functional>
#include <optional>

/// Passes each outcome on as soon as those of all earlier files are known. Waiting ones are read again from their
/// journal, so they take no memory. Everything is borrowed.
class CInputOrder {
public:
    /// Reads an outcome again; nothing when that fails.
    using Reader = std::function<std::optional<DoneFile>(const DonePlace& place)>;
    /// `written`: an earlier start of the run has logged it.
    using Taker = std::function<void(const DoneFile& done, bool written)>;

    CInputOrder(const CDoneIndex& done, Reader reader, Taker taker);

    /// Passes on what an earlier start of the run has left at the front.
    void Begin() { Advance(); }
    /// The file is in the index.
    void Done(const DoneFile& done, bool written = false);
    /// Passes on the rest, over the gaps of what is not done.
    void Finish();
    /// An outcome could not be read again.
    bool Failed() const { return m_failed; }

private:
    void Advance();
    void PassOn(int number);

    const CDoneIndex& m_done;
    Reader m_reader;
    Taker m_taker;
    int m_next = 1;
    bool m_failed = false;
};
