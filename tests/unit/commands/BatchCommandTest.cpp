// The plug-in's steps as the host's command layer drives them.
#include <algorithm>
#include <fstream>

#include <gtest/gtest.h>

#include "commands/CatalogCommands.h"
#include "hostapi/HostConstants.h"
#include "hostcalls/Commands.h"
#include "hostcalls/Conversions.h"
#include "hostcalls/Documents.h"
#include "hostcalls/HostFrame.h"
#include "openhost/commands/Commands.h"
#include "openhost/core/Atoms.h"
#include "support/PlugInHost.h"
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

/// One that starts a program, or works on an index.
CHostCommand CommandWithFile(const char* handler, const std::string& file)
{
    CHostCommand command = Command(handler);
    command.SetParams(Parameters("File", file).View());
    return command;
}

AVCommandStatus WorkOn(CHostCommand&& command, const CHostDocument& document)
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

class BatchCommand : public testing::Test {
protected:
    bool Logged(const std::string& line) const { return m_host.LogText().find(line) != std::string::npos; }

    const CPlugInHost m_host;
};

}  // namespace

TEST_F(BatchCommand, EachStepIsOfferedAndAnswersWhatItIsAskedFor)
{
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
        SCOPED_TRACE(row.handler);
        EXPECT_NE(openhost::Part<openhost::CCommands>().FindGlobal(openhost::AtomFromText(row.handler)), nullptr);
        const CCab props = Command(row.handler).Props({});
        EXPECT_EQ(props.Size(), 8);
        for (const char* key : {"Title", "GenericTitle", "ScreenName"}) EXPECT_EQ(props.Text(key), row.title) << key;
        EXPECT_EQ(props.Text("GroupTitle"), "Ferrule Plug-in");
        for (const char* key : {"CanBatch", "CanDescribeParams", "CanShowDialog"}) {
            EXPECT_TRUE(props.Bool(key, false)) << key;
        }
        EXPECT_EQ(Description(props), row.description);
    }
    const CCab some = Command(kPurge).Props({"ScreenName", "CanBatch", "Unknown"});
    EXPECT_EQ(some.Size(), 3);
    EXPECT_EQ(some.Text("ScreenName"), "Purge Catalog Index");
    EXPECT_EQ(some.Type("Unknown"), kASValueNull);
}

TEST_F(BatchCommand, ParametersLiveWithEachCommandAndAreHandedOutWithTheirDescription)
{
    CHostCommand first = CommandWithFile(kExternal, "/one"), second = Command(kExternal);
    EXPECT_EQ(second.Params().String("File"), "");
    CCab wide;
    wide.PutText("File", "/two");
    EXPECT_EQ(second.SetParams(wide.View()), kAVCommandReady);
    EXPECT_EQ(Description(first.Props({"ParamsDesc"})), std::vector<std::string>{"Application To Start: /one"});
    EXPECT_EQ(Description(second.Props({"ParamsDesc"})), std::vector<std::string>{"Application To Start: /two"});
    EXPECT_EQ(first.Params().Size(), 1) << "parameters are replaced, not merged";
    first.SetParams(CCab().View());
    EXPECT_EQ(first.Params().Size(), 2) << "no parameters at all mean the defaults";

    CHostCommand protect = Command(kProtect);
    EXPECT_TRUE(protect.Params().Bool("CanExtractPages", false)) << "the defaults of a fresh record";
    EXPECT_EQ(protect.Params().Size(), 27);
    protect.SetParams(Parameters("PermPassword", "p").View());
    EXPECT_EQ(protect.Params().Keys(), std::vector<std::string>{"PermPassword"});
    const CCabEditor description = CommandCab(protect.Get(), "ParamsDesc", false);
    ASSERT_TRUE(description);
    EXPECT_EQ(description.Text("1"), "No document opening password specified");
    EXPECT_EQ(description.Text("2"), "No document access password specified");
    protect.SetParams(Parameters("Password", "p").View());
    EXPECT_EQ(Description(protect.Props({})),
              (std::vector<std::string>{"Require a password to open the document",
                                        "Restrict editing or printing of the document"}));
}

TEST_F(BatchCommand, WithoutWindowsTheDialogCountsAsDismissedAndWithoutADocumentNoWorkIsDone)
{
    for (const char* handler : {kProtect, kExternal, kPurge, kRebuild}) {
        CHostCommand command = CommandWithFile(handler, "/f");
        EXPECT_EQ(command.ShowDialog(), kAVCommandCanceled) << handler;
        EXPECT_EQ(command.Params().String("File"), "/f") << handler;

        CHostCommand bare = Command(handler);
        openhost::Part<openhost::CCommands>().PutCab(bare.Get(), "Params", nullptr);
        EXPECT_EQ(bare.ShowDialog(), kAVCommandInError) << handler;
    }
    CHostCommand command = Command(kProtect);
    EXPECT_EQ(command.Work(), kAVCommandInError);
    EXPECT_EQ(command.LastError(), "The command has no document to work on.");
    EXPECT_EQ(command.Reset(), kAVCommandReady);
}

TEST_F(BatchCommand, EachProtectStepActsWithItsOwnPasswordAndOneWithoutLeavesTheDocumentAlone)
{
    CHostCommand commands[] = {Command(kProtect), Command(kProtect), Command(kProtect)};
    const char* const passwords[] = {"one", "two", ""};
    for (int i = 0; i < 2; ++i) {
        CCab params = Parameters("Password", passwords[i]);
        params.PutBool("PasswordProtect", true);
        params.PutBool("CanExtractPages", true);
        commands[i].SetParams(params.View());
    }
    for (int i = 0; i < 3; ++i) {
        SCOPED_TRACE(passwords[i]);
        const std::string path = m_host.Folder().Write(std::string("a") + passwords[i] + ".pdf", kPdf);
        CHostDocument document = CHostDocument::Open(path);
        const int before = DocumentFlags(document.Get());
        EXPECT_EQ(before & PDDocNeedsSave, 0);
        EXPECT_EQ(WorkOn(std::move(commands[i]), document), kAVCommandDone);
        if (*passwords[i] == '\0') {
            EXPECT_EQ(DocumentFlags(document.Get()), before);
            continue;
        }
        SaveDocument(document.Get(), PDSaveFull, path);
        document.Close();
        EXPECT_NE(FileBytes(path).find("/Encrypt"), std::string::npos);
        EXPECT_THROW((void)CHostDocument::Open(path), CHostException) << "no password is known to the host";
    }
}

#ifndef _WIN32  // there the shell splits the argument: tests/windows shows it
TEST_F(BatchCommand, TheApplicationGetsTheDocumentAsOneArgument)
{
    const std::string pipe = m_host.Folder() / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const std::string program =
        m_host.Folder().Write("my app", "#!/bin/sh\nprintf '%s|%s' \"$#\" \"$1\" > '" + pipe + "'\n");
    ASSERT_EQ(chmod(program.c_str(), 0700), 0);
    const std::string path = m_host.Folder().Write("two words.pdf", kPdf);

    CHostCommand command = Command(kExternal);
    CCab params = Parameters("File", program);
    params.PutString("CommandLine", "has no effect");
    command.SetParams(params.View());
    EXPECT_EQ(WorkOn(std::move(command), CHostDocument::Open(path)), kAVCommandDone);
    EXPECT_EQ(FileBytes(pipe), "1|" + path);  // waits for the program
    EXPECT_TRUE(Logged("\t\t\tExternal application started : " + program + "\r\n"));
}
#endif

TEST_F(BatchCommand, AnApplicationThatCannotStartOrHasNoFileToWorkOnIsLogged)
{
    const std::string program = m_host.Folder().Write("true", "no program, but named like one");
    const CHostDocument document = CHostDocument::Open(m_host.Folder().Write("a.pdf", kPdf));
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(m_host.Folder().Path());  // a name without a folder is not looked up in the path
    for (const std::string& name : {program, std::string("true")}) {
        EXPECT_EQ(WorkOn(CommandWithFile(kExternal, name), document), kAVCommandDone);
        EXPECT_TRUE(Logged("\t\t\tCould not start external application : " + name + "\r\n"));
    }
    std::filesystem::current_path(before);

    const std::vector<ToPdfConverter> converters = EnumerateToPdf();
    const auto jpeg = std::find_if(converters.begin(), converters.end(), [](const ToPdfConverter& converter) {
        return std::count(converter.extensions.begin(), converter.extensions.end(), "jpg") > 0;
    });
    ASSERT_NE(jpeg, converters.end());
    const ConversionResult converted = ConvertToPdf(jpeg->handler, FERRULE_SAMPLE_JPEG);
    ASSERT_EQ(FilePath(converted.document.Get()).value_or(""), "");
    EXPECT_EQ(WorkOn(CommandWithFile(kExternal, "/bin/true"), converted.document), kAVCommandDone);
    EXPECT_TRUE(Logged("\t\t\tCould not start external application : /bin/true\r\n"));
}

TEST_F(BatchCommand, StepsWithoutTheirFileAreSkippedSilently)
{
    const std::string path = m_host.Folder().Write("a.pdf", kPdf);
    const CHostDocument document = CHostDocument::Open(path);
    const std::string before = m_host.LogText();
    for (const char* handler : {kExternal, kPurge, kRebuild}) {
        for (const std::string& file : {std::string(), m_host.Folder() / "missing"}) {
            EXPECT_EQ(WorkOn(CommandWithFile(handler, file), document), kAVCommandDone) << handler;
        }
    }
    EXPECT_EQ(m_host.LogText(), before);
    EXPECT_EQ(WorkOn(CommandWithFile(kPurge, path), document), kAVCommandDone);
    EXPECT_TRUE(Logged("\t\t\tPurge Catalog Index : Index is invalid: " + path + "\r\n"));
}

TEST(CatalogStatus, EachCodeHasItsSentenceAndOthersHaveNone)
{
    const struct {
        int status;
        const char* text;
    } rows[] = {{0, "Index is invalid: /i/100%s.pdx"},
                {1, "Index could not be saved: /i/100%s.pdx"},
                {2, "Rebuild is done: /i/100%s.pdx"},
                {3, "Index is purged: /i/100%s.pdx"},
                {4, "Index is loaded: /i/100%s.pdx"},
                {5, "Cannot rebuild index (Catalog is busy): /i/100%s.pdx"},
                {6, ""},
                {-1, ""}};
    for (const auto& row : rows) EXPECT_EQ(CatalogStatusText(row.status, "/i/100%s.pdx"), row.text);
}
