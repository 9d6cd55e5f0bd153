#include "supervisor/Epilogues.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

namespace {

using Lines = std::vector<std::string>;

constexpr std::string_view kStopLine = "LOG STOPPED: ";

/// The same for lines that differ in the moment only.
bool IsSameLine(const std::string& one, const std::string& other)
{
    return one == other || (one.starts_with(kStopLine) && other.starts_with(kStopLine));
}

std::size_t CommonEnd(const Lines& one, const Lines& other)
{
    const auto ends = std::mismatch(one.rbegin(), one.rend(), other.rbegin(), other.rend(), IsSameLine);
    return static_cast<std::size_t>(std::distance(one.rbegin(), ends.first));
}

}  // namespace

void CEpilogues::Add(Lines lines)
{
    if (lines.empty()) return;
    const auto same = std::ranges::find_if(
        m_epilogues, [&](const Lines& known) { return std::ranges::equal(known, lines, IsSameLine); });
    if (same != m_epilogues.end()) m_epilogues.erase(same);
    m_epilogues.push_back(std::move(lines));
}

Lines CEpilogues::Joined() const
{
    if (Empty()) return {};
    const Lines& latest = m_epilogues.back();
    std::size_t common = latest.size();
    for (const Lines& lines : m_epilogues) common = std::min(common, CommonEnd(latest, lines));
    Lines joined;
    for (const Lines& lines : m_epilogues)
        joined.insert(joined.end(), lines.begin(), lines.end() - static_cast<std::ptrdiff_t>(common));
    joined.insert(joined.end(), latest.end() - static_cast<std::ptrdiff_t>(common), latest.end());
    return joined;
}
