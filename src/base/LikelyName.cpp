#include "base/LikelyName.h"

#include <algorithm>
#include <cstddef>

namespace {

constexpr std::size_t kShortestBeginning = 3;
constexpr std::size_t kLongestName = 100;  // nobody types more; comparing takes the square of it

std::string Compared(std::string_view name)
{
    name.remove_prefix(std::min(name.find_first_not_of('-'), name.size()));
    std::string compared(name);
    for (char& letter : compared)
        if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
    return compared;
}

/// Letters that are missing, too many, wrong, or swapped with their neighbour.
std::size_t Distance(const std::string& one, const std::string& other)
{
    std::vector<std::vector<std::size_t>> least(one.size() + 1, std::vector<std::size_t>(other.size() + 1));
    for (std::size_t i = 0; i <= one.size(); ++i) {
        for (std::size_t j = 0; j <= other.size(); ++j) {
            if (i == 0 || j == 0) {
                least[i][j] = i + j;
                continue;
            }
            const bool same = one[i - 1] == other[j - 1];
            least[i][j] = std::min({least[i - 1][j] + 1, least[i][j - 1] + 1, least[i - 1][j - 1] + (same ? 0 : 1)});
            const bool swapped = i > 1 && j > 1 && one[i - 1] == other[j - 2] && one[i - 2] == other[j - 1];
            if (swapped) least[i][j] = std::min(least[i][j], least[i - 2][j - 2] + 1);
        }
    }
    return least[one.size()][other.size()];
}

}  // namespace

std::string LikelyName(std::string_view typed, const std::vector<std::string>& names,
                       std::size_t lettersForEachMistake)
{
    if (typed.size() > kLongestName) return {};
    const std::string wanted = Compared(typed);
    std::size_t nearest = std::max<std::size_t>(wanted.size() / lettersForEachMistake, 1) + 1;
    std::string likely;
    for (const std::string& name : names) {
        const std::string known = Compared(name);
        const bool begins = wanted.size() >= kShortestBeginning && known.starts_with(wanted);
        const std::size_t distance = begins ? std::size_t{known != wanted} : Distance(wanted, known);
        if (distance >= nearest || distance >= known.size()) continue;
        nearest = distance;
        likely = name;
    }
    return likely;
}

std::string FirstOption(const std::vector<std::string>& words)
{
    for (const std::string& word : words)
        if (word.size() > 1 && word.starts_with('-') && word != "--") return word.substr(0, word.find('='));
    return {};
}

std::string NoSuchOption(const std::string& typed, const std::vector<std::string>& options)
{
    const std::string likely = LikelyName(typed, options);
    return "there is no option \"" + typed + '"' + (likely.empty() ? "" : "; did you mean \"" + likely + "\"?");
}
