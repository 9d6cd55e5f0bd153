// Tells the host how a run goes, when it has the table for that; otherwise nothing happens. None of them throws.
#pragma once

#include <string>

[[nodiscard]] bool JobsTablePresent();

/// `inputs` is -1 when the number is not known yet; `outcome` and `end` are the kJobFile... and kJobRun... values of
/// the jobs table.
void JobRunStarts(int inputs) noexcept;
void JobFileDone(const std::string& path, int outcome, const std::string& message) noexcept;
void JobRunEnds(int end, const std::string& message) noexcept;
