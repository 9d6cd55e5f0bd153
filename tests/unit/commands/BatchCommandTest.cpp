// The plug-in's steps as the host's command layer drives them.
#include "base/Text.h"
#include "hostapi/HostConstants.h"
#include "hostcalls/Commands.h"
#include "hostcalls/Conversions.h"
#include "hostcalls/Documents.h"
#include "hostcalls/HandlerRegistration.h"
#include "hostcalls/HostFrame.h"
#include "openhost/commands/Commands.h"
#include "openhost/core/Atoms.h"
#include "support/PlugInHost.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#ifndef _WIN32
#include <sys/stat.h>
#endif

namespace {

constexpr char kProtect[] = "QLNX_FerrulePasswordProtectCommand";
constexpr char kExternal[] = "QLNX_FerruleProcessWithExternalAppCommand";
constexpr char kPurge[] = "QLNX_FerrulePurgeIndexCommand";
constexpr char kRebuild[] = "QLNX_FerruleRebuildIndexCommand";

CHostCommand Command(const char* handler)
{
    auto command = CHostCommand::Create(handler);
    if (!command) throw std::runtime_error(std::string("no handler ") + handler);
    return std::move(*command);
}

CCab Parameters(const char* key, const std::string& value)
{
    CCab cab;
    cab.PutString(key, value);
    return cab;
}

AVCommandStatus WorkOn(CHostCommand& command, const CHostDocument& document)
{
    command.Reset();
    command.SetInputs(CommandInputs(document.Get(), "a", "pdf").View());
    return command.Work();
}

std::vector<std::string> Description(const CCab& props)
{
    std::vector<std::string> lines;
    const CCabView description = props.Cab("ParamsDesc");
    for (const std::string& key : description.Keys()) lines.push_back(description.Text(key.c_str()).value_or("?"));
    return lines;
}

}  // namespace

TEST(BatchCommand, EachStepIsOfferedAndAnswersAllProperties)
{
    const CPlugInHost host;
    ASSERT_TRUE(host.Started());
    const struct {
        const char* handler;
        const char* title;
        std::vector<std::string> description;
    } rows[] = {{kProtect,
                 "Password Protect Documents",
                 {"No document opening password specified", "No document access password specified"}},
                {kExternal, "Start External Application", {"Application To Start: "}},
                {kPurge, "Purge Catalog Index", {"Index file to purge: "}},
                {kRebuild, "Rebuild Catalog Index", {"Index file to rebuild: "}}};
    for (const auto& row : rows) {
        const auto atom = openhost::AtomFromText(row.handler);
        EXPECT_NE(openhost::Part<openhost::CCommands>().FindGlobal(atom), nullptr) << row.handler;
        const CCab props = Command(row.handler).Props({});
        EXPECT_EQ(props.Size(), 8) << row.handler;
        for (const char* key : {"Title", "GenericTitle", "ScreenName"}) {
            EXPECT_EQ(props.Text(key), row.title) << row.handler << ", " << key;
        }
        EXPECT_EQ(props.Text("GroupTitle"), "Ferrule Plug-in");
        for (const char* key : {"CanBatch", "CanDescribeParams", "CanShowDialog"}) {
            EXPECT_TRUE(props.Bool(key, false)) << row.handler << ", " << key;
        }
        EXPECT_EQ(Description(props), row.description);
    }
}

TEST(BatchCommand, APropertyQueryIsAnsweredForTheKeysAskedFor)
{
    const CPlugInHost host;
    const CCab props = Command(kPurge).Props({"ScreenName", "CanBatch", "Unknown"});
    EXPECT_EQ(props.Size(), 3);
    EXPECT_EQ(props.Text("ScreenName"), "Purge Catalog Index");
    EXPECT_TRUE(props.Bool("CanBatch", false));
    EXPECT_EQ(props.Type("Unknown"), kASValueNull);
}

TEST(BatchCommand, ParametersLiveWithEachCommand)
{
    const CPlugInHost host;
    CHostCommand first = Command(kExternal);
    CHostCommand second = Command(kExternal);
    EXPECT_EQ(first.Params().String("File"), "");
    EXPECT_EQ(first.SetParams(Parameters("File", "/one").View()), kAVCommandReady);
    CCab wide;
    wide.PutText("File", "/two");
    second.SetParams(wide.View());
    EXPECT_EQ(Description(first.Props({"ParamsDesc"})), std::vector<std::string>{"Application To Start: /one"});
    EXPECT_EQ(Description(second.Props({"ParamsDesc"})), std::vector<std::string>{"Application To Start: /two"});
    EXPECT_EQ(first.Params().Size(), 1) << "parameters are replaced, not merged";
    first.SetParams(CCab().View());
    EXPECT_EQ(first.Params().Size(), 2) << "no parameters at all mean the defaults";
}

TEST(BatchCommand, ParametersAreHandedOutWithTheirDescription)
{
    const CPlugInHost host;
    CHostCommand command = Command(kProtect);
    EXPECT_TRUE(command.Params().Bool("CanExtractPages", false)) << "the defaults of a fresh record";
    EXPECT_EQ(command.Params().Size(), 27);

    command.SetParams(Parameters("PermPassword", "p").View());
    EXPECT_EQ(command.Params().Keys(), std::vector<std::string>{"PermPassword"});
    const CCabEditor description = CommandCab(command.Get(), "ParamsDesc", false);
    ASSERT_TRUE(description);
    EXPECT_EQ(description.Text("1"), "No document opening password specified");
    EXPECT_EQ(description.Text("2"), "No document access password specified");

    command.SetParams(Parameters("Password", "p").View());
    EXPECT_EQ(Description(command.Props({})),
              (std::vector<std::string>{"Require a password to open the document",
                                        "Restrict editing or printing of the document"}));
}

TEST(BatchCommand, WithoutWindowsTheDialogCountsAsDismissed)
{
    const CPlugInHost host;
    for (const char* handler : {kProtect, kExternal, kPurge, kRebuild}) {
        CHostCommand command = Command(handler);
        command.SetParams(Parameters("File", "/f").View());
        EXPECT_EQ(command.ShowDialog(), kAVCommandCanceled) << handler;
        EXPECT_EQ(command.Params().String("File"), "/f") << handler;

        CHostCommand bare = Command(handler);
        openhost::Part<openhost::CCommands>().PutCab(bare.Get(), "Params", nullptr);
        EXPECT_EQ(bare.ShowDialog(), kAVCommandInError) << handler;
    }
}

TEST(BatchCommand, WorkWithoutADocumentIsAnErrorThatSaysSo)
{
    const CPlugInHost host;
    CHostCommand command = Command(kProtect);
    EXPECT_EQ(command.Work(), kAVCommandInError);
    EXPECT_EQ(command.LastError(), "The command has no document to work on.");
    EXPECT_EQ(command.Reset(), kAVCommandReady);
}

TEST(BatchCommand, TwoProtectStepsInOneSequenceBothAct)
{
    const CPlugInHost host;
    CHostCommand first = Command(kProtect);
    CHostCommand second = Command(kProtect);
    const struct {
        CHostCommand& command;
        const char* password;
    } steps[] = {{first, "one"}, {second, "two"}};
    for (const auto& step : steps) {
        CCab params = Parameters("Password", step.password);
        params.PutBool("PasswordProtect", true);
        params.PutBool("CanExtractPages", true);
        step.command.SetParams(params.View());
    }
    for (const auto& step : steps) {
        const std::string path = host.Folder().Write(std::string(step.password) + ".pdf", kPdf);
        CHostDocument document = CHostDocument::Open(path);
        EXPECT_EQ(WorkOn(step.command, document), kAVCommandDone) << step.command.LastError();
        SaveDocument(document.Get(), PDSaveFull, path);
        document.Close();
        EXPECT_NE(FileBytes(path).find("/Encrypt"), std::string::npos);
        EXPECT_THROW((void)CHostDocument::Open(path), CHostException) << "no password is known to the host";
    }
}

TEST(BatchCommand, ProtectLeavesADocumentAloneWhenNothingIsAskedFor)
{
    const CPlugInHost host;
    CHostCommand command = Command(kProtect);
    const std::string path = host.Folder().Write("a.pdf", kPdf);
    CHostDocument document = CHostDocument::Open(path);
    const int before = DocumentFlags(document.Get());
    EXPECT_EQ(WorkOn(command, document), kAVCommandDone);
    EXPECT_EQ(DocumentFlags(document.Get()), before);
    EXPECT_EQ(before & PDDocNeedsSave, 0);
}

#ifndef _WIN32  // there the shell splits the argument: tests/windows shows it
TEST(BatchCommand, TheApplicationGetsTheDocumentAsOneArgument)
{
    const CPlugInHost host;
    const std::string pipe = host.Folder() / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const std::string program =
        host.Folder().Write("my app", "#!/bin/sh\nprintf '%s|%s' \"$#\" \"$1\" > '" + pipe + "'\n");
    ASSERT_EQ(chmod(program.c_str(), 0700), 0);
    const std::string path = host.Folder().Write("two words.pdf", kPdf);
    const CHostDocument document = CHostDocument::Open(path);

    CHostCommand command = Command(kExternal);
    CCab params = Parameters("File", program);
    params.PutString("CommandLine", "has no effect");
    command.SetParams(params.View());
    EXPECT_EQ(WorkOn(command, document), kAVCommandDone);
    EXPECT_EQ(FileBytes(pipe), "1|" + path);  // waits for the program
    EXPECT_NE(host.LogText().find("\t\t\tExternal application started : " + program + "\r\n"), std::string::npos);

    host.Folder().Write("no program", "text");
    command.Reset();
    command.SetParams(Parameters("File", host.Folder() / "no program").View());
    EXPECT_EQ(WorkOn(command, document), kAVCommandDone);
    EXPECT_NE(host.LogText().find("\t\t\tCould not start external application : " + (host.Folder() / "no program")),
              std::string::npos);
}
#endif

TEST(BatchCommand, AFileWithoutAFolderIsNotLookedUpInTheSearchPath)
{
    const CPlugInHost host;
    const CHostDocument document = CHostDocument::Open(host.Folder().Write("a.pdf", kPdf));
    host.Folder().Write("true", "no program, but named like one");
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(host.Folder().Path());
    CHostCommand command = Command(kExternal);
    command.SetParams(Parameters("File", "true").View());
    EXPECT_EQ(WorkOn(command, document), kAVCommandDone);
    std::filesystem::current_path(before);
    EXPECT_NE(host.LogText().find("Could not start external application : true"), std::string::npos);
}

TEST(BatchCommand, NoApplicationIsStartedForADocumentWithoutAFile)
{
    const CPlugInHost host;
    const std::vector<ToPdfConverter> converters = EnumerateToPdf();
    const auto jpeg = std::find_if(converters.begin(), converters.end(), [](const ToPdfConverter& converter) {
        return std::count(converter.extensions.begin(), converter.extensions.end(), "jpg") > 0;
    });
    ASSERT_NE(jpeg, converters.end());
    const ConversionResult converted = ConvertToPdf(jpeg->handler, FERRULE_SAMPLE_JPEG);
    ASSERT_EQ(FilePath(converted.document.Get()).value_or(""), "");
    CHostCommand command = Command(kExternal);
    command.SetParams(Parameters("File", "/bin/true").View());
    EXPECT_EQ(WorkOn(command, converted.document), kAVCommandDone);
    EXPECT_NE(host.LogText().find("\t\t\tCould not start external application : /bin/true\r\n"), std::string::npos);
}

TEST(BatchCommand, StepsWithoutTheirFileAreSkippedSilently)
{
    const CPlugInHost host;
    const std::string path = host.Folder().Write("a.pdf", kPdf);
    const CHostDocument document = CHostDocument::Open(path);
    const std::string before = host.LogText();
    for (const char* handler : {kExternal, kPurge, kRebuild}) {
        for (const std::string& file : {std::string(), host.Folder() / "missing"}) {
            CHostCommand command = Command(handler);
            command.SetParams(Parameters("File", file).View());
            EXPECT_EQ(WorkOn(command, document), kAVCommandDone) << handler;
        }
    }
    CHostCommand command = Command(kPurge);  // a host without a catalog
    command.SetParams(Parameters("File", path).View());
    EXPECT_EQ(WorkOn(command, document), kAVCommandDone);
    EXPECT_EQ(host.LogText(), before);
}
