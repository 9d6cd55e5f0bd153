#pragma once

#include <span>

#include "platform/Files.h"

// The failures of file operations that callers tell apart. Systems have numbers of their own, and often several, for
// each; nothing outside this folder knows them.

namespace platform {

enum class FileProblem {
    None,
    Missing,          ///< no such file, or no such folder on the way to it
    Exists,           ///< the name is taken
    NotARegularFile,  ///< "invalid argument": a device, a pipe, a file onto itself
    IsAFolder,
    NoAccess,   ///< rights, or a file system that is read-only
    InUse,      ///< another process holds it: "would block"
    Cancelled,  ///< the overseer refused
    DiskFull,   ///< or a quota
    TooLarge,   ///< for a limit of ours or of the system
    OutOfMemory,
    NobodyReads,  ///< the reader of a pipe is gone
    Other
};

FileProblem ProblemOf(FileResult result);
/// The result that stands for this problem; for Other an error of input and output.
FileResult Failure(FileProblem problem);
/// What the last call of a C stream in this thread failed with. Never success.
FileResult StreamFailure();

// What each system's error numbers mean; not for callers outside this folder.

struct ErrorRow {
    int number;
    FileProblem problem;
};

/// Numbers without a row mean Other. The first row of a problem has the number that stands for it.
std::span<const ErrorRow> ErrorRows();

}  // namespace platform
