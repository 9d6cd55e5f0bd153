#include "engine/WorkflowWriter.h"

#include "engine/ItemValues.h"
#include "engine/WorkflowXml.h"

#include <gtest/gtest.h>
#include <limits>

namespace {

Workflow OneStep(WorkflowItems parameters)
{
    Workflow workflow{"t", "d", {}, {{"g", {}}}};
    workflow.groups[0].commands.push_back({"Step", "g", std::move(parameters), "", ""});
    return workflow;
}

/// The value of the only item after it was written and read.
WorkflowValue AfterWriting(const WorkflowValue& value)
{
    const auto xml = WriteWorkflow(OneStep({{{"k", value}}}));
    if (!xml) throw std::runtime_error(xml.Error());
    const auto read = ParseWorkflow(*xml);
    if (!read) throw std::runtime_error(read.Error());
    return read->groups.at(0).commands.at(0).parameters.entries.at(0).second;
}

}  // namespace

TEST(WorkflowWriter, KeepsEveryValue)
{
    const std::string text = "a\r\nb\rc\nd\te \"q\" 'p' <&> \xE2\x82\xAC ";
    EXPECT_EQ(std::get<WorkflowText>(AfterWriting(WorkflowText{text})).utf8, text);
    EXPECT_EQ(std::get<WorkflowString>(AfterWriting(WorkflowString{text})).bytes, text);
    EXPECT_EQ(std::get<WorkflowAtom>(AfterWriting(WorkflowAtom{""})).name, "");
    EXPECT_TRUE(std::holds_alternative<WorkflowNull>(AfterWriting(WorkflowNull{})));
    for (const bool value : {true, false}) EXPECT_EQ(std::get<bool>(AfterWriting(value)), value);
    for (const std::int32_t value : {0, -1, std::numeric_limits<std::int32_t>::min(), 2147483647})
        EXPECT_EQ(std::get<std::int32_t>(AfterWriting(value)), value);
    for (const double value : {0.0, -0.5, 36.0, 0.1234567890123, 1e-300, -1.7976931348623157e308, 1.0 / 3})
        EXPECT_EQ(std::get<double>(AfterWriting(value)), value);
    for (const std::string& bytes : {std::string(), std::string("\0", 1), std::string("\xFF\x00\x10", 3),
                                     std::string("abcd"), std::string(1000, '\xAA')})
        EXPECT_EQ(std::get<WorkflowBinary>(AfterWriting(WorkflowBinary{bytes})).bytes, bytes);
    EXPECT_TRUE(std::get<WorkflowItems>(AfterWriting(WorkflowItems{})).entries.empty());
}

TEST(WorkflowWriter, RefusesWhatWouldNotComeBackAndNamesIt)
{
    const WorkflowValue rows[] = {WorkflowString{"\xFF"},
                                  WorkflowText{"a\x01"},
                                  WorkflowText{std::string("a\0b", 3)},
                                  WorkflowText{std::string(kMaxItemValueBytes + 1, 'x')},
                                  std::numeric_limits<double>::infinity(),
                                  std::numeric_limits<double>::quiet_NaN()};
    for (const WorkflowValue& value : rows) {
        const auto xml = WriteWorkflow(OneStep({{{"n", WorkflowItems{{{"Odd", value}}}}}}));
        ASSERT_FALSE(xml) << value.index();
        EXPECT_TRUE(xml.Error().starts_with("In step 1 the item \"Odd\" ")) << xml.Error();
    }
    Workflow titled = OneStep({});
    titled.title = "\xC3";
    EXPECT_FALSE(WriteWorkflow(titled));
}

TEST(WorkflowWriter, PutsTheItemsOfALevelIntoTheOrderOfACab)
{
    const auto xml = WriteWorkflow(OneStep({{{"b", true},
                                             {"10", true},
                                             {"a", WorkflowItems{}},
                                             {"9", true},
                                             {"B", true},
                                             {"1a", true},
                                             {"007", true}}}));
    ASSERT_TRUE(xml);
    const auto read = ParseWorkflow(*xml);
    ASSERT_TRUE(read) << read.Error();
    std::string order;
    for (const auto& [name, value] : read->groups[0].commands[0].parameters.entries) order += name + ' ';
    EXPECT_EQ(order, "007 9 10 1a B a b ");
}
