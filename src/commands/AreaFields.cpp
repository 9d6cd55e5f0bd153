#include "commands/AreaFields.h"

#include <charconv>
#include <cmath>
#include <optional>

#include "base/Text.h"

namespace {

constexpr double kMillimetresPerPoint = 25.4 / 72, kInchesPerPoint = 1.0 / 72;

/// A length in points.
std::optional<double> Length(const std::string& text)
{
    double value = 0;
    const std::string trimmed = Trim(text);
    const char* const end = trimmed.data() + trimmed.size();
    const auto read = std::from_chars(trimmed.data(), end, value);
    if (trimmed.empty() || read.ec != std::errc() || read.ptr != end || !std::isfinite(value)) return std::nullopt;
    return value;
}

std::string LengthText(const std::string& points)
{
    const double value = Length(points).value_or(0);
    return FormatText("%d pt / %d mm / %4.2f in", static_cast<int>(std::lround(value)),
                      static_cast<int>(std::lround(value * kMillimetresPerPoint)), value * kInchesPerPoint);
}

std::string PointsText(double points) { return FormatText("%g", points); }

FormControl LengthField(const char* label, std::string& value, const char* id)
{
    return {.what = Row{{{.what = TextField{.label = label, .value = &value, .width = 10}, .id = id},
                         {.what = StaticText{.text = "", .current = [&value] { return LengthText(value); }}}}}};
}

}  // namespace

CAreaFields::CAreaFields(const SettingsRectangle& area)
    : m_left(PointsText(area.left)),
      m_bottom(PointsText(area.bottom)),
      m_right(PointsText(area.right)),
      m_top(PointsText(area.top))
{
}

std::vector<FormControl> CAreaFields::Controls()
{
    return {LengthField("&Left:", m_left, "left"), LengthField("&Bottom:", m_bottom, "bottom"),
            LengthField("&Right:", m_right, "right"), LengthField("&Top:", m_top, "top")};
}

Expected<SettingsRectangle> CAreaFields::Area() const
{
    const auto left = Length(m_left), bottom = Length(m_bottom), right = Length(m_right), top = Length(m_top);
    if (!left || !bottom || !right || !top)
        return Failure("Please enter a number of points for each side of the area.");
    const SettingsRectangle area{*left, *right, *top, *bottom};
    if (area != SettingsRectangle() && (area.left >= area.right || area.bottom >= area.top))
        return Failure(
            "The area is empty. Please enter a right side greater than the left and a top greater than the bottom.");
    return area;
}
