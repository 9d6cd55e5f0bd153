#include "protocol/PlanReport.h"

#include "protocol/Json.h"

Json PlanReportJson(const PlanReport& plan)
{
    return {{"oneWorker", !plan.oneWorkerReason.empty()},
            {"oneWorkerReason", plan.oneWorkerReason},
            {"outputsPerFile", plan.outputsPerFile},
            {"tooYoung", plan.tooYoung},
            {"total", plan.total},
            {"unreadableFolders", plan.unreadableFolders},
            {"warnings", plan.warnings}};
}

PlanReport PlanReportFrom(const Json& object)
{
    return {.total = CountAt(object, "total"),
            .oneWorkerReason = TextAt(object, "oneWorkerReason"),
            .tooYoung = CountAt(object, "tooYoung"),
            .unreadableFolders = CountAt(object, "unreadableFolders"),
            .outputsPerFile = object.contains("outputsPerFile") ? CountAt(object, "outputsPerFile") : 1,
            .warnings = TextsAt(object, "warnings")};
}
