#pragma once

#include <string>
#include <vector>

#include "base/Expected.h"
#include "common/SettingsRecord.h"
#include "ui/Form.h"

/// The four fields of a dialog that ask for a rectangle on a page, in points from its lower left corner.
class CAreaFields {
public:
    explicit CAreaFields(const SettingsRectangle& area);
    CAreaFields(const CAreaFields&) = delete;
    CAreaFields& operator=(const CAreaFields&) = delete;

    /// "left", "bottom", "right" and "top".
    [[nodiscard]] std::vector<FormControl> Controls();
    /// All zero is an area like any other. Fails with a sentence when a field holds no number, or nothing is inside.
    [[nodiscard]] Expected<SettingsRectangle> Area() const;

private:
    std::string m_left, m_bottom, m_right, m_top;
};
