// The host's command layer from the side that drives commands.
//
// Statuses are the host's kAVCommand... values. Everything throws CHostException when the host raises; a raise while
// a command works is also remembered as that command's last error.
#pragma once

#include "hostcalls/Cab.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

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
