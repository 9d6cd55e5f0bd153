#include "platform/FileProblem.h"

#include <algorithm>

namespace platform {

FileProblem ProblemOf(FileResult result)
{
    if (result) return FileProblem::None;
    const auto row = std::ranges::find(ErrorRows(), result.errorNumber, &ErrorRow::number);
    return row == ErrorRows().end() ? FileProblem::Other : row->problem;
}

FileResult Failure(FileProblem problem)
{
    if (problem == FileProblem::None) return {};
    return {std::ranges::find(ErrorRows(), problem, &ErrorRow::problem)->number};
}

}  // namespace platform
