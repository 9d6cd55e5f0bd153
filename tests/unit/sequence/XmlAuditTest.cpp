#include "sequence/XmlAudit.h"

#include "sequence/XmlForm.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <filesystem>

namespace {

namespace fs = std::filesystem;

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

}  // namespace

TEST(WorkflowAudit, SaysInWhichLineAndColumnATextStopsBeingXml)
{
    const struct {
        const char* xml;
        const char* told;
    } rows[] = {
        {"", "not-xml 0:0 0"},
        {"\xFF\xFE<\0W", "not-xml 0:0 0"},
        {"<Workflow>\n\t<Group label=x/>\n</Workflow>", "not-xml 2:15 0"},
        {"<Workflow>\r\n<Group label='\xE2\x82\xAC\xE2\x82\xAC&what;'/></Workflow>", "not-xml 2:17 0"},
        {"<Workflow>\r<Group>", "not-xml 2:8 0"},
        {"\n\n<?xml version='1.0'?>\n<Workflow>\n<Group></Workflow>", "not-xml 5:8 0"},
        {"<!DOCTYPE Workflow [<!ENTITY a 'b'>]><Workflow/>", "not-xml 1:1 0"},
        {"\xEF\xBB\xBF<?xml version='1.0'?>\n <!DOCTYPE x><Workflow/>", "not-xml 2:2 0"},
        {"<Workflow/> x", "not-xml 1:13 0"},
        {"<workflow><Group><Command name='a'/></Group></workflow>", "wrong-root 1:1 0"},
        {"<?xml version='1.0'?>\n\n  <Workflow/>", "no-commands 3:3 0"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Told(row.xml), row.told) << row.xml;
        EXPECT_FALSE(AuditWorkflow(row.xml).isWorkflow) << row.xml;
    }
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
    if (!fs::is_directory(FERRULE_SEQUENCES)) GTEST_SKIP() << "the folder of real sequences is not here";
    int compared = 0;
    for (const auto& entry : fs::directory_iterator(FERRULE_SEQUENCES)) {
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
