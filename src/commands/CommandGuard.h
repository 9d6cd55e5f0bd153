// The guard that every callback of a step enters: the host understands a status or a truth value, nothing else.
#pragma once

#include "hostapi/HostConstants.h"
#include "hostapi/HostTypes.h"

#include <functional>

/// Runs `work`; whatever it throws becomes the in-error status and the command's last error.
AVCommandStatus GuardStatus(AVCommand command, const std::function<AVCommandStatus()>& work) noexcept;
