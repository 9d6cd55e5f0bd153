#include "batchrun/WorkKinds.h"

#include "engine/SearchWork.h"
#include "engine/SequenceWork.h"
#include "protocol/Json.h"
#include "protocol/Metadata.h"
#include "protocol/ProtectOrder.h"
#include "protocol/RenameOrder.h"
#include "tools/MetadataWork.h"
#include "tools/NamingWork.h"
#include "tools/PropertiesWork.h"
#include "tools/ProtectWork.h"
#include "tools/RenameWork.h"

namespace {

Expected<std::unique_ptr<CWork>> MakeSequenceWork(const WorkDescription& description)
{
    return std::unique_ptr<CWork>(std::make_unique<CSequenceWork>(WorkFilePath(description, kSequenceWork)));
}

Expected<std::unique_ptr<CWork>> MakeSearchWork(const WorkDescription& description)
{
    auto order = SearchOrderFrom(ParseObject(description.settings).value_or(Json::object()));
    if (!order) return Failure(order.Error());
    return std::unique_ptr<CWork>(
        std::make_unique<CSearchWork>(std::move(*order), WorkFilePath(description, kSearchRules)));
}

Expected<std::unique_ptr<CWork>> MakeProtectWork(const WorkDescription& description)
{
    auto order = ProtectOrderFrom(ParseObject(description.settings).value_or(Json::object()));
    if (!order) return Failure(order.Error());
    PasswordFiles files{.owner = WorkFilePath(description, kOwnerPasswordFile),
                        .open = WorkFilePath(description, kOpenPasswordFile),
                        .table = WorkFilePath(description, kPasswordTable)};
    return std::unique_ptr<CWork>(std::make_unique<CProtectWork>(std::move(*order), std::move(files)));
}

Expected<std::unique_ptr<CWork>> MakeMetadataWork(const WorkDescription& description)
{
    auto order = MetadataOrderFrom(ParseObject(description.settings).value_or(Json::object()));
    if (!order) return Failure(order.Error());
    return std::unique_ptr<CWork>(std::make_unique<CPropertiesWork>(std::move(*order)));
}

Expected<std::unique_ptr<CWork>> MakeMetadataChangeWork(const WorkDescription& description)
{
    auto order = MetadataChangeFrom(ParseObject(description.settings).value_or(Json::object()));
    if (!order) return Failure(order.Error());
    return std::unique_ptr<CWork>(std::make_unique<CMetadataWork>(std::move(*order)));
}

Expected<std::unique_ptr<CWork>> MakeRenameWork(const WorkDescription& description)
{
    const auto order = RenameOrderFrom(ParseObject(description.settings).value_or(Json::object()));
    if (!order) return Failure(order.Error());
    return std::unique_ptr<CWork>(std::make_unique<CRenameWork>(*order, WorkFilePath(description, kRenameList),
                                                                WorkFilePath(description, kNamingSettings)));
}

Expected<std::unique_ptr<CWork>> MakeNamingWork(const WorkDescription& description)
{
    return std::unique_ptr<CWork>(
        std::make_unique<CNamingWork>(NamingOrderFrom(ParseObject(description.settings).value_or(Json::object())),
                                      WorkFilePath(description, kNamingSettings)));
}

constexpr WorkKind kKinds[] = {{kSequenceWork, MakeSequenceWork}, {kSearchWork, MakeSearchWork},
                               {kProtectWork, MakeProtectWork},   {kMetadataWork, MakeMetadataWork},
                               {kNamingWork, MakeNamingWork},     {kMetadataChangeWork, MakeMetadataChangeWork},
                               {kRenameWork, MakeRenameWork}};

}  // namespace

std::span<const WorkKind> WorkKinds() { return kKinds; }
