#include <filesystem>

#include "SequenceFixture.h"
#include "hostcalls/Cab.h"
#include "hostcalls/HostPath.h"
#include "sequence/HostForm.h"
#include "sequence/Sequence.h"
#include "sequence/XmlForm.h"

namespace {

namespace fs = std::filesystem;

class SequenceConvert : public CSequenceJobs {
protected:
    Json Convert(const std::string& path, const std::string& to, const std::string& target,
                 Json more = Json::object())
    {
        more.update({{"path", path}, {"to", to}, {"target", target}});
        return Answer(ConvertSequence(more));
    }

    /// A sequence in the host's own form with one step; `change` adds to it.
    std::string HostSequence(const std::function<void(CCab&)>& change)
    {
        CCab sequence;
        sequence.PutInt("Input:FileVariation", 2);
        sequence.PutInt("Output:FileVariation", 3);
        sequence.PutAtom("Commands:0:HandlerName", Atom("DocSecurity"));
        sequence.PutText("Commands:0:Title", "Secure");
        sequence.PutInt("Commands:0:UIPolicy", 3);
        sequence.PutCab("Commands:0:Config", CCab());
        sequence.PutInt("Commands:0:Params:number", 1);
        change(sequence);
        const std::string path = Folder() / "host.sequ";
        EXPECT_TRUE(WriteCabFile(path, sequence.View()));
        return path;
    }
};

}  // namespace

TEST_F(SequenceConvert, EveryRealSequenceComesBackEqual)
{
    if (!fs::is_directory(FERRULE_SEQUENCES)) GTEST_SKIP() << "the folder of real sequences is not here";
    int compared = 0;
    for (const auto& entry : fs::directory_iterator(FERRULE_SEQUENCES)) {
        const std::string path = entry.path().string(), name = entry.path().filename().string();
        if (entry.path().extension() != ".sequ" || name == "not-a-workflow-root.sequ") continue;
        const std::string host = Folder() / (name + ".host"), xml = Folder() / (name + ".xml");
        const Json there = Convert(path, "host", host);
        ASSERT_FALSE(there.contains("failed")) << there;
        const auto original = ReadWorkflowFile(path);
        const Json back =
            Convert(host, "xml", xml, {{"title", original->title}, {"description", original->description}});
        ASSERT_FALSE(back.contains("failed")) << back;
        const auto again = ReadWorkflowFile(xml);
        ASSERT_TRUE(again) << again.Error();
        EXPECT_EQ(CabDifferences(SequenceFromWorkflow(*original).Whole(), SequenceFromWorkflow(*again).Whole()),
                  std::vector<std::string>())
            << name;
        // Whatever the texts differ in was named.
        const bool lossless = there["losses"].size() <= (original->description.empty() ? 1u : 2u);
        EXPECT_EQ(FileBytes(xml) == FileBytes(path), lossless) << name << there["losses"];
        ++compared;
    }
    EXPECT_GE(compared, 19);
}

TEST_F(SequenceConvert, NamesWhatXmlSaysAndTheHostsFormCannot)
{
    const std::string path = Sequence(
        "<Sources defaultCommand='x'/><Group label='g'><Command name='DocSecurity' promptUser='true'/></Group>"
        "<Group label='g'><Command name='DocSecurity' pauseBefore='true'/><Instruction/></Group>");
    EXPECT_EQ(Codes(Convert(path, "host", Folder() / "h.sequ"), "losses"),
              "note source-dialog, note instruction, warning title-lost, note groups-merged, warning prompts-lost 1, "
              "warning pauses-lost 2");
}

TEST_F(SequenceConvert, NamesWhatTheHostsFormSaysAndXmlCannot)
{
    const struct {
        std::function<void(CCab&)> change;
        const char* codes;  // of all losses; with one error among them nothing is written unless that is allowed
    } rows[] = {
        {[](CCab&) {}, ""},
        {[](CCab& s) { s.PutInt("Commands:0:UIPolicy", 0); }, "warning windows-lost"},
        {[](CCab& s) { s.PutBool("Commands:0:Config:ParamsDescOpen", true); }, "warning windows-lost"},
        {[](CCab& s) { s.PutString("Commands:0:HandlerName", "DocSecurity"); }, "warning handler-name"},
        {[](CCab& s) { s.Remove("Commands:0:Title"); }, "note title-made"},
        {[](CCab& s) { s.PutText("Commands:0:Params:Title", "kept"); }, ""},
        {[](CCab& s) { s.PutString("Input:SourceFileOptions:Formats:0", "x"); }, "error value-lost"},
        {[](CCab& s) { s.PutInt("Other:Maker", 1); }, "error value-lost"},
        {[](CCab& s) { s.PutInt("Output:DontOverwrite", 1); }, "error value-lost"},
        {[](CCab& s) {
             s.PutInt("Input:FileVariation", 0);
             s.PutCab("Input:PreselectedFilesPaths:0", PathCab("/in/a.pdf"));
         },
         ""},
        {[](CCab& s) {
             s.PutInt("Input:FileVariation", 1);
             s.PutText("Input:PreselectedFolderPath:DIPath", "/in/");
         },
         "warning source-changed"},
        {[](CCab& s) { s.PutInt("Output:FileVariation", 0); }, "warning save-in-place, note output-became-step"},
        {[](CCab& s) {
             s.PutInt("Output:FileVariation", 0);
             s.PutBool("Output:DontOverwrite", false);
         },
         "note output-became-step"},
        {[](CCab& s) { s.PutInt("Output:FileVariation", 1); }, "warning asks-for-output, note output-became-step"},
        {[](CCab& s) { s.PutInt("Output:FileVariation", 2); }, "error output-folder, note output-became-step"},
        {[](CCab& s) { s.PutInt("Output:FileVariation", 7); }, "error output-lost, error value-lost"},
    };
    int number = 0;
    for (const auto& row : rows) {
        SCOPED_TRACE(++number);
        const std::string path = HostSequence(row.change), target = Folder() / ("x" + std::to_string(number));
        const bool hasError = std::string(row.codes).find("error") != std::string::npos;
        if (hasError) {
            EXPECT_TRUE(Convert(path, "xml", target).contains("failed"));
            EXPECT_FALSE(fs::exists(target));
        }
        const Json answer = Convert(path, "xml", target, {{"allowLoss", hasError}});
        EXPECT_EQ(Codes(answer, "losses"), row.codes);
        EXPECT_TRUE(ReadWorkflowFile(target)) << "what was written is no sequence";
    }
}

TEST_F(SequenceConvert, RefusesWhatNoTextCanHold)
{
    const std::string path = HostSequence([](CCab& s) { s.PutString("Commands:0:Params:name", "\xFF"); });
    const Json answer = Convert(path, "xml", Folder() / "x.sequ", {{"allowLoss", true}});
    EXPECT_EQ(answer["failed"], "The sequence " + path +
                                    " cannot be converted: In step 1 the item \"name\" is no text "
                                    "that XML can hold.");
}

TEST_F(SequenceConvert, OutputSettingsBecomeAStepThatDoesTheSame)
{
    const std::string path = HostSequence([](CCab& s) {
        s.PutInt("Output:FileVariation", 2);
        s.PutText("Output:PreselectedFolderPath:DIPath", "/out");
        s.PutBool("Output:AddToBaseName", true);
        s.PutString("Output:InsertAfterBaseName", "-x");
    });
    const std::string target = Folder() / "x.sequ";
    ASSERT_FALSE(Convert(path, "xml", target, {{"allowLoss", true}}).contains("failed"));
    const Json shown = Answer(ShowSequence({{"path", target}}));
    const Json& save = shown["groups"][1]["steps"][0];
    EXPECT_EQ(save["handler"], "WorkflowPlaybackSaveFiles");
    EXPECT_EQ(save["parameters"], Json::parse(R"([{"name":"AddToBaseName","type":"boolean","value":true},
                              {"name":"DocSaveDestType","type":"string","value":"WorkflowPlaybackSaveInAFolder"},
                              {"name":"FileVariation","type":"integer","value":2},
                              {"name":"InsertAfterBaseName","type":"string","value":"-x"},
                              {"name":"PreselectedFolderPath","type":"text","value":"/out/"}])"));
}

TEST_F(SequenceConvert, KeepsPasswordsForTheOwnerAlone)
{
    const std::string path = Steps(Protect(Item("Password", "text", "Geheim1"))), host = Folder() / "h.sequ";
    Folder().Write("h.sequ", "old, open to all");
    fs::permissions(host, fs::perms(0644));
    EXPECT_TRUE(Convert(path, "host", host).contains("failed")) << "replaced without being asked";
    EXPECT_EQ(FileBytes(host), "old, open to all");
    EXPECT_EQ(Convert(path, "host", host, {{"overwrite", true}})["holdsPasswords"], true);
    if (kHasModes) {
        EXPECT_EQ(fs::status(host).permissions(), fs::perms(0600));
    }
    EXPECT_EQ(Folder().EntryCount(), 2u) << "a temporary file was left";
    const auto cab = ReadCabFile(host);
    ASSERT_TRUE(cab) << cab.Error();
    EXPECT_EQ(cab->Text("Commands:0:Params:Password"), "Geheim1");
}
