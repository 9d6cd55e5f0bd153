#include "batchrun/WorkKinds.h"

#include "engine/SequenceWork.h"

namespace {

Expected<std::unique_ptr<CWork>> MakeSequenceWork(const WorkDescription& description)
{
    return std::unique_ptr<CWork>(std::make_unique<CSequenceWork>(WorkFilePath(description, kSequenceWork)));
}

constexpr WorkKind kKinds[] = {{kSequenceWork, MakeSequenceWork}};

}  // namespace

std::span<const WorkKind> WorkKinds() { return kKinds; }
