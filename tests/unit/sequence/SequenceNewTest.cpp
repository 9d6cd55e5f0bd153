#include <filesystem>

#include "SequenceFixture.h"
#include "base/Names.h"
#include "sequence/XmlForm.h"

namespace {

using SequenceNew = CSequenceJobs;

bool OthersMayRead(const std::string& path)
{
    using std::filesystem::perms;
    return (std::filesystem::status(path).permissions() & (perms::group_all | perms::others_all)) != perms::none;
}

}  // namespace

TEST_F(SequenceNew, EveryTemplatePassesItsOwnCheck)
{
    const Json protects[] = {{{"userPassword", "open \xC3\xA4"}},
                             {{"ownerPassword", "own"}, {"allow", {"print"}}, {"method", "aes128"}},
                             {{"userPassword", "a"}, {"ownerPassword", "b"}, {"allow", Json::array()}}};
    std::vector<Json> jobs = {{{"template", "save"}}, {{"template", "text"}}};
    for (const Json& protect : protects) jobs.push_back({{"template", "protect"}, {"protect", protect}});
    for (Json& job : jobs) {
        job["path"] = Folder() / "new.sequ";
        job["overwrite"] = true;
        const Json made = Answer(NewSequence(job));
        ASSERT_FALSE(made.contains("failed")) << made;
        EXPECT_EQ(made["holdsPasswords"], job["template"] == "protect") << job;
        if (kHasModes && job["template"] == "protect") {
            EXPECT_FALSE(OthersMayRead(job["path"])) << job;
        }
        EXPECT_EQ(Check(job["path"], {{"inputs", Json::array({"/in"})}, {"output", "/out"}}),
                  job["template"] == "protect" ? "note holds-passwords, note metadata-readable 1" : "")
            << job;
    }
}

TEST_F(SequenceNew, WritesWhatWasAskedFor)
{
    const std::string out = kSeparator == '\\' ? "C:\\out" : "/C/out";
    const std::string path = Folder() / "new.sequ";
    const Json job = {
        {"path", path},
        {"title", "My <title>"},
        {"description", "two\nlines"},
        {"force", true},
        {"steps",
         {{{"handler", "A:Step"},
           {"label", "First"},
           {"parameters",
            Json::parse(R"({"flag":true,"number":-3,"real":1.5,"text":"a\r\nb","none":null,"deep":{"x":{"y":1}},
                            "atom":{"type":"atom","value":"DOS"},"string":{"type":"string","value":"s"},
                            "bytes":{"type":"binary","value":"AAE="},"whole":{"type":"double","value":2},
                            "cab":{"type":"cab","value":{"type":"x","value":"y"}}})")}}}},
        {"output", {{"folder", out}, {"suffix", "-x"}, {"overwrite", true}}}};
    ASSERT_FALSE(Answer(NewSequence(job)).contains("failed")) << Answer(NewSequence(job));
    const auto workflow = ParseWorkflow(FileBytes(path));
    ASSERT_TRUE(workflow);
    EXPECT_EQ(workflow->title, "My <title>");
    EXPECT_EQ(workflow->description, "two\nlines");
    ASSERT_EQ(workflow->groups.size(), 2u);
    EXPECT_EQ(workflow->groups[0].label, "First");
    EXPECT_EQ(
        Answer(ShowSequence({{"path", path}}))["groups"][0]["steps"][0]["parameters"],
        Json::parse(R"([{"name":"atom","type":"atom","value":"DOS"},{"name":"bytes","type":"binary","value":"AAE="},
        {"name":"cab","type":"cab","value":[{"name":"type","type":"text","value":"x"},{"name":"value","type":"text","value":"y"}]},
        {"name":"deep","type":"cab","value":[{"name":"x","type":"cab","value":[{"name":"y","type":"integer","value":1}]}]},
        {"name":"flag","type":"boolean","value":true},{"name":"none","type":"null","value":null},
        {"name":"number","type":"integer","value":-3},{"name":"real","type":"double","value":1.5},
        {"name":"string","type":"string","value":"s"},{"name":"text","type":"text","value":"a\r\nb"},
        {"name":"whole","type":"double","value":2.0}])"));
    const std::string save = FileBytes(path).substr(FileBytes(path).find("WorkflowPlaybackSaveFiles"));
    for (const char* item :
         {"\"DocSaveDestType\" type=\"string\" value=\"WorkflowPlaybackSaveInAFolder\"",
          "\"PreselectedFolderPath\" type=\"text\" value=\"/C/out/\"",
          "\"InsertAfterBaseName\" type=\"text\" value=\"-x\"", "\"AddToBaseName\" type=\"boolean\" value=\"true\"",
          "\"DontOverwrite\" type=\"boolean\" value=\"false\""})
        EXPECT_NE(save.find(item), std::string::npos) << item << " in " << save;
}

TEST_F(SequenceNew, RefusesWithoutTouchingAnything)
{
    const std::string there = Folder().Write("there.sequ", "mine");
    const Json save = {{"template", "save"}};
    const struct {
        const char* name;
        Json job;
        const char* reason;
    } rows[] = {
        {"there.sequ", save, "exists already"},
        {"no/folder.sequ", save, "cannot be written"},
        {"a.sequ", {{"template", "other"}}, "There is no template"},
        {"a.sequ", Json::object(), "at least one of the \"steps\""},
        {"a.sequ", {{"template", "protect"}}, "Give a password"},
        {"a.sequ", {{"template", "protect"}, {"protect", {{"userPassword", "  "}}}}, "Give a password"},
        {"a.sequ",
         {{"template", "protect"}, {"protect", {{"userPassword", "Geheim1"}, {"method", "des"}}}},
         "\"des\""},
        {"a.sequ",
         {{"template", "protect"}, {"protect", {{"userPassword", "Geheim1"}, {"allow", {"fly"}}}}},
         "\"fly\""},
        {"a.sequ", {{"template", "protect"}, {"protect", {{"userPassword", "Geheim1\x01"}}}}, "\"Password\""},
        {"a.sequ", {{"steps", {{{"handler", "No:Such"}}}}}, "This host does not have the step No:Such"},
        {"a.sequ", {{"steps", {{{"parameters", {{"a", 1}}}}}}}, "no \"handler\""},
        {"a.sequ", {{"steps", {{{"handler", "DocSecurity"}, {"parameters", {{"a", {1}}}}}}}}, "a list is no value"},
        {"a.sequ", {{"steps", {{{"handler", "DocSecurity"}, {"parameters", {{"a", 4294967296}}}}}}}, "32 bits"},
        {"a.sequ",
         {{"steps", {{{"handler", "DocSecurity"}, {"parameters", {{"a", {{"type", "integer"}, {"value", "1"}}}}}}}}},
         "there is no type \"integer\", or"},
        {"a.sequ", {{"steps", {{{"handler", "DocSecurity"}, {"parameters", {{"a:b", 1}}}}}}}, "a:b"},
    };
    for (const auto& row : rows) {
        Json job = row.job;
        job["path"] = Folder() / row.name;
        const Json answer = Answer(NewSequence(job));
        ASSERT_TRUE(answer.contains("failed")) << job;
        const std::string reason = answer["failed"];
        EXPECT_NE(reason.find(row.reason), std::string::npos) << reason;
        EXPECT_NE(reason.find(Folder() / row.name), std::string::npos) << reason << " does not name the file";
        EXPECT_EQ(reason.find("Geheim1"), std::string::npos) << reason;
        EXPECT_EQ(Folder().EntryCount(), 1u) << job;
    }
    EXPECT_EQ(FileBytes(there), "mine");
}
