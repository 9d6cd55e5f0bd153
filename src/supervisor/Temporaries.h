// Unfinished files that a killed worker has left.
#pragma once

#include <set>
#include <string>

/// Removes the regular files in these folders, not below them, whose names begin with `prefix`; answers how many.
int RemoveTemporaries(const std::set<std::string>& folders, const std::string& prefix);
