#include "report/ReportJson.h"

#include "base/Text.h"
#include "protocol/Json.h"

namespace {

Json FileJson(const ListedFile& file)
{
    Json object = {{"path", TextFromBytes(file.path)}, {"size", file.size}, {"milliseconds", file.milliseconds}};
    if (file.sizeAfter) object["sizeAfter"] = *file.sizeAfter;
    return object;
}

Json FilesJson(const std::vector<ListedFile>& files)
{
    Json list = Json::array();
    for (const ListedFile& file : files) list.push_back(FileJson(file));
    return list;
}

Json ListJson(const FileList& list) { return {{"count", list.count}, {"files", FilesJson(list.first)}}; }

Json SumsJson(const OutcomeSums& sums)
{
    return {{"files", sums.files}, {"bytes", sums.bytes}, {"milliseconds", sums.milliseconds}};
}

Json ReasonsJson(const CRunSums& sums)
{
    Json list = Json::array();
    for (const ReasonGroup& group : sums.reasons)
        list.push_back({{"outcome", OutcomeWord(group.outcome)},
                        {"reason", group.reason},
                        {"message", group.message},
                        {"count", group.files.count},
                        {"files", FilesJson(group.files.first)}});
    return list;
}

/// The steps that have files, each from its lower end.
Json HistogramJson(const CLogHistogram& histogram)
{
    Json steps = Json::array();
    for (std::size_t step = 0; step < CLogHistogram::kSteps; ++step)
        if (const std::uint64_t count = histogram.Steps()[step]; count != 0)
            steps.push_back(
                {{"from", CLogHistogram::Begin(step)}, {"below", CLogHistogram::Begin(step + 1)}, {"files", count}});
    return {{"files", histogram.Count()},
            {"median", histogram.Quantile(0.5)},
            {"percentile95", histogram.Quantile(0.95)},
            {"steps", std::move(steps)}};
}

Json ProtectionJson(const CRunSums& sums)
{
    Json list = Json::array();
    for (const auto& [pair, files] : sums.protection) {
        Json object = ProtectionChangeJson({pair.first, pair.second});
        object["files"] = files;
        list.push_back(std::move(object));
    }
    return list;
}

Json FinalActionsJson(const CRunSums& sums)
{
    Json list = Json::array();
    for (const auto& [kind, files] : sums.finalActions) {
        Json object = ListJson(files);
        object["act"] = kind.first ? ActWord(*kind.first) : "";
        object["state"] = FinalStateWord(kind.second);
        list.push_back(std::move(object));
    }
    return list;
}

Json SourcesJson(const CRunSums& sums)
{
    Json list = Json::array();
    for (const RecordSource& source : sums.sources)
        list.push_back({{"path", TextFromBytes(source.path)},
                        {"run", source.run},
                        {"files", source.files},
                        {"dryRun", source.trial}});
    return list;
}

}  // namespace

std::string ReportJson(const CRunSums& sums)
{
    Json object = {{"ferrule", "report"}, {"version", 1}, {"complete", !sums.Incomplete()}};
    object["problems"] = TextsOf(sums.problems);
    object["problemCount"] = sums.problemCount;
    object["notes"] = TextsOf(sums.notes);
    object["records"] = SourcesJson(sums);
    object["all"] = SumsJson(sums.all);
    for (std::size_t outcome = 0; outcome < kFileOutcomes; ++outcome)
        object["outcomes"][std::string(OutcomeWord(static_cast<FileOutcome>(outcome)))] =
            SumsJson(sums.outcomes[outcome]);
    object["reasons"] = ReasonsJson(sums);
    object["otherReasons"] = ListJson(sums.otherReasons);
    object["millisecondsPerFile"] = HistogramJson(sums.timePerFile);
    object["millisecondsPerMegabyte"] = HistogramJson(sums.timePerMegabyte);
    object["slowest"] = FilesJson(sums.slowest);
    object["slowestPerMegabyte"] = FilesJson(sums.slowestPerMegabyte);
    object["sizes"] = {{"files", sums.sizes.files}, {"unknown", sums.sizes.unknown}, {"before", sums.sizes.before},
                       {"after", sums.sizes.after}, {"results", sums.sizes.results}, {"smaller", sums.sizes.smaller},
                       {"same", sums.sizes.same},   {"larger", sums.sizes.larger}};
    object["grownMost"] = FilesJson(sums.grownMost);
    object["protection"] = ProtectionJson(sums);
    object["protectionUnknown"] = sums.protectionUnknown;
    object["finalActions"] = FinalActionsJson(sums);
    object["signaturesBroken"] = ListJson(sums.signaturesBroken);
    return LineOf(object);
}
