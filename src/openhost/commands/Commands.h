#pragma once

#include <string_view>
#include <vector>

#include "hostapi/HostRecords.h"
#include "openhost/core/Handles.h"
#include "openhost/values/Cabinet.h"

namespace openhost {

/// One instance of a handler with its own cabs, which it keeps by name in one cab of its own.
struct CCommand {
    ASAtom name = 0;
    AVCommandHandler handler = nullptr;
    ASExtension owner = nullptr;
    ASCab cabs = nullptr;
    AVCommandStatus status = 0;
    int calls = 0;         // calls into the handler that are under way
    bool working = false;  // the innermost of them is Work
    bool global = false;   // on the list for people; the host destroys it
};

/// All commands and what moves them from state to state.
///
/// A command is made ready. Work takes it from ready (or working, or paused) to what the handler answers. Only a
/// ready command takes parameters, configuration and inputs; others answer their state and stay as they are.
/// What a handler raises goes on to the caller; the command is in error then.
class CCommands {
public:
    /// Null when there is no such handler. The handler sets its defaults; when it raises, there is no command.
    AVCommand New(ASAtom name);
    /// Tells the handler and frees the command with its cabs. Raises genErrBadParm for a global command and inside a
    /// call of its handler.
    void Destroy(AVCommand handle);

    CCommand& At(AVCommand command) const { return m_commands.At(command); }
    bool Known(AVCommand command) const { return m_commands.Find(command) != nullptr; }

    /// The cab with this name; when there is none, a new one or null.
    CCabinet* Cab(AVCommand handle, std::string_view cabName, bool create);
    /// Takes `cab` over; null removes what is there.
    void PutCab(AVCommand handle, std::string_view cabName, ASCab cab);

    /// A handler without the procedure leaves its parameters to the host, which keeps copies in "Params". An answer
    /// in error makes the command so; any other leaves it ready.
    AVCommandStatus SetParams(AVCommand handle, ASCab params);
    void GetParams(AVCommand handle, ASCab params);
    /// Merges: null values erase keys.
    AVCommandStatus SetConfig(AVCommand handle, const CCabinet& config);
    /// Replaces all inputs by copies.
    AVCommandStatus SetInputs(AVCommand handle, const CCabinet& inputs);
    void GetProps(AVCommand handle, ASCab props);

    /// Dismissing the dialog cancels a ready command; others answer their state.
    AVCommandStatus ShowDialog(AVCommand handle);
    /// A handler that cannot work leaves the command not executed; an answer that is no result counts as in error.
    AVCommandStatus Work(AVCommand handle);
    /// Has the handler clean up. A command in error stays so, a finished one stays finished, any other is cancelled.
    AVCommandStatus Cancel(AVCommand handle);
    /// Back to ready, unless the handler says that it is still in error. Does nothing while the command works.
    AVCommandStatus Reset(AVCommand handle);
    /// Does it all: resets when not ready, takes the front document when the inputs have none, works to the end or
    /// until somebody wants everything to stop. Shows no dialog: the policy never allows one.
    AVCommandStatus Execute(AVCommand handle);

    /// The policy asked for in the configuration, but nothing interactive: there is nobody to interact with.
    AVCommandUIPolicy Policy(AVCommand handle) const;
    /// The living document or view among the inputs, or null.
    PDDoc Document(AVCommand handle) const;
    AVDoc View(AVCommand handle) const;

    void MakeGlobal(AVCommand handle);
    /// The command is its maker's again.
    void MakePrivate(AVCommand handle);
    /// Null when there is none of this name.
    AVCommand FindGlobal(ASAtom name) const;

    /// Destroys all commands (of one plug-in), the global ones too.
    void DestroyAll();
    void DropOwner(ASExtension owner);
    std::size_t Live() const { return m_commands.Live(); }

private:
    void DestroyNow(AVCommand handle);
    void DestroyThose(const std::vector<AVCommand>& commands);
    const CCabinet* Cab(const CCommand& command, std::string_view cabName) const;

    CHandles<CCommand, AVCommand> m_commands{"command"};
    std::vector<AVCommand> m_global;
};

}  // namespace openhost
