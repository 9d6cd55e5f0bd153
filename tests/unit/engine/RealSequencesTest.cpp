#include "engine/WorkflowXml.h"

#include <gtest/gtest.h>
#include <filesystem>

namespace {

namespace fs = std::filesystem;

int CountCommands(const Workflow& workflow)
{
    int count = 0;
    for (const auto& group : workflow.groups) count += static_cast<int>(group.commands.size());
    return count;
}

bool HasCarriageReturn(const WorkflowItems& items)
{
    for (const auto& [name, value] : items.entries) {
        const auto* text = std::get_if<WorkflowText>(&value);
        if (text && text->utf8.find('\r') != std::string::npos) return true;
        const auto* nested = std::get_if<WorkflowItems>(&value);
        if (nested && HasCarriageReturn(*nested)) return true;
    }
    return false;
}

TEST(RealSequences, AllOfThemLoadExceptTheImpostor)
{
    if (!fs::is_directory(FERRULE_SEQUENCES)) GTEST_SKIP() << "the folder of real sequences is not here";
    int loaded = 0;
    bool anyScript = false;
    for (const auto& entry : fs::directory_iterator(FERRULE_SEQUENCES)) {
        if (entry.path().extension() != ".sequ") continue;
        const auto workflow = ReadWorkflowFile(entry.path().string());
        if (entry.path().filename() == "not-a-workflow-root.sequ") {
            EXPECT_FALSE(workflow) << entry.path();
            continue;
        }
        ASSERT_TRUE(workflow) << entry.path() << ": " << workflow.Error();
        EXPECT_GE(CountCommands(*workflow), 1) << entry.path();
        EXPECT_FALSE(workflow->title.empty()) << entry.path();
        for (const auto& group : workflow->groups)
            for (const auto& command : group.commands) anyScript |= HasCarriageReturn(command.parameters);
        ++loaded;
    }
    EXPECT_GE(loaded, 19);
    EXPECT_TRUE(anyScript) << "the carriage returns of the scripts are gone";
}

}  // namespace
