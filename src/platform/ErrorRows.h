#pragma once

#include <span>

#include "platform/FileProblem.h"

// What each system's error numbers mean; not for callers outside this folder.
namespace platform {

struct ErrorRow {
    int number;
    FileProblem problem;
};

/// Numbers without a row mean Other. The first row of a problem has the number that stands for it.
std::span<const ErrorRow> ErrorRows();

}  // namespace platform
