#include "sequence/StepDescription.h"

#include <algorithm>

#include "base/Text.h"
#include "hostcalls/Commands.h"
#include "sequence/HostSteps.h"

namespace {

constexpr std::string_view kOwnPrefix = "QLNX_Ferrule";

constexpr StepDescription kUnknownOwnStep{};
constexpr StepDescription kForeignStep{.maker = StepMaker::Other, .secrecy = Secrecy::WhatSoundsLikePasswords};

std::vector<const StepDescription*>& InstalledSteps()
{
    static std::vector<const StepDescription*> steps;
    return steps;
}

const StepDescription* OwnStep(std::string_view handler)
{
    for (const StepDescription* step : OwnSteps())
        if (step->handler == handler) return step;
    return nullptr;
}

bool SoundsLikeOwnStep(std::string_view handler)
{
    const std::string name = ToLowerAscii(handler);
    return name.starts_with("qlnx") || name.find("ferrule") != std::string::npos;
}

}  // namespace

void SetOwnSteps(std::vector<const StepDescription*> steps) { InstalledSteps() = std::move(steps); }

const std::vector<const StepDescription*>& OwnSteps() { return InstalledSteps(); }

const StepDescription& DescribeStep(std::string_view handler)
{
    if (const StepDescription* own = OwnStep(handler)) return *own;
    if (handler.starts_with(kOwnPrefix)) return kUnknownOwnStep;
    const StepDescription* host = HostStep(handler);
    return host ? *host : kForeignStep;
}

const StepDescription& DescribeMeantStep(std::string_view handler)
{
    if (const StepDescription* own = OwnStep(handler)) return *own;
    if (SoundsLikeOwnStep(handler)) return kUnknownOwnStep;
    const StepDescription* host = MeantHostStep(handler);
    return host ? *host : kForeignStep;
}

bool MayBeTried(const StepDescription& step)
{
    return step.maker != StepMaker::Other && step.shared == SharedWork::None;
}

std::optional<std::string> AvailableHandler(const std::string& name)
{
    if (FindCommandHandler(name)) return name;
    const auto alternative = AlternativeHandler(name);
    return alternative && FindCommandHandler(*alternative) ? alternative : std::nullopt;
}
