#include <gtest/gtest.h>

#include "batchrun/DlgCreateBatchFile.h"
#include "support/PlugInHost.h"
#include "ui/ScriptedWindows.h"

namespace {

constexpr char kTitle[] = "Create Command-Line Batch File (Ferrule Plug-in)";

BatchFileSettings Settings(std::string destination = {})
{
    return {.sequence = "C:\\seq\\Protect it.sequ",
            .finalAction = FinalAction::Move,
            .destination = std::move(destination),
            .hostProgram = "C:\\Program Files\\Host & Co\\Acrobat.exe"};
}

TEST(BatchFile, HasTheTenLines)
{
    BatchFileSettings settings = Settings("D:\\done");
    settings.executeInSteps = settings.startHidden = true;
    settings.showProgress = settings.includeSubfolders = false;
    settings.extensions = "pdf,doc";
    EXPECT_EQ(*MakeBatchFile(settings, BatchFileForm::Bat),
              "SET FERRULESEQU=C:\\seq\\Protect it.sequ\r\nSET FERRULEFINAL=2\r\nSET FERRULEDEST=D:\\done\r\n"
              "SET FERRULEALTPATH=%1\r\nSET FERRULEALTOUTPUTPATH=%2\r\nSET FERRULENOPROGRESS=yes\r\n"
              "SET FERRULEFILEEXT=pdf,doc\r\nSET FERRULENOSUBFOLDERS=yes\r\nSET EXECUTEINSTEPS=yes\r\n"
              "\"C:\\Program Files\\Host & Co\\Acrobat.exe\" /n /h");
    const BatchFileSettings plain{.sequence = "/s/it's.sequ", .hostProgram = "/opt/host"};
    EXPECT_EQ(*MakeBatchFile(plain, BatchFileForm::Sh),
              "#!/bin/sh\n# arguments: the folder or file with the inputs, the folder for the results\n"
              "export FERRULESEQU='/s/it'\\''s.sequ'\nexport FERRULEFINAL='0'\nexport FERRULEDEST=''\n"
              "export FERRULEALTPATH=\"${1-}\"\nexport FERRULEALTOUTPUTPATH=\"${2-}\"\n"
              "export FERRULENOPROGRESS='no'\nexport FERRULEFILEEXT=''\nexport FERRULENOSUBFOLDERS='no'\n"
              "exec '/opt/host' /n\n");
}

TEST(BatchFile, RefusesWhatTheInterpreterReadsOtherwise)
{
    for (const char* destination : {"R&D", "100%", "a\"b", "a^b", "a|b", "a<b", "a>b", "a\nb", " a", "a\t"}) {
        EXPECT_FALSE(MakeBatchFile(Settings(destination), BatchFileForm::Bat)) << destination;
        EXPECT_TRUE(MakeBatchFile(Settings(destination), BatchFileForm::Sh)) << destination;
    }
    const auto text = MakeBatchFile(Settings("B\xC3\xBCro"), BatchFileForm::Bat);
    EXPECT_TRUE(text->starts_with("@CHCP ")) << *text;
    EXPECT_NE(text->find(" >NUL\r\nSET FERRULESEQU="), std::string::npos);
}

TEST(BatchFile, DialogWritesOnlyWhatIsComplete)
{
    const CTemporaryFolder folder;
    const std::string sequence = folder.Write("Odd.sequ", FileBytes(FERRULE_SAMPLE_SEQUENCE));
    const std::string damaged = folder.Write("damaged.sequ", "<Workflow"), target = folder / "out.bat";
    const CPlugInHost host;
    CScriptedWindows windows;
    BatchFileChoices choices;
    bool allowed = true, cleared = false;
    CDlgCreateBatchFile dialog(
        {windows, {}},
        {.hostMajorVersion = 21, .hostProgram = "/opt/host", .sequences = {damaged}, .form = BatchFileForm::Bat},
        choices,
        {.path = folder / "log.txt",
         .isOpen = [] { return false; },
         .clear = [&] { return cleared = true; },
         .allowed = &allowed});
    const auto refuses = [&](CFormHand& form, const char* text) {
        windows.ExpectMessage(text);
        EXPECT_FALSE(form.Press("OK"));
    };
    windows.Expect(kTitle, [&](CFormHand& form) {
        form.Select("sequences", {0});
        refuses(form, "Please select final action.");
        form.Select("sequences", {});
        form.Choose("action", 0);
        refuses(form, "Please select a batch sequence.");
        form.Select("sequences", {0});
        refuses(form, "Error reading a batch sequence file. Please verify that input batch sequence is not corrupt.");
        windows.ExpectFiles("", {damaged});
        windows.ExpectMessage("This file is already in the batch sequences list.");
        form.Press("Add Sequence File...");
        windows.ExpectFiles("", {sequence});
        form.Press("Add Sequence File...");
        EXPECT_FALSE(form.Enabled("destination"));
        form.Choose("action", 1);
        refuses(form, "Please select a destination folder or a filename.");
        form.Choose("action", 2);  // versions of copies: no destination is asked for
        windows.ExpectFiles("", {});
        EXPECT_FALSE(form.Press("OK"));
        EXPECT_EQ(windows.LastChoice().initial, "Ferrule Odd.bat");
        EXPECT_EQ(windows.LastChoice().filter, "Batch File (*.bat)|*.bat||");
        windows.ExpectMessage("The Ferrule log file does not exist.");
        form.Press("View Log");
        form.Check("no-log", true);
        windows.ExpectMessage(
            "The Ferrule log file does not exist.\nPlease uncheck \"Disable Logging\" option to enabled processing "
            "log.");
        form.Press("View Log");
        folder.Write("log.txt", "x");
        windows.ExpectMessage("Do you really want to remove all records from plug-in's log file?");
        form.Press("Clear Log");
        form.Choose("progress", 1);
        windows.ExpectFiles("", {target});
        EXPECT_TRUE(form.Press("OK"));
    });
    EXPECT_TRUE(dialog.Show());
    EXPECT_TRUE(windows.Missing().empty());
    EXPECT_TRUE(cleared && !allowed && choices.startHidden && !choices.showProgress);
    EXPECT_TRUE(FileBytes(target).ends_with("\"/opt/host\" /n /h")) << FileBytes(target);
}

}  // namespace
