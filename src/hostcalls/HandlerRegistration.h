// The host's command layer from the side that offers commands.
#pragma once

#include "hostcalls/Cab.h"

#include <string>

/// Registers a handler; the record must live until the host exits, its procedures wrapped by Callback. Registering a
/// name again replaces the handler.
void RegisterCommandHandler(const std::string& name, AVCommandHandler handler);

/// Makes a command of a handler and offers it to people who build a sequence; the host owns it. False when there is
/// no such handler.
bool RegisterGlobalCommand(const std::string& handlerName);

/// A cab attached to a running command, such as "Params"; made when it is missing and `create` says so, else a null
/// editor. The command owns it.
[[nodiscard]] CCabEditor CommandCab(AVCommand command, const char* name, bool create);

/// Attaches a cab, which the command takes over; the former one of that name is destroyed.
void PutCommandCab(AVCommand command, const char* name, CCab&& cab);

/// The document among the inputs of a command; null without one. Borrowed.
[[nodiscard]] PDDoc CommandDocument(AVCommand command);

/// The name of the file that the command's document was made from, without its folder; empty when the inputs do not
/// tell.
[[nodiscard]] std::string CommandInputName(AVCommand command);

[[nodiscard]] std::string CommandHandlerName(AVCommand command);
[[nodiscard]] AVCommandUIPolicy CommandUIPolicy(AVCommand command);
