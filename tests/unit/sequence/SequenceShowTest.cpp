#include <algorithm>

#include "SequenceFixture.h"
#include "base/Names.h"
#include "hostcalls/Cab.h"

namespace {

using SequenceShow = CSequenceJobs;

/// Names and values of parameters, those of nested cabs in braces.
std::string Values(const Json& parameters)
{
    std::string values;
    for (const Json& one : parameters) {
        const Json& value = one["value"];
        values += one["name"].get<std::string>() + "=" +
                  (value.is_array()    ? "{ " + Values(value) + "} "
                   : value.is_string() ? value.get<std::string>() + " "
                                       : value.dump() + " ");
    }
    return values;
}

/// How the system writes a device-independent path of drive C.
std::string Native(std::string path)
{
    if (kSeparator == '/') return path;
    path.replace(0, 2, "C:");
    std::replace(path.begin(), path.end(), '/', '\\');
    return path;
}

}  // namespace

TEST_F(SequenceShow, TellsTheStepsAndTheirParametersInOrder)
{
    const std::string path =
        Sequence("<Sources><Folder path='/in'/></Sources><Group label='one'>" +
                 Step("T:None", Item("b", "integer", "-7") + Item("10", "double", "0.5") + Item("9", "atom", "A") +
                                    Item("a", "binary", "AAE=") + Item("n", "null", "") + Item("e", "text", "") +
                                    "<Items name='c'>" + Item("s", "string", "&#xD;&lt;") + "</Items>") +
                 "</Group><Group label='empty'/><Group label='two'><Command name='WorkflowPlaybackSaveFiles' "
                 "promptUser='true'/></Group>");
    const Json report = Answer(ShowSequence({{"path", path}}));
    EXPECT_EQ(report["form"], "xml");
    EXPECT_EQ(report["title"], "T");
    EXPECT_EQ(report["input"]["kind"], "folder");
    EXPECT_EQ(report["sources"], Json::parse(R"([{"path":"/in","kind":"folder"}])"));
    EXPECT_EQ(report["output"], Json::parse(R"({"kind":"none","words":"saves by step 2"})"));
    EXPECT_EQ(report["holdsPasswords"], false);
    ASSERT_EQ(report["groups"].size(), 2u);
    EXPECT_EQ(report["groups"][0]["label"], "one");
    const Json& first = report["groups"][0]["steps"][0];
    EXPECT_EQ(first["available"], false);
    EXPECT_EQ(first["parameters"],
              Json::parse(R"([{"name":"9","type":"atom","value":"A"},{"name":"10","type":"double","value":0.5},
                              {"name":"a","type":"binary","value":"AAE="},{"name":"b","type":"integer","value":-7},
                              {"name":"c","type":"cab","value":[{"name":"s","type":"string","value":"\r<"}]},
                              {"name":"e","type":"text","value":""},{"name":"n","type":"null","value":null}])"));
    const Json& second = report["groups"][1]["steps"][0];
    EXPECT_EQ(second["number"], 2);
    EXPECT_EQ(second["title"], "Save");
    EXPECT_EQ(second["prompts"], true);
    EXPECT_EQ(second["line"], 1);
}

TEST_F(SequenceShow, ShowsTheHostsFormLikeXml)
{
    CCab sequence;
    sequence.PutInt("Input:FileVariation", 0);
    sequence.PutText("Input:PreselectedFilesPaths:0:DIText", "/C/in/a.pdf");
    sequence.PutInt("Output:FileVariation", 2);
    sequence.PutText("Output:PreselectedFolderPath", "/C/out/");
    for (const char* step : {"Commands:0:", "Commands:1:"}) {
        sequence.PutAtom((std::string(step) + "HandlerName").c_str(), Atom("DocSecurity"));
        sequence.PutText((std::string(step) + "Title").c_str(), "Secure");
    }
    sequence.PutPointer("Commands:1:Params:p", "void", &sequence);
    const std::string path = Folder() / "h.sequ";
    ASSERT_TRUE(WriteCabFile(path, sequence.View()));
    const Json report = Answer(ShowSequence({{"path", path}}));
    EXPECT_EQ(report["form"], "host");
    EXPECT_EQ(report["sources"], (Json{{{"path", Native("/C/in/a.pdf")}, {"kind", "file"}}}));
    EXPECT_EQ(report["output"]["words"], "saves in the folder " + Native("/C/out"));
    ASSERT_EQ(report["groups"].size(), 1u) << "neighbours of one title belong together";
    ASSERT_EQ(report["groups"][0]["steps"].size(), 2u);
    EXPECT_EQ(report["groups"][0]["steps"][1]["title"], "Security");
    EXPECT_FALSE(report["groups"][0]["steps"][1].contains("line"));
}

TEST_F(SequenceShow, NeverTellsAPassword)
{
    const auto items = [](const std::string& name, const std::string& inner) {
        return "<Items name='" + name + "'>" + inner + "</Items>";
    };
    const struct {
        std::string step;
        const char* shown;  // of each parameter
    } rows[] = {
        {Protect(Item("Password", "text", "Hunter2a") + Item("PermPassword", "string", "Hunter2b") +
                 Item("PasswordField", "string", "column 3") +
                 items("FileMapping", Item("NumItems", "integer", "2") + Item("0", "string", "a.pdf") +
                                          Item("1", "string", "Hunter2c")) +
                 // A parameter of the wrong type is no password; what is shown of it tells what is wrong.
                 Item("EncryptionMethod", "text", "not a number")),
         "EncryptionMethod=not a number FileMapping={ 0=a.pdf 1=******** NumItems=2 } Password=******** "
         "PasswordField=column 3 PermPassword=******** "},
        {Step("DocSecurity", Item("CryptHandler", "atom", "Standard") +
                                 items("SecuritySettings", Item("userPW", "text", "Hunter2e") +
                                                               Item("ownerPW", "binary", "SHVudGVyMmY=") +
                                                               Item("perms", "integer", "-4"))),
         "CryptHandler=Standard SecuritySettings={ ownerPW=******** perms=-4 userPW=******** } "},
        {Step("Other:Step", items("x", Item("openPassword", "atom", "Hunter2g")) + Item("Passwd", "text", "")),
         "Passwd= x={ openPassword=******** } "},
        {Protect(Item("Pasword", "text", "Hunter2h") + Item("PASSWORD", "binary", "SHVudGVyMmk=") +
                 Item("PermPassword", "integer", "4711") + Item("LeftText", "text", "Hunter2j\xC3\xA4") +
                 Item("Key", "Hunter2k", "string") + items("CanPrint", Item("File", "atom", "Hunter2l")) +
                 items("FileMapping", Item("1", "string", "a.pdf") + Item("2", "string", "Hunter2m"))),
         "CanPrint={ File=******** } FileMapping={ 1=******** 2=******** } LeftText=******** PASSWORD=******** "
         "Pasword=******** PermPassword=******** "},
        {Step("qlnx_FerruleProtectCommand", Item("File", "text", "Hunter2n") + Item("CanPrint", "boolean", "true")),
         "CanPrint=true File=******** "},
    };
    std::string all;
    for (const auto& row : rows) all += row.step;
    const std::string path = Steps(all);
    const Json shown = Answer(ShowSequence({{"path", path}}));
    EXPECT_EQ(shown["holdsPasswords"], true);
    for (std::size_t step = 0; step < std::size(rows); ++step)
        EXPECT_EQ(Values(shown["groups"][0]["steps"][step]["parameters"]), rows[step].shown);
    for (const Json& answer :
         {shown, Answer(CheckSequence({{"path", path}})),
          Answer(ConvertSequence({{"path", path}, {"to", "host"}, {"target", Folder() / "h.sequ"}}))}) {
        EXPECT_EQ(answer.dump().find("Hunter2"), std::string::npos) << answer;
        EXPECT_EQ(answer.dump().find("4711"), std::string::npos) << answer;
    }
}

TEST_F(SequenceShow, RefusesWithAPlaceWhatIsNoSequence)
{
    const std::string path = Folder().Write("b.sequ", "<Workflow>\n<Group>");
    EXPECT_EQ(Answer(ShowSequence({{"path", path}}))["failed"],
              "The sequence " + path +
                  " cannot be used (line 2, column 8): The XML document is cut off: an element is "
                  "not closed.");
}
