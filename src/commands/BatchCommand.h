// Base of the plug-in's own steps in the host's batch sequences.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "hostapi/HostRecords.h"
#include "hostcalls/Cab.h"
#include "ui/Windows.h"

class CLogWriter;
struct StepDescription;

/// What a step answers when the host asks for its properties.
struct BatchCommandProperties {
    std::string handlerName = "QLNX:NoName";
    std::string title = "Undefined";
    std::string genericTitle = "Unknown";  // answered as the screen name, too
    std::string groupTitle = "Document";
    bool canDescribeParams = true;
    bool canBatch = true;
    bool canShowDialog = true;
    const StepDescription* description = nullptr;  // borrowed for as long as the program runs; null: nothing is known
};

/// What a step works on; borrowed.
struct CommandTarget {
    AVCommand command;
    PDDoc document;
};

enum class DialogOutcome { Failed, Confirmed, Cancelled };

/// One object serves all commands of its kind, from start-up to shut-down. It keeps no parameters: they live in each
/// command's own "Params" cab, so that two steps of one kind in a sequence do not disturb each other.
///
/// Owns the handler record; the host keeps a pointer to it, so the object must live until the host ends.
/// Raises: the operations may throw; their callbacks in CommandRegistry.cpp let nothing out.
class CBatchCommand {
public:
    explicit CBatchCommand(BatchCommandProperties properties);
    CBatchCommand(const CBatchCommand&) = delete;
    CBatchCommand& operator=(const CBatchCommand&) = delete;

    virtual ~CBatchCommand();

    /// Gives up what the object keeps. Its callbacks answer nothing useful afterwards, but stay callable.
    virtual void Release();

    /// The host ends: releases, and answers true.
    virtual bool Terminate();

    /// Puts one command of this kind into the list offered to people who build sequences.
    virtual void RegisterCommands();

    /// Replaces the command's parameters by a copy of `given`; an empty cab means the defaults.
    virtual AVCommandStatus SetParameters(AVCommand command, CCabView given);

    /// Replaces the content of `target` by the command's parameters and renews the command's description of them.
    virtual void GetParameters(AVCommand command, CCabEditor target);

    /// Fills `target`: all properties when it is empty, else those whose keys are present.
    virtual void GetProperties(AVCommand command, CCabEditor target);

    /// A command was made: gives it the default parameters.
    virtual void Created(AVCommand command);

    /// The host has taken the handler in; false makes it drop the handler.
    virtual bool Initialize();

    /// Without a window system the answer is "cancelled" and nothing changes.
    virtual AVCommandStatus ShowDialog(AVCommand command);

    /// Done when the step's own work succeeds, else in error. Needs a document among the command's inputs.
    virtual AVCommandStatus Work(AVCommand command);

    /// The work is given up or the command made ready again; nothing is kept between calls, so `next` is the answer.
    virtual AVCommandStatus EndWork(AVCommand command, AVCommandStatus next);

protected:
    /// Empties the cab and fills it with the step's defaults.
    virtual void SetDefaultParameters(CCabEditor parameters) = 0;

    virtual bool CheckParameters(CCabView parameters);

    /// The lines that tell people what the step is going to do.
    virtual std::vector<std::string> DescribeParameters(CCabView parameters) const = 0;

    /// Lets the user change the parameters.
    virtual DialogOutcome ShowSettingsDialog(CCabEditor parameters, const DialogServices& dialogs) = 0;

    /// Works on one open document; false puts the command in error.
    virtual bool ProcessDocument(const CommandTarget& target, CCabView parameters) = 0;

public:
    /// Where the dialogs for the settings come from.
    void UseDialogs(DialogSource dialogs) { m_dialogs = std::move(dialogs); }

    const BatchCommandProperties& Properties() const { return m_properties; }
    AVCommandHandlerRec& HandlerRecord() { return m_record; }
    bool IsReleased() const { return m_released; }

private:
    /// The command's own parameters, made of the defaults when it has none yet. Valid until they are replaced.
    CCabView CurrentParameters(AVCommand command);
    CCab DescriptionCab(CCabView parameters) const;
    void PutProperty(CCabEditor target, const std::string& key, AVCommand command);

    BatchCommandProperties m_properties;
    AVCommandHandlerRec m_record = {};
    DialogSource m_dialogs;
    bool m_released = false;
};

/// Lets the user choose the file that stands under this key.
[[nodiscard]] DialogOutcome ChooseFileParameter(CCabEditor parameters, const char* key, const DialogServices& dialogs,
                                                FileChoice choice);

/// The group under which the host lists all of the plug-in's steps.
inline constexpr char kFerruleGroupTitle[] = "Ferrule Plug-in";

/// Properties of a step of this plug-in: title and generic title are its display name.
/// The description must live as long as the program.
[[nodiscard]] BatchCommandProperties FerruleStep(const StepDescription& description, const char* displayName);
