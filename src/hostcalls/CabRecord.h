// Cabs of the host and our own settings records, turned into each other.
#pragma once

#include "hostcalls/Cab.h"

class CSettingsRecord;

/// Copies every entry in the order of the cab. An atom becomes the string of its name; a typed pointer is left out,
/// for it would mean nothing later; an unsigned or 64-bit number becomes an integer when it fits and a double
/// otherwise.
[[nodiscard]] CSettingsRecord RecordFromCab(CCabView cab);

/// Copies every entry. Strings stay strings and wide texts become texts of the host; keys go over as they stand, so
/// one that holds ":" makes nested cabs.
[[nodiscard]] CCab CabFromRecord(const CSettingsRecord& record);
