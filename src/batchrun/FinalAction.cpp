#include "batchrun/FinalAction.h"

#include <utility>

#include "base/Names.h"
#include "common/Log.h"
#include "platform/Files.h"
#include "platform/Programs.h"

namespace {

using platform::Existing;
using platform::FileResult;
using FileOperation = FileResult (*)(const std::string&, const std::string&, Existing);

/// Another program may take a free name before we do; then the next free one is tried, so often at most.
constexpr int kNameAttempts = 100;

FinalActionOutcome Report(std::string reason, const char* success, const char* failure, const std::string& value,
                          CLogWriter& log)
{
    const bool done = reason.empty();
    log.NameValue(done ? success : failure, value, 1);
    if (done) return {};
    return {FinalActionResult::Failed, std::move(reason), value};
}

/// Why a file operation failed; empty when it did not.
std::string ReasonOf(const FileResult& result, const std::string& target)
{
    using platform::FileProblem;
    switch (platform::ProblemOf(result)) {
        case FileProblem::None:
            return {};
        case FileProblem::Exists:
            return "The name is taken";
        case FileProblem::Missing: {
            const std::string folder = FolderOf(target);
            return folder.empty() || platform::FolderExists(folder) ? "The input is gone"
                                                                    : "The destination folder does not exist";
        }
        default:
            return platform::ErrorText(result.errorNumber);
    }
}

/// Kept: the separator is appended whatever the destination ends with.
std::string TargetPath(const std::string& inputPath, const std::string& destination)
{
    return destination + kSeparator + FileName(inputPath);
}

FinalActionOutcome ReportCopy(const FileResult& result, const std::string& target, CLogWriter& log)
{
    return Report(ReasonOf(result, target), "File is copied to", "Can't copy file to", target, log);
}

FinalActionOutcome ReportMove(const FileResult& result, const std::string& target, CLogWriter& log)
{
    return Report(ReasonOf(result, target), "File is moved to", "Can't move file to", target, log);
}

struct UniqueResult {
    FileResult result;
    std::string target;
};

UniqueResult UnderFreeName(FileOperation operation, const std::string& inputPath, const std::string& wanted)
{
    UniqueResult unique;
    for (int attempt = 0; attempt < kNameAttempts; ++attempt) {
        unique.target = UniqueSpaced(wanted, platform::NameExists);
        unique.result = operation(inputPath, unique.target, Existing::Fail);
        if (platform::ProblemOf(unique.result) != platform::FileProblem::Exists) break;
    }
    return unique;
}

void LogMissingFolder(const std::string& destination, CLogWriter& log)
{
    if (!platform::FolderExists(destination)) log.NameValue("Missing output folder", destination, 1);
}

FinalActionOutcome MoveAndReplace(const std::string& inputPath, const std::string& destination, CLogWriter& log)
{
    const std::string target = TargetPath(inputPath, destination);
    const FileResult result = platform::MoveFile(inputPath, target, Existing::Replace);
    FinalActionOutcome outcome = ReportMove(result, target, log);
    if (outcome.result == FinalActionResult::Done) return outcome;
    LogMissingFolder(destination, log);
    log.NameNumber("Error code", result.errorNumber, 1);
    return outcome;
}

FinalActionOutcome MoveUnderFreeName(const std::string& inputPath, const std::string& destination, CLogWriter& log)
{
    const UniqueResult unique = UnderFreeName(platform::MoveFile, inputPath, TargetPath(inputPath, destination));
    FinalActionOutcome outcome = ReportMove(unique.result, unique.target, log);
    if (outcome.result == FinalActionResult::Done) return outcome;
    LogMissingFolder(destination, log);
    log.NameValue("Input file location", inputPath, 1);
    log.NameNumber("Error code", unique.result.errorNumber, 1);
    return outcome;
}

FinalActionOutcome CopyUnderFreeName(const std::string& inputPath, const std::string& destination, CLogWriter& log)
{
    const UniqueResult unique = UnderFreeName(platform::CopyFile, inputPath, TargetPath(inputPath, destination));
    return ReportCopy(unique.result, unique.target, log);
}

FinalActionOutcome Rename(const std::string& inputPath, const std::string& newName, CLogWriter& log)
{
    const std::string target = FolderOf(inputPath) + newName;
    const FileResult result = platform::MoveFile(inputPath, target, Existing::Fail);
    return Report(ReasonOf(result, target), "File is renamed to", "Can't rename file to", target, log);
}

/// Empty when the program was started.
std::string StartingProblem(const std::string& program, const std::string& inputPath)
{
    if (platform::OpenWithShell(program, inputPath)) return {};
    return platform::ProgramMayExist(program) ? "The program cannot be started" : "The program cannot be found";
}

}  // namespace

FinalActionOutcome ApplyFinalAction(const std::string& inputPath, const FinalActionRequest& request, CLogWriter& log)
{
    const std::string& destination = request.destination;
    const std::string target = TargetPath(inputPath, destination);
    const Existing copyMode = request.failIfExists ? Existing::Fail : Existing::Replace;
    switch (request.action) {
        case FinalAction::Nothing:
            return {};
        case FinalAction::Copy:
            return ReportCopy(platform::CopyFile(inputPath, target, copyMode), target, log);
        case FinalAction::Move:
            return ReportMove(platform::MoveFile(inputPath, target, Existing::Fail), target, log);
        case FinalAction::Delete:
            return Report(ReasonOf(platform::DeleteFile(inputPath), inputPath), "File is deleted",
                          "Can't delete file", inputPath, log);
        case FinalAction::Rename:
            return Rename(inputPath, destination, log);
        case FinalAction::Execute:
            return Report(StartingProblem(destination, inputPath), "File is executed",
                          "An error occured while trying to execute file", destination, log);  // sic
        case FinalAction::MoveReplace:
            return MoveAndReplace(inputPath, destination, log);
        case FinalAction::MoveVersions:
            return MoveUnderFreeName(inputPath, destination, log);
        case FinalAction::CopyVersions:
            return CopyUnderFreeName(inputPath, destination, log);
        default:
            log.NameNumber("ERROR: Unknown final action", static_cast<int>(request.action), 1);
            return {FinalActionResult::UnknownCode, "There is no such final action", {}};
    }
}
