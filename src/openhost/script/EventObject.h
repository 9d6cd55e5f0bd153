#pragma once

#include "openhost/script/Scripts.h"

struct duk_hthread;

namespace openhost {

ScriptResult ResultInEvent(duk_hthread* context);

}  // namespace openhost
