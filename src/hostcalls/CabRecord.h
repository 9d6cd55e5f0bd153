// Cabs of the host and our own settings records, turned into each other.
#pragma once

#include "common/SettingsRecord.h"
#include "hostcalls/Cab.h"

#include <optional>

/// Copies every entry in the order of the cab. Left out: typed pointers,
/// which would mean nothing later, and unsigned and 64-bit numbers, which the plug-in has no use for.
[[nodiscard]] CSettingsRecord RecordFromCab(CCabView cab);

/// Copies every entry. Strings stay strings and wide texts become texts of the host; keys go over as they stand, so
/// one that holds ":" makes nested cabs. What a host refuses is told with the key of the value.
[[nodiscard]] CCab CabFromRecord(const CSettingsRecord& record);

/// One value; nothing for what RecordFromCab leaves out.
[[nodiscard]] std::optional<CSettingsRecord::Value> ValueFromCab(CCabView cab, const char* key);
