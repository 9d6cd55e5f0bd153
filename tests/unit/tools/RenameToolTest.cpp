// The rename tool over documents of the open host, with windows that a script answers.
#include <algorithm>
#include <filesystem>

#include "naming/RenameSettings.h"
#include "support/MemoryLog.h"
#include "tools/rename/RenameLists.h"
#include "tools/rename/RenameTool.h"
#include "ui/ScriptedWindows.h"
#include "unit/hostcalls/HostedCalls.h"

namespace {

class RenameTool : public CHostedCalls {
protected:
    RenameTool()
    {
        m_paths.settingsFolder = m_own.Path() + "/";
        m_paths.renameSettingsFile = m_own / "AutoRenameFiles.cfg";
        std::filesystem::copy_file(SAMPLE_DOCUMENT, m_in / "one.pdf");
        std::filesystem::copy_file(SAMPLE_DOCUMENT, m_in / "two.pdf");
        m_in.Write("wrong.pdf", "no document");
    }

    void Run(const std::function<void(CFormHand&)>& settings)
    {
        m_windows.Expect("Rename PDF Files", [&](CFormHand& files) {
            m_windows.ExpectFiles("Select input folder", {m_in.Path()});
            files.Press("Add Folder...");
            if (!m_complaint.empty()) m_windows.ExpectMessage(m_complaint);
            m_windows.Expect("Specify New Filenames", settings);
            EXPECT_TRUE(files.Press("OK"));
        });
        CMemoryLog log;
        RenameDocuments({m_windows, {}}, m_paths, log);
        EXPECT_TRUE(m_windows.Missing().empty()) << testing::PrintToString(m_windows.Missing());
    }

    std::vector<std::string> Names() const
    {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(m_in.Path()))
            names.push_back(entry.path().filename().string());
        std::ranges::sort(names);
        return names;
    }

    CTemporaryFolder m_in, m_own;
    ProductPaths m_paths;
    CScriptedWindows m_windows;
    std::string m_complaint;  // of remembered settings
};

void AddPart(CScriptedWindows& windows, CFormHand& form, std::size_t kind, const std::string& title)
{
    windows.Expect("Select What To Add To Filename", [kind](CFormHand& choice) {
        choice.Select("kinds", {kind});
        choice.Press("OK");
    });
    windows.Expect(title, [](CFormHand& part) { part.Press("OK"); });
    form.Press("Add...");
}

}  // namespace

TEST_F(RenameTool, NamesReviewsRenamesAndRemembers)
{
    m_own.Write("AutoRenameFiles.cfg", "no settings");
    m_complaint = ReadRenameSettings(m_paths.renameSettingsFile).Error();
    Run([this](CFormHand& form) {
        EXPECT_TRUE(form.Rows("parts").empty());
        AddPart(m_windows, form, 0, "Incrementing Number");
        AddPart(m_windows, form, 7, "Original Filename");
        m_windows.Expect("Processing Results", [](CFormHand& problems) {
            EXPECT_NE(problems.Rows("list").front().find("Cannot rename file: "), std::string::npos);
            problems.Press("OK");
        });
        m_windows.Expect("Review and Confirm New Filenames", [this](CFormHand& review) {
            EXPECT_EQ(review.Rows("names"),
                      (std::vector<std::string>{m_in / "one.pdf" + "\t1one.pdf", m_in / "two.pdf" + "\t2two.pdf",
                                                m_in / "wrong.pdf" + "\t"}));
            review.Edit("names", 1, "Output Filename (double-click on the cell to edit)", "1one.pdf");
            EXPECT_TRUE(review.Press("Rename"));
        });
        m_windows.ExpectMessage(
            "2 file(s) out of 3 have been renamed.\n1 document(s) have been skipped or failed.\n"
            "Do you want to open a processing log for review?",
            false);
        EXPECT_TRUE(form.Press("OK"));
    });
    EXPECT_EQ(Names(), (std::vector<std::string>{"1one.pdf", "1one_1.pdf", "wrong.pdf"}));

    m_complaint.clear();
    Run([this](CFormHand& form) {
        EXPECT_EQ(form.Rows("parts").size(), 2u) << "as they were used last";
        m_windows.CancelProgressAfter(1);
        EXPECT_TRUE(form.Press("OK"));
    });
    EXPECT_EQ(Names().front(), "1one.pdf") << "nothing is renamed after a cancel";
}

TEST_F(RenameTool, FinishesWhatWasInterrupted)
{
    RenameSettings settings;
    settings.components.resize(1);
    ASSERT_EQ(WriteRenameSettings(m_paths.renameSettingsFile, settings), "");
    ASSERT_TRUE(CRenameLists::Begin(m_own / "Renames", {{.path = m_in / "one.pdf", .newName = "1.pdf"}}));
    const std::string question =
        "An earlier renaming was interrupted before it came to its end.\nDo you want to finish it now?";
    CMemoryLog log;
    m_windows.ExpectMessage(question, false);
    m_windows.Expect("Rename PDF Files", [&](CFormHand& files) {
        files.Press("Cancel");
        m_windows.ExpectMessage(question);
        m_windows.ExpectMessage(
            "1 file(s) out of 1 have been renamed.\n0 document(s) have been skipped or failed.\n"
            "Do you want to open a processing log for review?",
            false);
    });
    for (int use = 0; use < 2; ++use) RenameDocuments({m_windows, {}}, m_paths, log);
    m_windows.Expect("Rename PDF Files", [](CFormHand& files) { files.Press("Cancel"); });
    RenameDocuments({m_windows, {}}, m_paths, log);
    EXPECT_EQ(Names().front(), "1.pdf");
    EXPECT_TRUE(m_windows.Missing().empty()) << testing::PrintToString(m_windows.Missing());
}
