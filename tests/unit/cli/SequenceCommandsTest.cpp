#include "cli/SequenceCommands.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "cli/CommandError.h"
#include "support/TemporaryFolder.h"

namespace {

nlohmann::json Job(const std::vector<std::string>& words)
{
    auto parsed = cli::ParseArguments(*cli::FindCommand("sequence new"), words);
    EXPECT_TRUE(parsed.arguments) << parsed.problem;
    return cli::NewSequenceJob(*parsed.arguments);
}

}  // namespace

TEST(SequenceNew, TakesPasswordsFromTheFirstLineOfFiles)
{
    const CTemporaryFolder folder;
    const auto job = Job({folder / "p.sequ", "--template", "protect", "--owner-password-file",
                          folder.Write("o", " blanks count \r\nsecond line"), "--user-password-file",
                          folder.Write("u", "K\xC3\xA4se"), "--method", "aes128", "--allow", "print, copy"});
    EXPECT_EQ(job["protect"], nlohmann::json({{"method", "aes128"},
                                              {"ownerPassword", " blanks count "},
                                              {"userPassword", "K\xC3\xA4se"},
                                              {"allow", {"print", "copy"}}}));
    EXPECT_EQ(job["kind"], "sequence-new");
    EXPECT_EQ(job["overwrite"], false);
    EXPECT_FALSE(job["output"].contains("folder"));
    EXPECT_EQ(Job({"p", "--template", "protect", "--allow", "none"})["protect"]["allow"], nlohmann::json::array());
    EXPECT_FALSE(Job({"p", "--template", "protect"})["protect"].contains("allow"));
}

TEST(SequenceNew, RefusesWhatCannotBeMeant)
{
    const CTemporaryFolder folder;
    const std::vector<std::string> rows[] = {
        {"p", "--template", "protect", "--owner-password-file", folder / "missing"},
        {"p", "--template", "protect", "--owner-password-file", folder.Write("empty", "\nx")},
        {"p", "--template", "protect", "--owner-password-file", "-", "--user-password-file", "-"},
        {"p", "--template", "save", "--method", "rc4"},
    };
    for (const auto& row : rows) EXPECT_THROW(Job(row), cli::CCommandError) << row.back();
}

TEST(SequenceShow, PrintsStepsWithNestedParameters)
{
    const auto sequence = nlohmann::json::parse(R"({"path":"/s.sequ","form":"xml","title":"T","description":"",
        "holdsPasswords":true,"sources":[],"input":{"kind":"ask-user","words":"asked for"},
        "output":{"kind":"none","words":"the save step"},"groups":[{"label":"G","steps":[
        {"number":1,"handler":"H","title":"Protect","available":true,"prompts":false,"parameters":[
          {"name":"Password","type":"string","value":"********"},
          {"name":"Inner","type":"cab","value":[{"name":"n","type":"integer","value":3}]},
          {"name":"Flag","type":"boolean","value":false}]},
        {"number":2,"handler":"X\u001b","title":"","available":false,"prompts":true,"parameters":[]}]}]})");
    EXPECT_EQ(cli::SequenceText(sequence), R"(Sequence:    /s.sequ
Title:       T
Form:        XML
Input:       asked for
Output:      the save step
Passwords:   yes, in clear in the file

G
  1. H (Protect)
      Password = "********"
      Inner:
        n = 3
      Flag = false
  2. X\x1b, NOT AVAILABLE, wants to ask
)");
}

TEST(SequenceCheck, FindingsReadLikeThoseOfACompiler)
{
    EXPECT_EQ(cli::FindingText("a.sequ",
                               {{"severity", "error"}, {"code", "xml"}, {"text", "no"}, {"line", 3}, {"column", 7}}),
              "a.sequ:3:7: error: no [xml]\n");
    EXPECT_EQ(
        cli::FindingText("a.sequ", {{"severity", "warning"}, {"code", "prompt"}, {"text", "asks"}, {"step", 2}}),
        "a.sequ: warning: step 2: asks [prompt]\n");
}
