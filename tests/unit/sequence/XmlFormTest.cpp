#include "sequence/XmlForm.h"

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <limits>
#include <optional>

namespace {

std::string WorkflowXml(const std::string& inner) { return "<Workflow title=\"t\">" + inner + "</Workflow>"; }

std::string OneCommand(const std::string& items)
{
    return WorkflowXml("<Group label=\"g\"><Command name=\"c\">" + items + "</Command></Group>");
}

/// The text of an item whose value attribute is written as given; nothing when the document is refused.
std::optional<std::string> TextOf(const std::string& writtenValue)
{
    const auto workflow =
        ParseWorkflow(OneCommand("<Items><Item name=\"x\" type=\"text\" value=\"" + writtenValue + "\"/></Items>"));
    if (!workflow) return std::nullopt;
    return workflow->groups[0].commands[0].parameters.Wide("x");
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
        {"no group", WorkflowXml("")},
        {"group without command", WorkflowXml("<Group label=\"a\"><Instruction label=\"b\"/></Group>")},
        {"group in capitals", WorkflowXml("<GROUP><Command name=\"a\"/></GROUP>")},
        {"command outside of a group", WorkflowXml("<Command name=\"a\"/>")},
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
        WorkflowXml("<Sources><Other path=\"/o\"/><Folder path=\"/d\"/><Any path=\"/e\"/><File path=\"/f\"/>"
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
    const CSettingsRecord& items = workflow->groups[0].commands[0].parameters;
    EXPECT_EQ(items.Entries().size(), 3u);
    EXPECT_EQ(items.String("n"), "last");
    ASSERT_TRUE(items.Record("HEADER") && items.Record("in"));
    EXPECT_TRUE(items.Record("HEADER")->Empty());
    EXPECT_EQ(*items.Record("in")->Find("n"), CSettingsRecord::Value(NullValue()));
}

TEST(WorkflowXml, ManyItemsOfOneLevelAreReadInLinearTime)
{
    std::string items = "<Items>";
    for (int i = 0; i < 100'000; ++i) items += "<Item name=\"k" + std::to_string(i) + "\" type=\"null\"/>";
    const auto workflow = ParseWorkflow(OneCommand(items + "</Items>"));
    ASSERT_TRUE(workflow) << workflow.Error();
    EXPECT_EQ(workflow->groups[0].commands[0].parameters.Entries().size(), 100'000u);
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

Workflow OneStep(CSettingsRecord parameters)
{
    Workflow workflow{"t", "d", {}, {{"g", {}}}};
    workflow.groups[0].commands.push_back({"Step", "g", std::move(parameters), "", ""});
    return workflow;
}

TEST(WorkflowWriter, KeepsEveryValue)
{
    const std::string text = "a\r\nb\rc\nd\te \"q\" 'p' <&> \xE2\x82\xAC ";
    std::vector<CSettingsRecord::Value> values = {WideText{text}, text, AtomValue{""}, NullValue{}, true, false};
    for (const std::int32_t value : {0, -1, std::numeric_limits<std::int32_t>::min(), 2147483647})
        values.push_back(value);
    for (const double value : {0.0, -0.5, 36.0, 0.1234567890123, 1e-300, -1.7976931348623157e308, 1.0 / 3})
        values.push_back(value);
    for (const std::string& bytes : {std::string(), std::string("\0", 1), std::string("\xFF\x00\x10", 3),
                                     std::string("abcd"), std::string(1000, '\xAA')})
        values.push_back(BinaryValue{bytes});
    CSettingsRecord record;
    record.PutRecord("nested", {});
    for (const auto& value : values) record.PutValue(std::to_string(record.Entries().size()), value);
    const auto xml = WriteWorkflow(OneStep(record));
    ASSERT_TRUE(xml) << xml.Error();
    const auto read = ParseWorkflow(*xml);
    ASSERT_TRUE(read) << read.Error();
    EXPECT_EQ(read->groups.at(0).commands.at(0).parameters, record);
}

TEST(WorkflowWriter, RefusesWhatWouldNotComeBackAndNamesIt)
{
    const CSettingsRecord::Value rows[] = {std::string("\xFF"),
                                           WideText{"a\x01"},
                                           WideText{std::string("a\0b", 3)},
                                           WideText{std::string(kMaxItemValueBytes + 1, 'x')},
                                           std::numeric_limits<double>::infinity(),
                                           std::numeric_limits<double>::quiet_NaN()};
    for (const CSettingsRecord::Value& value : rows) {
        CSettingsRecord nested, record;
        nested.PutValue("Odd", value);
        record.PutRecord("n", nested);
        const auto xml = WriteWorkflow(OneStep(record));
        ASSERT_FALSE(xml) << value.index();
        EXPECT_TRUE(xml.Error().starts_with("In step 1 the item \"Odd\" ")) << xml.Error();
    }
    Workflow titled = OneStep({});
    titled.title = "\xC3";
    EXPECT_FALSE(WriteWorkflow(titled));
}

TEST(WorkflowWriter, PutsTheItemsOfALevelIntoTheOrderOfACab)
{
    CSettingsRecord record;
    for (const char* key : {"b", "10", "a", "9", "B", "1a", "007"}) record.PutBool(key, true);
    const auto xml = WriteWorkflow(OneStep(record));
    ASSERT_TRUE(xml);
    const auto read = ParseWorkflow(*xml);
    ASSERT_TRUE(read) << read.Error();
    std::string order;
    for (const auto& entry : read->groups[0].commands[0].parameters.Entries()) order += entry.key + ' ';
    EXPECT_EQ(order, "007 9 10 1a B a b ");
}

}  // namespace
