#include "batchrun/WorkKinds.h"

#include "engine/SearchWork.h"
#include "engine/SequenceWork.h"
#include "protocol/Json.h"

namespace {

Expected<std::unique_ptr<CWork>> MakeSequenceWork(const WorkDescription& description)
{
    return std::unique_ptr<CWork>(std::make_unique<CSequenceWork>(WorkFilePath(description, kSequenceWork)));
}

Expected<std::unique_ptr<CWork>> MakeSearchWork(const WorkDescription& description)
{
    const auto order = SearchOrderFrom(ParseObject(description.settings).value_or(Json::object()));
    if (!order) return Failure(order.Error());
    return std::unique_ptr<CWork>(std::make_unique<CSearchWork>(*order));
}

constexpr WorkKind kKinds[] = {{kSequenceWork, MakeSequenceWork}, {kSearchWork, MakeSearchWork}};

}  // namespace

std::span<const WorkKind> WorkKinds() { return kKinds; }
