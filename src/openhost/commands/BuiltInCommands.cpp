#include "openhost/commands/BuiltInCommands.h"

#include "openhost/commands/Handlers.h"
#include "openhost/commands/Slots.h"
#include "openhost/values/Text.h"

namespace openhost {

void PutStepProps(CCabinet& props, const StepTitles& titles)
{
    const bool all = props.NumEntries() == 0;
    const auto wanted = [&](const char* key) { return all || props.Known(key); };
    if (wanted(kAVCommandKeyCanBatch)) props.PutBool(kAVCommandKeyCanBatch, true);
    if (wanted(kAVCommandKeyCanShowDialog)) props.PutBool(kAVCommandKeyCanShowDialog, false);
    if (wanted(kAVCommandKeyCanDescribeParams)) props.PutBool(kAVCommandKeyCanDescribeParams, false);
    if (wanted(kAVCommandKeyGroupTitle)) props.PutText(kAVCommandKeyGroupTitle, titles.group);
    if (wanted(kAVCommandKeyGenericTitle)) props.PutText(kAVCommandKeyGenericTitle, titles.title);
    if (wanted(kAVCommandKeyTitle)) props.PutText(kAVCommandKeyTitle, titles.title);
}

std::optional<std::string> TextOrString(const CCabinet* cab, std::string_view key)
{
    if (!cab) return std::nullopt;
    if (const CHostText* const text = cab->GetText(key)) return text->HostBytes();
    if (const char* const string = cab->GetString(key)) return std::string(string);
    return std::nullopt;
}

void RegisterBuiltInCommands()
{
    auto& handlers = Part<CCommandHandlers>();
    handlers.Register(AtomFromText("WorkflowPlaybackSaveFiles"), SaveStepHandler());
    handlers.Register(AtomFromText("DocSecurity"), SecurityStepHandler());
}

}  // namespace openhost
