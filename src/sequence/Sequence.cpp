#include "sequence/Sequence.h"

#include "hostapi/HostConstants.h"
#include "hostcalls/Cab.h"
#include "hostcalls/HostPath.h"
#include "sequence/Keys.h"

namespace {

std::optional<std::string> TextUtf8Of(CCabView cab, const char* key)
{
    auto text = cab.TextUtf8(key);
    return text ? text : cab.String(key);
}

}  // namespace

int CSequenceInput::Kind() const { return Int(kFileVariationKey, -1); }

bool CSequenceInput::NamesFolder() const { return Known(kFolderKey); }

std::optional<std::string> CSequenceInput::Folder() const { return PathEntry(*this, kFolderKey); }

std::vector<std::string> CSequenceInput::Listed() const
{
    std::vector<std::string> paths;
    const CCabView files = Cab(kFilesKey);
    for (const std::string& key : files.Keys())
        if (auto path = PathEntry(files, key.c_str())) paths.push_back(std::move(*path));
    return paths;
}

CCabView CSequenceInput::SourceOptions() const { return Cab(kSourceOptionsKey); }

CCabView CSequenceInput::Formats() const { return SourceOptions().Cab(kFormatsKey); }

CSequence::CSequence(CCab commands, CCab input, CCab output)
{
    m_cab.PutCab(kCommandsKey, std::move(commands));
    m_cab.PutCab(kInputKey, std::move(input));
    m_cab.PutCab(kOutputKey, std::move(output));
}

CCabView CSequence::Commands() const { return m_cab.Cab(kCommandsKey); }

CCabEditor CSequence::EditCommands() { return m_cab.EditCab(kCommandsKey); }

CSequenceInput CSequence::Input() const { return m_cab.Cab(kInputKey); }

CCabView CSequence::Output() const { return m_cab.Cab(kOutputKey); }

CCabEditor CSequence::EditOutput() { return m_cab.EditCab(kOutputKey); }

StepEntry StepEntry::Read(CCabView entry)
{
    StepEntry step;
    const auto atom = entry.Atom(kHandlerNameKey);
    step.handler = atom ? std::optional(AtomText(*atom)) : entry.StringOrText(kHandlerNameKey);
    step.title = entry.StringOrText(kTitleKey);
    step.parameters = entry.Cab(kParamsKey);
    step.configuration = entry.Cab(kConfigKey);
    step.uiPolicy = entry.Int(kUIPolicyKey, kAVCommandUISilent);
    return step;
}

std::optional<std::string> StepTitleUtf8(CCabView entry) { return TextUtf8Of(entry, kTitleKey); }

CCab MakeStepEntry(const std::string& handler, const std::string& titleUtf8, CCab parameters)
{
    CCab entry;
    entry.PutCab(kParamsKey, std::move(parameters));
    entry.PutAtom(kHandlerNameKey, Atom(handler));
    entry.PutTextUtf8(kTitleKey, titleUtf8);
    entry.PutInt(kUIPolicyKey, kAVCommandUISilent);
    entry.PutCab(kConfigKey, CCab());
    return entry;
}

CCab MakeInput(const std::vector<std::string>& pathsUtf8, bool isFolder)
{
    CCab input;
    if (pathsUtf8.empty()) {
        input.PutInt(kFileVariationKey, kInputAskUser);
        return input;
    }
    input.PutInt(kFileVariationKey, isFolder ? kInputFolder : kInputFiles);
    CCab paths;
    int number = 0;
    for (const std::string& path : pathsUtf8) paths.PutCab(CabKey(number++).c_str(), PathCab(path));
    input.PutCab(kFilesKey, std::move(paths));
    return input;
}

std::optional<std::string> PathEntry(CCabView cab, const char* key)
{
    if (const CCabView pathCab = cab.Cab(key)) return NativeFromPathCab(pathCab);
    const auto text = cab.StringOrText(key);
    if (!text || text->empty()) return std::nullopt;
    const auto path = CHostPath::FromDIPath(*text);
    return path ? std::optional(path->ToNative()) : std::nullopt;
}

std::string DIPathEntry(CCabView cab, const char* key)
{
    const CCabView pathCab = cab.Cab(key);
    return pathCab ? TextOfPathCab(pathCab) : TextUtf8Of(cab, key).value_or("");
}
