#include "hostcalls/CommandErrors.h"

#include <unordered_map>

namespace {

std::unordered_map<AVCommand, std::string>& Errors()
{
    static std::unordered_map<AVCommand, std::string> errors;
    return errors;
}

}  // namespace

void RememberCommandError(AVCommand command, const std::string& text) { Errors()[command] = text; }

std::string CommandError(AVCommand command)
{
    const auto found = Errors().find(command);
    return found != Errors().end() ? found->second : std::string();
}

std::string TakeCommandError(AVCommand command)
{
    std::string text = CommandError(command);
    ForgetCommandError(command);
    return text;
}

void ForgetCommandError(AVCommand command) { Errors().erase(command); }
