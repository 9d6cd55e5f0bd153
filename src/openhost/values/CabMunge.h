#pragma once

#include "openhost/values/Cabinet.h"

namespace openhost {

/// Combines `cab` with `keys` in the way of the action; where both hold a cab under one key, those are combined in
/// the same way. Raises genErrBadParm for an unknown action.
void MungeCab(CCabinet& cab, const CCabinet& keys, ASCabMungeAction action);

}  // namespace openhost
