#include "common/Log.h"

#include <gtest/gtest.h>

#include <climits>
#include <regex>
#include <string>
#include <vector>

namespace {

class CLinesLog final : public CLogWriter {
public:
    bool Line(std::string_view text) override
    {
        lines.emplace_back(text);
        return true;
    }
    std::vector<std::string> lines;
};

}  // namespace

TEST(Log, EntriesHaveTheirFixedForm)
{
    CLinesLog log;
    EXPECT_TRUE(log.NameValue("Sequence file", "", 0));
    log.NameValue("Destination", "/a b", 1);
    log.NameNumber("Error code", LLONG_MIN, 2);
    log.NameNumber("Total physical memory (MB) ", 5, -1);
    log.Separator();
    EXPECT_EQ(log.lines, (std::vector<std::string>{
                             "Sequence file : ", "\tDestination : /a b", "\t\tError code : -9223372036854775808",
                             "Total physical memory (MB)  : 5",
                             "----------------------------------------------------------------------------"}));
    log.NameTime("Started", 1);
    EXPECT_TRUE(
        std::regex_match(log.lines.back(), std::regex("\tStarted : \\d\\d/\\d\\d/\\d{4} , \\d\\d:\\d\\d:\\d\\d")))
        << log.lines.back();
}

TEST(Log, AFileNameCannotForgeALine)
{
    CLinesLog log;
    log.NameValue("a\nb", std::string("x\r\n7: File is deleted : y\0z", 27), 0);
    EXPECT_EQ(log.lines, std::vector<std::string>{"a b : x  7: File is deleted : y z"});
    EXPECT_FALSE(CNullLog().NameValue("a", "b", 0));
}
