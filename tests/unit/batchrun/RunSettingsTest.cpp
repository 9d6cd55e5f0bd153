#include <map>

#include <gtest/gtest.h>

#include "batchrun/RunSettings.h"
#include "support/MemoryLog.h"

namespace {

using Variables = std::map<std::string, std::string>;

EnvironmentReader Environment(Variables variables)
{
    return [variables = std::move(variables)](const char* name) {
        const auto found = variables.find(name);
        return found == variables.end() ? std::string() : found->second;
    };
}

RunSettings Read(const char* name, const std::string& value)
{
    CMemoryLog log;
    return ReadRunSettings(Environment({{name, value}}), log);
}

TEST(RunSettings, FinalActionCodesOutsideTheListDoNothing)
{
    const struct {
        const char* value;
        int code;
    } rows[] = {{"", 0},    {"0", 0},           {"8", 8},          {"9", 0},
                {"-1", 0},  {"-9999999999", 0}, {"3x", 3},         {" 6", 6},
                {"abc", 0}, {"+7", 7},          {"4294967297", 0}, {"0x3", 0},
                {"08", 8},  {"2.9", 2},         {"\t5", 5},        {"18446744073709551617", 0}};
    for (const auto& row : rows)
        EXPECT_EQ(static_cast<int>(Read("FERRULEFINAL", row.value).finalAction), row.code) << row.value;
}

TEST(RunSettings, YesIsReadInTwoDifferentWays)
{
    const struct {
        const char* value;
        bool noSubfolders, inSteps;
    } rows[] = {{"", false, false},    {"yes", true, true},  {"YES", true, true},     {" yes", false, true},
                {"yes ", false, true}, {"no", false, false}, {"yesyes", false, false}};
    for (const auto& row : rows) {
        EXPECT_EQ(Read("FERRULENOSUBFOLDERS", row.value).execution.noSubfolders, row.noSubfolders)
            << '"' << row.value << '"';
        EXPECT_EQ(Read("EXECUTEINSTEPS", row.value).executeInSteps, row.inSteps) << '"' << row.value << '"';
    }
}

TEST(RunSettings, PathsLoseOnePairOfQuotes)
{
    const struct {
        const char* value;
        const char* path;
    } rows[] = {
        {"/a/b.sequ", "/a/b.sequ"}, {" \"/a b/c\" ", "/a b/c"},       {"\"", "\""}, {"\"\"", ""}, {"\" /x \"", "/x"},
        {"/a\"b", "/a\"b"},         {"\"\"/twice\"\"", "\"/twice\""}, {"  ", ""}};
    for (const auto& row : rows) {
        EXPECT_EQ(WorkFilePath(Read("FERRULESEQU", row.value).work, kSequenceWork), row.path) << row.value;
        EXPECT_EQ(Read("FERRULEALTPATH", row.value).execution.alternativeInputPath, row.path) << row.value;
        EXPECT_EQ(Read("FERRULEALTOUTPUTPATH", row.value).execution.alternativeOutputPath, row.path) << row.value;
    }
    EXPECT_EQ(Read("FERRULEDEST", " \"/kept as it is\" ").destination, " \"/kept as it is\" ");
}

TEST(RunSettings, ExtensionsAreSplitAndTrimmed)
{
    const struct {
        const char* value;
        std::optional<std::vector<std::string>> extensions;  // nothing: what the sequence accepts
    } rows[] = {{"pdf;tif,jpg", {{"pdf", "tif", "jpg"}}},
                {" pdf , .tif ;; . png,", {{"pdf", "tif", "png"}}},
                {"", std::nullopt},
                {" \t ", std::nullopt},
                {" ; , .", std::vector<std::string>()},
                {"tar.gz", {{"tar.gz"}}}};
    for (const auto& row : rows)
        EXPECT_EQ(Read("FERRULEFILEEXT", row.value).execution.allowedExtensions, row.extensions) << row.value;
}

TEST(RunSettings, LogsAllNineAsTheyCame)
{
    CMemoryLog log;
    (void)ReadRunSettings(Environment({{"FERRULESEQU", "\"/a b.sequ\""},
                                       {"FERRULEFINAL", "9"},
                                       {"FERRULEDEST", "/d "},
                                       {"FERRULEALTPATH", "\"/in\""},
                                       {"EXECUTEINSTEPS", "Yes"},
                                       {"FERRULENOPROGRESS", " YES"},
                                       {"FERRULEALTOUTPUTPATH", " \"/out\" "},
                                       {"FERRULEFILEEXT", " pdf;tif "},
                                       {"FERRULENOSUBFOLDERS", "yes "}}),
                          log);
    EXPECT_EQ(log.lines, (std::vector<std::string>{"\tSequence file : \"/a b.sequ\"", "\tFinal action : 9",
                                                   "\tDestination : /d ", "\tAlternative path : \"/in\"",
                                                   "\tExecute in steps : Yes", "\tProgress dialog :  YES",
                                                   "\tAlternative output path : \"/out\"",
                                                   "Allowed file extentions : pdf;tif", "No subfolders : yes "}));
}

/// Notes the order of what the start-up reader asks for.
class CNotedActions final : public CStartupActions {
public:
    void HideHostWindow() override { noted += "hide "; }
    void KeepHostWindowOffScreen() override { noted += "keep "; }
    void ScheduleRunDriver(int periodTicks) override { noted += "run" + std::to_string(periodTicks); }
    std::string noted;
};

TEST(StartupReader, SchedulesARunWhenThereIsASequence)
{
    const struct {
        const char *sequence, *noProgress, *noted, *logged;
    } rows[] = {
        {"", "yes", "", "No sequence file specified"},
        {"/a.sequ", "", "keep run60", "Registering sequence file : /a.sequ"},
        {"/a.sequ", "YES", "hide keep run60", "Registering sequence file : /a.sequ"},
        {"/a.sequ", " yes", "keep run60", "Registering sequence file : /a.sequ"},
        {" \"/a.sequ\"", "no", "keep run60", "Registering sequence file :  \"/a.sequ\""},
        {" ", "", "keep run60", "Registering sequence file :  "},
    };
    for (const auto& row : rows) {
        CMemoryLog log;
        CNotedActions actions;
        const StartupDecision decision = ReadStartup(SequenceWork(row.sequence), row.noProgress, log, actions);
        EXPECT_EQ(actions.noted, row.noted) << row.sequence << '|' << row.noProgress;
        EXPECT_EQ(log.lines, std::vector<std::string>{row.logged});
        EXPECT_EQ(decision.runScheduled, *row.sequence != '\0');
        EXPECT_EQ(decision.hostWindowHidden, std::string(row.noted).starts_with("hide"));
    }
}

}  // namespace
