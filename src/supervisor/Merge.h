// Joins the journals of all shards into one log and one record.
#pragma once

#include "supervisor/RunObserver.h"
#include "supervisor/RunOptions.h"

/// Joins the journals of all shards; tells files that lack an outcome or have two in the message.
[[nodiscard]] RunResult MergeShards(const MergeOptions& options, CRunObserver& observer);
