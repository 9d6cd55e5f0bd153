#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "hostapi/HostTypes.h"
#include "hostcalls/Cab.h"

// The last error text of each command: the text of its last exception or report. The host keeps none.

void RememberCommandError(AVCommand command, const std::string& text);

/// Empty when there is none; stays until forgotten.
[[nodiscard]] std::string CommandError(AVCommand command);

/// The same, and forgets it.
[[nodiscard]] std::string TakeCommandError(AVCommand command);
void ForgetCommandError(AVCommand command);

// The host's command layer from the side that drives commands.
//
// Statuses are the host's kAVCommand... values. Everything throws CHostException when the host raises; a raise while
// a command works is also remembered as that command's last error.

/// The handler registered under a name; null when there is none. It belongs to the plug-in that registered it.
[[nodiscard]] AVCommandHandler FindCommandHandler(const std::string& name);

/// Whether the handler of that name, which must be there, wants to be called before or after a whole sequence.
[[nodiscard]] bool HasSequenceCallbacks(const std::string& handlerName);

/// Owns one command, or nothing (after a move).
class CHostCommand {
public:
    /// Nothing when there is no handler of that name.
    [[nodiscard]] static std::optional<CHostCommand> Create(const std::string& handlerName);

    CHostCommand(CHostCommand&& other) noexcept;
    CHostCommand& operator=(CHostCommand&& other) noexcept;
    ~CHostCommand();

    AVCommand Get() const { return m_command; }  // borrowed

    [[nodiscard]] std::string Name() const;  // of its handler
    [[nodiscard]] AVCommandStatus Status() const;

    /// The setters do nothing unless the command is ready; the cabs are copied.
    AVCommandStatus SetConfig(CCabView config);
    AVCommandStatus SetParams(CCabView params);
    AVCommandStatus SetUIPolicy(AVCommandUIPolicy policy);
    AVCommandStatus SetInputs(CCabView inputs);

    AVCommandStatus Reset();
    AVCommandStatus Cancel();
    AVCommandStatus ShowDialog();
    AVCommandStatus Work();  // one step; call again as long as it answers working

    /// A cab with the properties asked for; with no keys, with all of them.
    [[nodiscard]] CCab Props(const std::vector<std::string>& keys) const;

    /// A cab with copies of all parameters.
    [[nodiscard]] CCab Params() const;

    /// The callbacks of the command's handler; nothing when it has no such callback.
    std::optional<AVCommandStatus> PreflightSequence();
    std::optional<AVCommandStatus> PreflightFile(PDDoc document);
    std::optional<AVCommandStatus> PostflightFile(PDDoc document);
    std::optional<AVCommandStatus> PostflightSequence();

    [[nodiscard]] std::string LastError() const;

private:
    explicit CHostCommand(AVCommand adopted) noexcept : m_command(adopted) {}

    /// Runs a host call; a raise is remembered as the command's last error and goes on.
    template <class Call>
    auto Remembering(Call call);
    template <class Callback, class... Arguments>
    std::optional<AVCommandStatus> CallHandler(Callback AVCommandHandlerRec::*member, Arguments... arguments);

    AVCommand m_command = nullptr;
};

/// The inputs of a command: the document, and its file's name in two parts.
[[nodiscard]] CCab CommandInputs(PDDoc document, const std::string& baseName, const std::string& extension);

// The host's command layer from the side that offers commands.

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
