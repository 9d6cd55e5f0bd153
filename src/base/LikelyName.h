// What somebody probably meant who typed a name that does not exist.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// How many letters a name must have for each mistake in it: the more, the surer.
inline constexpr std::size_t kWhenTyped = 3, kWhenSure = 4;

/// The name that is nearest to the typed one, ASCII letter case and dashes in front aside; empty when none is near. A
/// beginning of three letters is near.
std::string LikelyName(std::string_view typed, const std::vector<std::string>& names,
                       std::size_t lettersForEachMistake = kWhenTyped);

/// The first of the words that looks like an option, without "=value"; empty when none does.
std::string FirstOption(const std::vector<std::string>& words);

/// `there is no option "--ouput"; did you mean "--output"?`, as far as one is likely.
std::string NoSuchOption(const std::string& typed, const std::vector<std::string>& options);
