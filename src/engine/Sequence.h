// One loaded sequence.
#pragma once

#include "hostcalls/Cab.h"

#include <utility>

/// Owns the cab of a sequence. The views are borrowed from it; a part that is missing is a null view.
class CSequence {
public:
    explicit CSequence(CCab cab) : m_cab(std::move(cab)) {}

    [[nodiscard]] CCabView Commands() const { return m_cab.Cab("Commands"); }
    [[nodiscard]] CCabView Input() const { return m_cab.Cab("Input"); }
    [[nodiscard]] CCabView Output() const { return m_cab.Cab("Output"); }
    [[nodiscard]] CCabEditor EditOutput() { return m_cab.EditCab("Output"); }

    /// Everything, entries of other makers among it.
    [[nodiscard]] CCabView Whole() const { return m_cab.View(); }

    /// Whether all three parts are there. Throws CHostException.
    [[nodiscard]] bool IsComplete() const { return Commands() && Input() && Output(); }

private:
    CCab m_cab;
};
