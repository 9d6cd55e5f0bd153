#include "batchrun/BatchFile.h"

#include <algorithm>
#include <filesystem>
#include <set>
#include <utility>

#include "base/Names.h"
#include "base/Text.h"
#include "common/Log.h"
#include "platform/AtomicFile.h"
#include "platform/Files.h"
#include "platform/NarrowText.h"
#include "platform/Paths.h"
#include "sequence/OutputSettings.h"
#include "sequence/SequenceFile.h"

namespace {

/// A variable and what it is set to; `isArgument`: by an argument of the file, whose number is the value.
struct Variable {
    const char* name;
    std::string value;
    bool isArgument = false;
};

const char* YesNo(bool yes) { return yes ? "yes" : "no"; }

std::vector<Variable> VariablesOf(const BatchFileSettings& settings)
{
    std::vector<Variable> variables = {
        {"FERRULESEQU", settings.sequence},
        {"FERRULEFINAL", std::to_string(static_cast<int>(settings.finalAction))},
        {"FERRULEDEST", settings.destination},
        {"FERRULEALTPATH", "1", true},
        {"FERRULEALTOUTPUTPATH", "2", true},
        {"FERRULENOPROGRESS", YesNo(!settings.showProgress)},
        {"FERRULEFILEEXT", settings.extensions.value_or("")},
        {"FERRULENOSUBFOLDERS", YesNo(!settings.includeSubfolders)},
    };
    if (settings.executeInSteps) variables.push_back({"EXECUTEINSTEPS", "yes"});
    return variables;
}

// The command interpreter replaces, splits and redirects by these wherever they stand, and gives no way to write them
// that holds for a whole command file.
constexpr std::string_view kReadOtherwise = "%\"&^|<>\r\n";

std::string ValueProblem(const std::string& value)
{
    const auto place = value.find_first_of(kReadOtherwise);
    const char* const ask = " A batch file cannot pass that on; use another name or folder.";
    if (place != std::string::npos && (value[place] == '\r' || value[place] == '\n'))
        return "The text \"" + OneLogLine(value) + "\" holds a line break." + ask;
    if (place != std::string::npos)
        return "The text \"" + value + "\" holds the character " + value[place] + "." + ask;
    if (value != Trim(value)) return "The text \"" + value + "\" begins or ends with a blank." + ask;
    return {};
}

// The program stands in double quotes, where everything but these two is itself.
std::string ProgramProblem(const std::string& program)
{
    if (program.find_first_of("%\"\r\n") == std::string::npos) return {};
    return "The path of the host, " + program + ", holds a character that a batch file cannot pass on.";
}

bool IsAscii(const std::string& text)
{
    return std::ranges::all_of(text, [](unsigned char letter) { return letter < 0x80; });
}

Expected<std::string> MakeBat(const BatchFileSettings& settings)
{
    std::string lines;
    for (const Variable& variable : VariablesOf(settings)) {
        if (std::string problem = ValueProblem(variable.value); !problem.empty()) return Failure(std::move(problem));
        lines +=
            std::string("SET ") + variable.name + '=' + (variable.isArgument ? "%" : "") + variable.value + "\r\n";
    }
    if (std::string problem = ProgramProblem(settings.hostProgram); !problem.empty())
        return Failure(std::move(problem));
    lines += '"' + settings.hostProgram + "\" /n" + (settings.startHidden ? " /h" : "");
    if (IsAscii(lines)) return lines;
    const auto text = platform::TextForCommandFile(lines);
    return "@CHCP " + std::to_string(text.codePage) + " >NUL\r\n" + text.bytes;
}

std::string QuotedForShell(const std::string& text) { return '\'' + ReplaceAll(text, "'", "'\\''") + '\''; }

std::string MakeSh(const BatchFileSettings& settings)
{
    std::string lines = "#!/bin/sh\n# arguments: the folder or file with the inputs, the folder for the results\n";
    for (const Variable& variable : VariablesOf(settings))
        lines += std::string("export ") + variable.name + '=' +
                 (variable.isArgument ? "\"${" + variable.value + "-}\"" : QuotedForShell(variable.value)) + '\n';
    return lines + "exec " + QuotedForShell(settings.hostProgram) + " /n" + (settings.startHidden ? " /h" : "") +
           '\n';
}

}  // namespace

const char* ExtensionOf(BatchFileForm form) { return form == BatchFileForm::Bat ? "bat" : "sh"; }

// Versions of a name in a folder are made without being asked where; the host then says what is missing.
std::string DestinationProblem(FinalAction action, const std::string& destination)
{
    constexpr FinalAction kNeedy[] = {FinalAction::Copy, FinalAction::Move, FinalAction::Rename, FinalAction::Execute,
                                      FinalAction::MoveReplace};
    const bool needs = std::ranges::find(kNeedy, action) != std::end(kNeedy);
    return needs && destination.empty() ? "Please select a destination folder or a filename." : "";
}

Expected<std::string> MakeBatchFile(const BatchFileSettings& settings, BatchFileForm form)
{
    if (form == BatchFileForm::Bat) return MakeBat(settings);
    return MakeSh(settings);
}

Expected<bool> SequenceRunsOptimizer(const std::string& path)
{
    const auto read = ReadSequenceSource(path);
    if (const auto* problem = std::get_if<SequenceFinding>(&read)) return Failure(FindingSentence(path, *problem));
    return OutputSettings::Read(std::get<SequenceSource>(read).sequence.Output()).runPdfOptimizer;
}

std::string WriteBatchFile(const std::string& path, const std::string& bytes, BatchFileForm form, bool overwrite)
{
    platform::CAtomicFile file(path, overwrite ? platform::Existing::Replace : platform::Existing::Fail);
    file.Write(bytes.data(), bytes.size());
    platform::FileResult result = file.Complete();
    if (result && form == BatchFileForm::Sh && !file.TemporaryPath().empty()) {
        using std::filesystem::perms;
        const auto written = platform::StandardPath(file.TemporaryPath());
        std::error_code ignored;  // a file system without such rights has none to set
        const auto readers = std::filesystem::status(written, ignored).permissions() &
                             (perms::owner_read | perms::group_read | perms::others_read);
        std::filesystem::permissions(written, static_cast<perms>(static_cast<unsigned>(readers) >> 2),
                                     std::filesystem::perm_options::add, ignored);
    }
    if (result) result = file.Commit();
    if (result) return {};
    if (platform::ProblemOf(result) == platform::FileProblem::Exists)
        return "The file " + path + " exists already; choose another name or allow it to be overwritten.";
    return "The file " + path + " cannot be written: " + platform::ErrorText(result.errorNumber) + ".";
}

namespace {

constexpr int kDeepest = 16;  // folders in folders; links may lead round in a circle

void AddSequencesOf(const std::string& folder, int depth, std::set<std::string>& known,
                    std::vector<std::string>& paths)
{
    if (depth > kDeepest) return;
    for (const platform::FolderEntry& entry : platform::ListFolder(folder)) {
        const std::string path = WithTrailingSeparator(folder) + entry.name;
        if (entry.isFolder)
            AddSequencesOf(path, depth + 1, known, paths);
        else if (EqualsIgnoreCaseAscii(Extension(entry.name), "sequ") &&
                 known.insert(platform::ResolvedPath(path)).second)
            paths.push_back(path);
    }
}

}  // namespace

std::vector<std::string> FindSequenceFiles(int hostMajorVersion)
{
    const std::string version = std::to_string(hostMajorVersion);
    const std::vector<std::string> folders = {"/Quillon/Ferrule/Sequences",
                                              "/Adobe/Acrobat/" + version + ".0/Sequences",
                                              "/Adobe/Acrobat " + version + ".0/Acrobat/Sequences",
                                              "/Adobe/Acrobat/Sequences",
                                              "/Adobe/Acrobat/2015/Sequences",
                                              "/Adobe/Acrobat 2015/Acrobat/Sequences",
                                              "/Adobe/Acrobat/DC/Sequences",
                                              "/Adobe/Acrobat DC/Acrobat/Sequences",
                                              "/Adobe/Acrobat/2017/Sequences",
                                              "/Adobe/Acrobat 2017/Acrobat/Sequences"};
    std::vector<std::string> paths;
    std::set<std::string> known;  // a folder may be found by several ways
    for (const std::string& base : platform::UserFolders())
        for (const std::string& folder : folders)
            AddSequencesOf(base + ReplaceAll(folder, "/", std::string(1, kSeparator)), 0, known, paths);
    return paths;
}
