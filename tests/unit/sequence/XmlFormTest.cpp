#include <filesystem>
#include <limits>
#include <optional>

#include <gtest/gtest.h>

#include "sequence/XmlAudit.h"
#include "sequence/XmlForm.h"
#include "support/TemporaryFolder.h"

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

std::string Told(const SequenceFinding& remark)
{
    return remark.code + ' ' + std::to_string(remark.place.line) + ':' + std::to_string(remark.place.column) + ' ' +
           std::to_string(remark.step);
}

std::string Told(const std::string& xml)
{
    std::string all;
    for (const SequenceFinding& remark : AuditWorkflow(xml).remarks) all += (all.empty() ? "" : ", ") + Told(remark);
    return all;
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

TEST(WorkflowXml, WhatIsNoWorkflowIsRefusedWithItsPlace)
{
    const struct {
        std::string xml;
        const char* told;
    } rows[] = {
        {"", "not-xml 0:0 0"},
        {"\xFF\xFE<\0W", "not-xml 0:0 0"},
        {"%PDF-1.7 garbage", "not-xml 1:1 0"},
        {"<Workflow>\n\t<Group label=x/>\n</Workflow>", "not-xml 2:15 0"},
        {"<Workflow>\r\n<Group label='\xE2\x82\xAC\xE2\x82\xAC&what;'/></Workflow>", "not-xml 2:17 0"},
        {"<Workflow>\r<Group>", "not-xml 2:8 0"},
        {"\n\n<?xml version='1.0'?>\n<Workflow>\n<Group></Workflow>", "not-xml 5:8 0"},
        {"<!DOCTYPE Workflow [<!ENTITY a 'b'>]><Workflow/>", "not-xml 1:1 0"},
        {"\xEF\xBB\xBF<?xml version='1.0'?>\n <!DOCTYPE x><Workflow/>", "not-xml 2:2 0"},
        {"<Workflow/> x", "not-xml 1:13 0"},
        {"<Workflow title='a' title='b'><Group><Command name='a'/></Group></Workflow>", "not-xml 1:21 0"},
        {OneCommand("<Items/>").substr(0, 60), "not-xml 1:56 0"},
        {"<workflow><Group><Command name='a'/></Group></workflow>", "wrong-root 1:1 0"},
        {"<?xml version='1.0'?>\n\n  <Workflow/>", "no-commands 3:3 0"},
        {WorkflowXml("<Group label='a'><Instruction label='b'/></Group>"), "no-commands 1:1 0"},
        {WorkflowXml("<GROUP><Command name='a'/></GROUP>"), "no-commands 1:1 0"},
        {WorkflowXml("<Command name='a'/>"), "no-commands 1:1 0"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Told(row.xml), row.told) << row.xml;
        EXPECT_FALSE(AuditWorkflow(row.xml).isWorkflow) << row.xml;
        const auto workflow = ParseWorkflow(row.xml);
        EXPECT_TRUE(!workflow && !workflow.Error().empty()) << row.xml;
    }
}

TEST(WorkflowXml, KeepsCommandsInOrderWithTheirGroupAndSourcesWithTheirKind)
{
    const auto workflow = ParseWorkflow(
        "\xEF\xBB\xBF<?xml version=\"1.0\"?><Workflow title=\"T\" description=\"D\">"
        "<Sources><Other path=\"/o\"/><Folder path=\"/d\"/><Any path=\"/e\"/><File path=\"/f\"/>"
        "<Folder/><File path=\"\"/><Any path=\"/g\"/></Sources>"
        "<Group label=\"first\"><Instruction label=\"read\"/><Command name=\"A \t\"/><Separator/>"
        "<Command name=\" B\" pauseBefore=\"true\" promptUser=\"true\"/></Group>"
        "<Group label=\"none\"/><Group><Command name=\"C\"/></Group>"
        "<Sources><Folder path=\"/h\"/></Sources></Workflow>");
    ASSERT_TRUE(workflow) << workflow.Error();
    EXPECT_EQ(workflow->title + workflow->description, "TD");
    std::string seen;
    for (const auto& group : workflow->groups)
        for (const auto& command : group.commands) seen += "[" + command.handlerName + "|" + command.label + "]";
    for (const auto& source : workflow->sources) seen += (source.isFolder ? "D" : "F") + source.path;
    EXPECT_EQ(seen, "[A|first][ B|first][C|Untitled]F/oD/dD/eF/fF/gD/h");
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

TEST(WorkflowAudit, NamesWhatTheReaderPassesOverWithStepAndPlace)
{
    const struct {
        const char* items;
        const char* told;
    } rows[] = {
        {"<Item name='a' type='text' value=''/>", ""},
        {"<Item name='a' type='Text' value='x'/>", "item-ignored 3:1 1"},
        {"<Item type='text' value='x'/>", "item-ignored 3:1 1"},
        {"<Item name='a' type='integer' value=''/>", "item-ignored 3:1 1"},
        {"<Item name='a' type='integer' value=' 12 '/><Item name='b' type='double' value='+1.5'/>", ""},
        {"<Item name='a' type='integer' value='12x'/>", "value-misread 3:1 1"},
        {"<Item name='a' type='integer' value='4294967296'/>", "value-misread 3:1 1"},
        {"<Item name='a' type='double' value='1,5'/>", "value-misread 3:1 1"},
        {"<Item name='a' type='boolean' value='TRUE'/>", "value-misread 3:1 1"},
        {"<Item name='a' type='null'/><Items name='a'/>", "item-repeated 3:29 1"},
        {"<Items name='n'><Item name='a' type='null'/></Items><Item name='a' type='null'/>", ""},
        {"<Item name='a:b' type='null'/>", "item-nested 3:1 1"},
        {"<Items name='n'>\n <Value/></Items>", "unknown-element 4:2 1"},
    };
    for (const auto& row : rows) {
        const std::string xml = "<Workflow><Group label='g'>\n<Command name='s'><Items>\n" + std::string(row.items) +
                                "</Items></Command></Group></Workflow>";
        EXPECT_EQ(Told(xml), row.told) << row.items;
    }
    EXPECT_EQ(Told("<Workflow><Sources defaultCommand='x'><File/><Disk path='/a'/></Sources>\n<Group label='e'/>\n"
                   "<Group><Instruction/><Separator/><Command name='s'/><Else/></Group>\n<Group><Command/></Group>"
                   "<Other/></Workflow>"),
              "source-dialog 1:11 0, source-without-path 1:39 0, unknown-element 1:46 0, "
              "group-without-commands 2:1 0, instruction 3:8 0, separator 3:22 0, unknown-element 3:53 0, "
              "unknown-element 4:26 0");
}

TEST(WorkflowAudit, FindsTheSameCommandsAsTheReader)
{
    if (!std::filesystem::is_directory(FERRULE_SEQUENCES)) GTEST_SKIP() << "the folder of real sequences is not here";
    int compared = 0;
    for (const auto& entry : std::filesystem::directory_iterator(FERRULE_SEQUENCES)) {
        if (entry.path().extension() != ".sequ") continue;
        const std::string text = FileBytes(entry.path().string());
        const auto workflow = ParseWorkflow(text);
        const WorkflowAudit audit = AuditWorkflow(text);
        EXPECT_EQ(audit.isWorkflow, workflow.Ok()) << entry.path();
        std::size_t commands = 0;
        if (workflow)
            for (const auto& group : workflow->groups) commands += group.commands.size();
        EXPECT_EQ(audit.steps.size(), commands) << entry.path();
        for (const SequenceFinding& remark : audit.remarks)
            EXPECT_TRUE(!workflow || remark.severity == SequenceFinding::Severity::Note)
                << entry.path() << ": " << remark.text;
        ++compared;
    }
    EXPECT_GE(compared, 20);
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
