#include "sequence/SequenceFile.h"

#include <cstddef>
#include <optional>
#include <string_view>
#include <utility>

#include "base/Names.h"
#include "base/Overseer.h"
#include "base/Unicode.h"
#include "common/Log.h"
#include "hostapi/HostConstants.h"
#include "hostcalls/Cab.h"
#include "hostcalls/Commands.h"
#include "hostcalls/HostFrame.h"
#include "platform/AtomicFile.h"
#include "platform/Files.h"
#include "sequence/GuardedXml.h"
#include "sequence/HostForm.h"
#include "sequence/StepDescription.h"

namespace {

using Severity = SequenceFinding::Severity;

SequenceFinding Error(const char* code, std::string text) { return {Severity::Error, code, std::move(text), 0, {}}; }

bool LooksLikeXml(std::string_view bytes)
{
    if (bytes.starts_with("\xEF\xBB\xBF")) bytes.remove_prefix(3);
    const std::size_t first = bytes.find_first_not_of(" \t\r\n");
    return first != bytes.npos && bytes[first] == '<';
}

SequenceStep StepOf(CCabView entry, int number)
{
    SequenceStep step;
    step.number = number;
    step.entry = entry;
    const StepEntry read = StepEntry::Read(entry);
    step.parameters = read.parameters;
    step.handler = read.handler.value_or("");
    step.label = read.title.value_or(step.handler);
    if (!step.handler.empty()) step.runsAs = AvailableHandler(step.handler).value_or("");
    return step;
}

void ForEachHostStep(CCabView commands, const std::function<bool(const SequenceStep&)>& visit)
{
    const int count = commands.Size();
    std::string label;
    int group = -1;
    for (int index = 0; index < count; ++index) {
        // Of a copy, because a host may keep in a smaller form what nobody has asked for.
        const CCab entry = commands.Cab(CabKey(index).c_str()).Copy();
        SequenceStep step = StepOf(entry.View(), index + 1);
        if (group < 0 || step.label != label) ++group;
        label = step.label;
        step.group = group;
        if (!visit(step)) return;
    }
}

void ForEachXmlStep(const SequenceSource& source, const std::function<bool(const SequenceStep&)>& visit)
{
    int number = 0, groupNumber = 0;
    for (const WorkflowGroup& group : source.workflow->groups) {
        for (const WorkflowCommand& command : group.commands) {
            const CCab entry = CabFromCommand(command);
            SequenceStep step = StepOf(entry.View(), ++number);
            step.group = groupNumber;
            step.prompts = command.promptUser == "true";
            step.pauses = command.pauseBefore == "true";
            const auto index = static_cast<std::size_t>(number - 1);
            if (index < source.audit.steps.size()) step.place = source.audit.steps[index];
            if (!visit(step)) return;
        }
        ++groupNumber;
    }
}

/// Why a workflow cannot become cabs; nothing when it can.
std::optional<HostError> ConversionError(const Workflow& workflow)
{
    return CatchHostError([&] {
        for (const WorkflowGroup& group : workflow.groups)
            for (const WorkflowCommand& command : group.commands) (void)CabFromCommand(command);
    });
}

}  // namespace

std::variant<SequenceSource, SequenceFinding> SequenceFromText(const std::string& path, const std::string& xml)
{
    if (!LooksLikeXml(xml))
        return Error("not-a-sequence", "It is neither a sequence in the form of this host nor XML.");
    WorkflowAudit audit = AuditWorkflow(xml);
    if (!audit.isWorkflow) return audit.remarks.front();
    auto workflow = ParseWorkflow(xml);
    if (!workflow) return Error("not-xml", workflow.Error());
    std::optional<CSequence> sequence;
    if (const auto error = ConversionError(*workflow)) return Error("not-convertible", error->text);
    if (const auto error = CatchHostError([&] { sequence = SequenceWithoutCommands(*workflow); }))
        return Error("not-convertible", error->text);
    return SequenceSource{path, SequenceForm::Xml, std::move(*sequence), std::move(*workflow), std::move(audit)};
}

std::variant<SequenceSource, SequenceFinding> ReadSequenceSource(const std::string& path)
{
    if (platform::FolderExists(path)) return Error("not-found", "It is a folder; name the file.");
    if (!platform::FileExists(path)) return Error("not-found", "There is no such file; check the path.");
    // Asked first because the host would wait for ever on a pipe.
    platform::FileResult readable = platform::CheckReadable(path);
    if (!readable)
        return Error("not-readable", "It cannot be read: " + platform::ErrorText(readable.errorNumber) + ".");
    if (Expected<CCab> cab = ReadCabFile(path))
        return SequenceSource{path, SequenceForm::Host, CSequence(std::move(*cab)), std::nullopt, {}};
    const auto bytes = platform::ReadWholeFile(path, XmlLimits{}.bytes, &readable);
    if (!bytes) return Error("not-readable", "It cannot be read: " + platform::ErrorText(readable.errorNumber) + ".");
    return SequenceFromText(path, *bytes);
}

void ForEachStep(const SequenceSource& source, const std::function<bool(const SequenceStep&)>& visit)
{
    if (source.workflow) return ForEachXmlStep(source, visit);
    ForEachHostStep(source.sequence.Commands(), visit);
}

bool HoldsPasswords(const SequenceSource& source)
{
    bool holds = false;
    ForEachStep(source, [&](const SequenceStep& step) {
        holds = HoldsPassword(DescribeMeantStep(step.handler), step.parameters);
        return !holds;
    });
    return holds;
}

std::string HostTitle(const std::string& handler)
{
    std::string title;
    const auto error = CatchHostError([&] {
        const auto command = CHostCommand::Create(handler);
        if (!command) return;
        const CCab properties = command->Props({kAVCommandKeyGenericTitle, kAVCommandKeyTitle});
        for (const char* key : {kAVCommandKeyTitle, kAVCommandKeyGenericTitle})
            if (const auto text = properties.StringOrText(key)) title = *text;
    });
    return error ? std::string() : title;
}

namespace {

Expected<CSequence> LoadEitherForm(const std::string& path, CLogWriter& log)
{
    if (!platform::FileExists(path)) {
        log.NameValue("Sequence file does not existing at specified location", path, 0);  // sic
        return Failure("There is no sequence file at " + path + ".");
    }
    // Asked first because the host would wait for ever on a pipe.
    if (const platform::FileResult readable = platform::CheckReadable(path); !readable) {
        const std::string reason = platform::ErrorText(readable.errorNumber);
        log.NameValue("Error loading XML format", reason, 0);
        return Failure("The sequence file " + path + " cannot be read: " + reason + ".");
    }
    if (Expected<CCab> cab = ReadCabFile(path); cab) return CSequence(std::move(*cab));
    const Expected<Workflow> workflow = ReadWorkflowFile(path);
    if (!workflow) {
        log.NameValue("Error loading XML format", workflow.Error(), 0);
        return Failure("The sequence file " + path + " cannot be read: " + workflow.Error());
    }
    std::optional<CSequence> sequence;
    if (const auto error = CatchHostError([&] { sequence = SequenceFromWorkflow(*workflow); })) {
        log.NameValue("Sequence file cannot be converted", error->text, 0);
        return Failure("The sequence file " + path + " cannot be converted: " + error->text);
    }
    log.NameValue("Sequence file is loaded from XML format", "", 1);
    return std::move(*sequence);
}

}  // namespace

Expected<CSequence> LoadSequenceFile(const std::string& path, CLogWriter& log)
{
    Expected<CSequence> sequence = LoadEitherForm(path, log);
    if (!sequence) log.NameValue("Error reading sequence file", path, 0);
    return sequence;
}

namespace {

/// A file for a moment, nobody's document.
class CScratchFile {
public:
    explicit CScratchFile(const std::string& folder)
    {
        for (int number = 1; number <= kAttempts; ++number) {
            m_path = folder + platform::TemporaryPrefix("") + "cab-" + std::to_string(number);
            m_result = platform::WriteFileAtomically(m_path, "", platform::Readers::Owner, platform::Existing::Fail);
            if (platform::ProblemOf(m_result) != platform::FileProblem::Exists) return;
        }
    }
    CScratchFile(const CScratchFile&) = delete;
    CScratchFile& operator=(const CScratchFile&) = delete;
    ~CScratchFile()
    {
        if (!m_result) return;
        COverseer* const overseer = InstallOverseer(nullptr);
        (void)platform::DeleteFile(m_path);
        InstallOverseer(overseer);
    }

    const std::string& Path() const { return m_path; }
    platform::FileResult Result() const { return m_result; }

private:
    static constexpr int kAttempts = 1000;  // names of a dead process may be in the way
    std::string m_path;
    platform::FileResult m_result;
};

std::string TakenProblem(const std::string& path)
{
    if (platform::FolderExists(path)) return "The sequence cannot be written to " + path + ": it is a folder.";
    return "The file " + path + " exists already; choose another name or allow it to be overwritten.";
}

std::string WriteProblem(const std::string& path, platform::FileResult result)
{
    return "The sequence cannot be written to " + path + ": " + platform::ErrorText(result.errorNumber) + ".";
}

}  // namespace

std::string TitleFromPath(const std::string& path) { return SanitizeUtf8(SplitPath(FileName(path)).base); }

std::string TargetProblem(const SequenceTarget& target)
{
    if (target.path.empty()) return "No file was named to write the sequence to.";
    const bool taken = platform::NameExists(target.path);
    if (platform::FolderExists(target.path) || (taken && !target.overwrite)) return TakenProblem(target.path);
    const CScratchFile file(FolderOf(target.path));
    return file.Result() ? std::string() : WriteProblem(target.path, file.Result());
}

std::string PutSequenceFile(const SequenceTarget& target, const std::string& bytes)
{
    if (target.path.empty()) return "No file was named to write the sequence to.";
    const auto existing = target.overwrite ? platform::Existing::Replace : platform::Existing::Fail;
    const auto readers = target.holdsPasswords ? platform::Readers::Owner : platform::Readers::AsUsual;
    const auto written = platform::WriteFileAtomically(target.path, bytes, readers, existing);
    if (written) return {};
    if (platform::ProblemOf(written) == platform::FileProblem::Exists) return TakenProblem(target.path);
    return WriteProblem(target.path, written);
}

Expected<std::string> HostFormOf(CCabView cab, const std::string& beside)
{
    const CScratchFile file(FolderOf(beside));
    if (!file.Result())
        return Failure("no file can be made beside " + beside + ": " +
                       platform::ErrorText(file.Result().errorNumber) + ".");
    if (!WriteCabFile(file.Path(), cab)) return Failure("the host cannot write it.");
    const auto again = ReadCabFile(file.Path());
    if (!again) return Failure("the host cannot read what it has written: " + again.Error());
    if (!CabDifferences(cab, again->View()).empty()) return Failure("the host does not keep all its values.");
    platform::FileResult read{.errorNumber = 0};
    auto bytes = platform::ReadWholeFile(file.Path(), XmlLimits{}.bytes, &read);
    if (!bytes)
        return Failure("what the host has written cannot be read: " + platform::ErrorText(read.errorNumber) + ".");
    return std::move(*bytes);
}

const char* FormWord(SequenceForm form) { return form == SequenceForm::Xml ? "xml" : "host"; }
