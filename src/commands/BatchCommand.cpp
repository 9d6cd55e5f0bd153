#include "commands/BatchCommand.h"

#include <string_view>
#include <utility>

#include "hostapi/HostConstants.h"
#include "hostcalls/Application.h"
#include "hostcalls/Commands.h"
#include "sequence/StepDescription.h"

namespace {

constexpr char kParams[] = "Params";
constexpr char kParamsDesc[] = "ParamsDesc";
constexpr const char* kPropertyKeys[] = {"GroupTitle",    "CanBatch",     "CanDescribeParams",
                                         "CanShowDialog", "GenericTitle", "ScreenName",
                                         "Title",         kParamsDesc};

AVCommandStatus StatusOf(DialogOutcome outcome)
{
    switch (outcome) {
        case DialogOutcome::Confirmed:
            return kAVCommandDone;
        case DialogOutcome::Cancelled:
            return kAVCommandCanceled;
        case DialogOutcome::Failed:
            break;
    }
    return kAVCommandInError;
}

}  // namespace

BatchCommandProperties FerruleStep(const StepDescription& description, const char* displayName)
{
    BatchCommandProperties properties;
    properties.handlerName = description.handler;
    properties.description = &description;
    properties.title = displayName;
    properties.genericTitle = displayName;
    properties.groupTitle = kFerruleGroupTitle;
    properties.canShowDialog = true;
    properties.canDescribeParams = true;
    return properties;
}

DialogOutcome ChooseFileParameter(CCabEditor parameters, const char* key, const DialogServices& dialogs,
                                  FileChoice choice)
{
    choice.initial = parameters.StringOrText(key).value_or("");
    const auto path = dialogs.windows.OpenFile(choice);
    if (!path) return DialogOutcome::Cancelled;
    parameters.PutString(key, *path);
    return DialogOutcome::Confirmed;
}

CBatchCommand::CBatchCommand(BatchCommandProperties properties) : m_properties(std::move(properties))
{
    m_record.size = sizeof m_record;
}

CBatchCommand::~CBatchCommand() = default;

// The record stays until the object goes: the host may still look into it while it destroys its commands.
void CBatchCommand::Release() { m_released = true; }

bool CBatchCommand::Terminate()
{
    Release();
    return true;
}

void CBatchCommand::RegisterCommands() { RegisterGlobalCommand(m_properties.handlerName); }

AVCommandStatus CBatchCommand::SetParameters(AVCommand command, CCabView given)
{
    CCab fresh;
    if (!given || given.Size() == 0) {
        SetDefaultParameters(fresh.Edit());
    } else {
        fresh.CopyFrom(given);
    }
    PutCommandCab(command, kParams, std::move(fresh));
    return kAVCommandReady;
}

void CBatchCommand::GetParameters(AVCommand command, CCabEditor target)
{
    const CCabView parameters = CurrentParameters(command);
    if (!CheckParameters(parameters)) return;
    target.MakeEmpty();
    target.CopyFrom(parameters);
    PutCommandCab(command, kParamsDesc, DescriptionCab(parameters));
}

void CBatchCommand::GetProperties(AVCommand command, CCabEditor target)
{
    const bool all = target.Size() == 0;
    for (const char* key : kPropertyKeys) {
        if (all || target.Known(key)) PutProperty(target, key, command);
    }
}

void CBatchCommand::Created(AVCommand command)
{
    CCab fresh;
    SetDefaultParameters(fresh.Edit());
    SetParameters(command, fresh.View());
}

bool CBatchCommand::Initialize() { return true; }

AVCommandStatus CBatchCommand::ShowDialog(AVCommand command)
{
    const CCabEditor parameters = CommandCab(command, kParams, false);
    if (!parameters) return StatusOf(DialogOutcome::Failed);
    const auto dialogs = m_dialogs ? m_dialogs() : Expected<DialogServices>(Failure("There are no windows."));
    return StatusOf(dialogs ? ShowSettingsDialog(parameters, *dialogs) : DialogOutcome::Cancelled);
}

AVCommandStatus CBatchCommand::Work(AVCommand command)
{
    SetWaitCursor();
    ForgetCommandError(command);
    const PDDoc document = CommandDocument(command);
    if (document == nullptr) {
        RememberCommandError(command, "The command has no document to work on.");
        return kAVCommandInError;
    }
    return ProcessDocument({command, document}, CurrentParameters(command)) ? kAVCommandDone : kAVCommandInError;
}

AVCommandStatus CBatchCommand::EndWork(AVCommand, AVCommandStatus next)
{
    SetWaitCursor();
    return next;
}

bool CBatchCommand::CheckParameters(CCabView) { return true; }

CCabView CBatchCommand::CurrentParameters(AVCommand command)
{
    if (!CommandCab(command, kParams, false)) Created(command);
    return CommandCab(command, kParams, false);
}

CCab CBatchCommand::DescriptionCab(CCabView parameters) const
{
    CCab description;
    int number = 0;
    for (const std::string& line : DescribeParameters(parameters)) {
        description.PutText(CabKey(++number).c_str(), line);
    }
    return description;
}

void CBatchCommand::PutProperty(CCabEditor target, const std::string& key, AVCommand command)
{
    const char* name = key.c_str();
    if (key == "CanBatch") return target.PutBool(name, m_properties.canBatch);
    if (key == "CanDescribeParams") return target.PutBool(name, m_properties.canDescribeParams);
    if (key == "CanShowDialog") return target.PutBool(name, m_properties.canShowDialog);
    if (key == kParamsDesc) return target.PutCab(name, DescriptionCab(CurrentParameters(command)));
    if (key == "GroupTitle") return target.PutText(name, m_properties.groupTitle);
    if (key == "Title") return target.PutText(name, m_properties.title);
    target.PutText(name, m_properties.genericTitle);  // generic title and screen name are the same
}
