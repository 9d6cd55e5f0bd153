#include "engine/WorkflowXml.h"

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <optional>

namespace {

std::string WorkflowText(const std::string& inner) { return "<Workflow title=\"t\">" + inner + "</Workflow>"; }

std::string OneCommand(const std::string& items)
{
    return WorkflowText("<Group label=\"g\"><Command name=\"c\">" + items + "</Command></Group>");
}

const WorkflowValue* Find(const WorkflowItems& items, const std::string& name)
{
    for (const auto& [key, value] : items.entries)
        if (key == name) return &value;
    return nullptr;
}

/// The text of an item whose value attribute is written as given; nothing when the document is refused.
std::optional<std::string> TextOf(const std::string& writtenValue)
{
    const auto workflow =
        ParseWorkflow(OneCommand("<Items><Item name=\"x\" type=\"text\" value=\"" + writtenValue + "\"/></Items>"));
    if (!workflow) return std::nullopt;
    return std::get<::WorkflowText>(*Find(workflow->groups[0].commands[0].parameters, "x")).utf8;
}

TEST(WorkflowXml, ReferencesAndBlanksInValuesSurvive)
{
    const struct {
        const char* written;
        const char* text;
    } rows[] = {
        {"a&#xD;b", "a\rb"},
        {"a&#xD;&#xA;b", "a\r\nb"},
        {"a&#13;&#10;b", "a\r\nb"},
        {"&#x9;", "\t"},
        {"  two  blanks  ", "  two  blanks  "},
        {"&#x1F600;", "\xF0\x9F\x98\x80"},
        {"&#128512;", "\xF0\x9F\x98\x80"},
        {"&#x10FFFF;", "\xF4\x8F\xBF\xBF"},
        {"&#x20AC;&#x7FF;&#x800;", "\xE2\x82\xAC\xDF\xBF\xE0\xA0\x80"},
        {"&#xe9;&#xE9;", "\xC3\xA9\xC3\xA9"},
        {"&lt;&gt;&amp;&quot;&apos;", "<>&\"'"},
        {"&amp;#xD;", "&#xD;"},
        {"\xE9\x80\x82\xE5\x90\x88", "\xE9\x80\x82\xE5\x90\x88"},
        {"a\nb", "a\nb"},
        {"", ""},
    };
    for (const auto& row : rows) EXPECT_EQ(TextOf(row.written), row.text) << row.written;
}

TEST(WorkflowXml, RefusesWhatIsNoWorkflow)
{
    const struct {
        const char* what;
        std::string xml;
    } rows[] = {
        {"empty", ""},
        {"garbage", "%PDF-1.7 garbage"},
        {"root in another case", "<workflow><Group><Command name=\"a\"/></Group></workflow>"},
        {"no group", WorkflowText("")},
        {"group without command", WorkflowText("<Group label=\"a\"><Instruction label=\"b\"/></Group>")},
        {"group in capitals", WorkflowText("<GROUP><Command name=\"a\"/></GROUP>")},
        {"command outside of a group", WorkflowText("<Command name=\"a\"/>")},
        {"mismatched tags", "<Workflow><Group><Command name=\"a\"/></Workflow></Group>"},
        {"truncated", OneCommand("<Items/>").substr(0, 60)},
        {"attribute twice", "<Workflow title=\"a\" title=\"b\"><Group><Command name=\"a\"/></Group></Workflow>"},
    };
    for (const auto& row : rows) {
        const auto workflow = ParseWorkflow(row.xml);
        ASSERT_FALSE(workflow) << row.what;
        EXPECT_FALSE(workflow.Error().empty()) << row.what;
    }
}

TEST(WorkflowXml, KeepsCommandsInOrderWithTheirGroup)
{
    const auto workflow = ParseWorkflow(
        "\xEF\xBB\xBF<?xml version=\"1.0\"?><Workflow title=\"T\" description=\"D\">"
        "<Group label=\"first\"><Instruction label=\"read\"/><Command name=\"A \t\"/><Separator/>"
        "<Command name=\" B\" pauseBefore=\"true\" promptUser=\"true\"/></Group>"
        "<Group label=\"none\"/><Group><Command name=\"C\"/></Group></Workflow>");
    ASSERT_TRUE(workflow) << workflow.Error();
    EXPECT_EQ(workflow->title, "T");
    EXPECT_EQ(workflow->description, "D");
    std::string seen;
    for (const auto& group : workflow->groups)
        for (const auto& command : group.commands) seen += "[" + command.handlerName + "|" + command.label + "]";
    EXPECT_EQ(seen, "[A|first][ B|first][C|Untitled]");
}

TEST(WorkflowXml, SourcesOfUnknownNameKeepTheKindOfTheOneBefore)
{
    const auto workflow = ParseWorkflow(
        WorkflowText("<Sources><Other path=\"/o\"/><Folder path=\"/d\"/><Any path=\"/e\"/><File path=\"/f\"/>"
                     "<Folder/><File path=\"\"/><Any path=\"/g\"/></Sources>"
                     "<Group><Command name=\"c\"/></Group><Sources><Folder path=\"/h\"/></Sources>"));
    ASSERT_TRUE(workflow) << workflow.Error();
    std::string seen;
    for (const auto& source : workflow->sources) seen += (source.isFolder ? "D" : "F") + source.path;
    EXPECT_EQ(seen, "F/oD/dD/eF/fF/gD/h");
}

TEST(WorkflowXml, ItemsNestAndTheLastOfANameWins)
{
    const auto workflow = ParseWorkflow(OneCommand(
        "<Items><Item name=\"n\" type=\"integer\" value=\"1\"/><Items name=\"HEADER\"/>"
        "<Items name=\"in\"><Item name=\"n\" type=\"null\"/></Items><Item type=\"text\" value=\"no name\"/>"
        "<Item name=\"n\" type=\"string\" value=\"last\"/><Item name=\"u\" type=\"odd\" value=\"1\"/></Items>"));
    ASSERT_TRUE(workflow) << workflow.Error();
    const WorkflowItems& items = workflow->groups[0].commands[0].parameters;
    EXPECT_EQ(items.entries.size(), 3u);
    EXPECT_EQ(std::get<WorkflowString>(*Find(items, "n")).bytes, "last");
    EXPECT_TRUE(std::get<WorkflowItems>(*Find(items, "HEADER")).entries.empty());
    EXPECT_TRUE(std::holds_alternative<WorkflowNull>(*Find(std::get<WorkflowItems>(*Find(items, "in")), "n")));
}

TEST(WorkflowXml, ManyItemsOfOneLevelAreReadInLinearTime)
{
    std::string items = "<Items>";
    for (int i = 0; i < 100'000; ++i) items += "<Item name=\"k" + std::to_string(i) + "\" type=\"null\"/>";
    const auto workflow = ParseWorkflow(OneCommand(items + "</Items>"));
    ASSERT_TRUE(workflow) << workflow.Error();
    EXPECT_EQ(workflow->groups[0].commands[0].parameters.entries.size(), 100'000u);
}

TEST(WorkflowXml, UnreadableFilesSayWhy)
{
    const CTemporaryFolder folder;
    for (const std::string& path : {folder / "missing", folder.MakeFolder("a folder")}) {
        const auto workflow = ReadWorkflowFile(path);
        ASSERT_FALSE(workflow) << path;
        EXPECT_FALSE(workflow.Error().empty()) << path;
    }
    EXPECT_TRUE(ReadWorkflowFile(folder.Write("good.sequ", OneCommand(""))));
}

}  // namespace
