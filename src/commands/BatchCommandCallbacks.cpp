#include "commands/BatchCommandCallbacks.h"

#include <exception>
#include <string>

#include "hostapi/HostConstants.h"
#include "hostcalls/Commands.h"

namespace {

void Remember(AVCommand command, const std::string& text) noexcept
{
    try {
        RememberCommandError(command, text);
    } catch (...) {  // out of memory: the status alone has to do
    }
}

}  // namespace

AVCommandStatus GuardStatus(AVCommand command, const std::function<AVCommandStatus()>& work) noexcept
{
    try {
        return work();
    } catch (const std::exception& error) {
        Remember(command, error.what());
    } catch (...) {
        Remember(command, "Unknown error.");
    }
    return kAVCommandInError;
}
