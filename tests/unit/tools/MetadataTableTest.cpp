// The table of metadata as somebody uses it, over documents that are texts.
#include <gtest/gtest.h>

#include "protocol/Metadata.h"
#include "support/TemporaryFolder.h"
#include "tools/DlgReviewNames.h"
#include "tools/DlgSpreadsheet.h"
#include "ui/ScriptedWindows.h"

namespace {

using Entries = std::map<std::string, std::string>;

class CTextDocuments final : public CMetadataDocuments {
public:
    Expected<std::vector<std::string>> Read(const std::string& path, const std::vector<std::string>& keys) override
    {
        const auto found = documents.find(path);
        if (found == documents.end()) return Failure("it is gone");
        std::vector<std::string> texts{path};
        for (std::size_t column = 1; column < kPropertyColumns.size(); ++column)
            texts.push_back(found->second[kPropertyColumns[column]]);
        for (const std::string& key : keys) texts.push_back(found->second[key]);
        return texts;
    }
    Expected<std::string> Write(const std::string& path, const Entries& entries) override
    {
        if (path == locked) return Failure("it is locked");
        written.push_back(path);
        for (const auto& [key, text] : entries) documents[path][key] = text;
        documents[path]["File Size"] = "9";
        return std::string();
    }

    std::map<std::string, Entries> documents;
    std::vector<std::string> written;
    std::string locked;
};

class MetadataGrid : public testing::Test {
protected:
    MetadataGrid()
    {
        m_documents.documents = {{"/a/x.pdf", {{"Title", "old"}, {"Author", "A"}, {"Company", "C"}}},
                                 {"/b/x.pdf", {{"Title", "old too"}, {"Pages", "3"}}},
                                 {"/b/y.pdf", {{"Keywords", "Old"}, {"Creator", "Writer"}}}};
        EXPECT_TRUE(m_table.Load({"/a/x.pdf", "/none.pdf", "/b/x.pdf", "/b/y.pdf"}, m_progress, m_report));
    }
    void Show(std::function<void(CFormHand&)> play)
    {
        m_windows.Expect("Edit Metadata", std::move(play));
        CDlgSpreadsheet(DialogServices{m_windows, [](const std::string&) {}}, m_table).Show();
        EXPECT_EQ(m_windows.Missing(), std::vector<std::string>());
    }
    void Import(CFormHand& hand, const std::string& file, const std::string& bytes,
                const std::vector<std::string>& messages)
    {
        m_windows.ExpectFiles("", {m_folder.Write(file, bytes)});
        m_windows.Expect("Metadata Load Options", [](CFormHand& options) { options.Press("OK"); });
        for (const std::string& message : messages) m_windows.ExpectMessage(message);
        hand.Press("Import...");
    }
    const std::string& Cell(std::size_t row, const char* column)
    {
        return m_table.Model().Cell({row, *m_table.Model().ColumnNamed(column)});
    }

    const CTemporaryFolder m_folder;
    CTextDocuments m_documents;
    CSilentProgress m_progress;
    CErrorReport m_report;
    CMetadataTable m_table{m_documents};
    CScriptedWindows m_windows;
};

TEST_F(MetadataGrid, OnlyWhatWasChangedIsWrittenAndWhatFailsStaysChanged)
{
    ASSERT_EQ(m_report.Entries().size(), 1u);
    EXPECT_EQ(m_report.Entries()[0].description, "Cannot open file: it is gone");
    m_documents.locked = "/b/y.pdf";
    Show([&](CFormHand& hand) {
        EXPECT_EQ(hand.Text("heading"), "Edit Document Metadata - 3 record(s)");
        EXPECT_THROW(hand.Edit("cells", 0, "Creator", "x"), std::logic_error);
        hand.Press("Apply");
        EXPECT_EQ(hand.Text("status"), "No cell is changed.");
        EXPECT_FALSE(m_table.HasApplied());
        hand.Edit("cells", 0, "Title", "new");
        hand.Edit("cells", 0, "Author", "");
        hand.Edit("cells", 2, "Subject", "s");
        m_windows.ExpectMessage(
            "3 cell(s) of 2 document(s) have been changed and not applied. Do you want to close without applying "
            "them?",
            false);
        EXPECT_FALSE(hand.Press("Cancel"));
        m_windows.Expect("Processing Results", [](CFormHand& report) {
            EXPECT_EQ(report.Texts().front().substr(0, 45), "1 out of 2 document(s) have been updated.\nThe");
        });
        hand.Press("Apply");
        EXPECT_EQ(hand.Text("status"),
                  "1 out of 2 document(s) have been updated.\n1 cell(s) of 1 document(s) are changed.");
        hand.Press("Undo");
        EXPECT_TRUE(hand.Press("Cancel")) << "nothing is unsaved any more";
    });
    EXPECT_EQ(m_documents.written, std::vector<std::string>{"/a/x.pdf"});
    Entries& entries = m_documents.documents["/a/x.pdf"];
    EXPECT_EQ(entries["Title"] + "/" + entries["Author"] + "/" + entries["Company"], "new//C");
    EXPECT_EQ(m_table.Updated(), 1u);
    EXPECT_EQ(Cell(0, "File Size") + Cell(2, "File Size"), "9") << "as it is in the file that was written";
}

TEST_F(MetadataGrid, FieldsAreAddedWithinTheLimits)
{
    const auto type = [](std::size_t first, std::size_t count) {
        std::string lines;
        for (std::size_t field = first; field < first + count; ++field) lines += "F" + std::to_string(field) + "\n";
        return [lines](CFormHand& hand) {
            hand.Type("others", lines);
            hand.Press("OK");
        };
    };
    Show([&](CFormHand& hand) {
        m_windows.Expect("Add Metadata Fields", [&](CFormHand& fields) {
            fields.Select("common", {0, 4});
            fields.Type("others", "a/b");
            m_windows.ExpectMessage("The name of the field \"a/b\" may hold neither \"#\" nor \"/\".");
            EXPECT_FALSE(fields.Press("OK"));
            fields.Type("others", " Company \n\nAge");
            EXPECT_TRUE(fields.Press("OK"));
        });
        hand.Press("Add Fields...");
        EXPECT_EQ(m_table.Model().Columns(), kPropertyColumns.size() + 2);
        EXPECT_EQ(Cell(0, "Company"), "C");
        hand.Edit("cells", 0, "Creator", "now it can be edited");
        hand.Edit("cells", 1, "Age", "7");
        hand.Press("Undo");
        hand.Press("Undo");
        m_windows.Expect("Add Metadata Fields", type(0, 101));
        m_windows.ExpectMessage("Cannot add more than 100 fields.");
        hand.Press("Add Fields...");
        m_windows.Expect("Add Metadata Fields", type(0, 100));
        hand.Press("Add Fields...");
        m_windows.Expect("Add Metadata Fields", type(100, 84));
        hand.Press("Add Fields...");
        EXPECT_EQ(m_table.Model().Columns(), 200u);
        m_windows.ExpectMessage("Cannot add more than 200 fields.");
        hand.Press("Add Fields...");
    });
}

TEST_F(MetadataGrid, TextsAreReplacedAndATableIsImported)
{
    Show([&](CFormHand& hand) {
        m_windows.Expect("Replace Text in Cells", [&](CFormHand& replace) {
            replace.Type("find", "old");
            replace.Type("with", "new");
            m_windows.ExpectMessage("3 metadata record(s) have been modified.");
            EXPECT_TRUE(replace.Press("Replace All"));
        });
        hand.Press("replace");
        EXPECT_EQ(Cell(1, "Title"), "new too");
        EXPECT_EQ(Cell(2, "Keywords"), "new");

        Import(
            hand, "t.csv", "Filename,Title,Creator,Pages\n/B/X.PDF,\"a, b\",,9\ny.pdf,,Editor,9\nz.pdf,x,x,x\n",
            {"The file holds 3 record(s) in UTF-8. 1 cell(s) of 1 document(s) will be changed.\n1 record(s) name no "
             "document of the table.\nThese columns stay as they are, because they cannot be edited before they are "
             "added as fields: Creator.",
             "1 record(s) have been updated."});
        EXPECT_EQ(Cell(1, "Title"), "a, b");
        EXPECT_EQ(Cell(1, "Pages"), "3");
        hand.Press("Undo");
        EXPECT_EQ(Cell(1, "Title"), "new too") << "an import is one step";

        const struct {
            const char *name, *bytes, *said;
        } rows[] = {
            {"a.csv", "Filename\n",
             "The input document contains less than two field.\nPlease verify file content and formatting."},
            {"b.txt", "Filename,Title\n",
             "The input document contains less than two field.\nPlease verify file content and formatting."},
            {"c.txt", "Filename\tPages\n",
             "The input document does not contain any required fields.\nPlease verify file formatting."},
        };
        for (const auto& row : rows) Import(hand, row.name, row.bytes, {row.said});
        Import(hand, "d.csv", "Filename,Title\n\"x", {m_folder / "d.csv" + ": Line 2: a quote is never closed."});
        EXPECT_EQ(m_table.Model().ChangedCells(), 3u);
    });
}

TEST_F(MetadataGrid, RowsAreFiltered)
{
    Show([&](CFormHand& hand) {
        hand.Type("filter", "OLD");
        EXPECT_EQ(hand.Rows("cells").size(), 3u);
        hand.WorkOn("cells", [](CGridRows& rows) { rows.MoveTo({0, 1}); });
        hand.Choose("scope", 1);
        EXPECT_EQ(hand.Text("heading"), "Edit Document Metadata - 3 record(s), 2 of them shown");
        hand.Type("filter", "");
        hand.Edit("cells", 1, "Title", "x");
        hand.Check("changed", true);
        EXPECT_EQ(hand.Rows("cells").size(), 1u);
    });
}

TEST(ReviewNames, EditedNamesCountAndAreNotLostUnasked)
{
    CScriptedWindows windows;
    CDlgReviewNames dialog({windows, [](const std::string&) {}}, {"/a.pdf", "/b.pdf"}, {"x.pdf", ""});
    windows.Expect("Review and Confirm New Filenames", [&](CFormHand& hand) {
        hand.Edit("names", 1, "Output Filename (double-click on the cell to edit)", "y.pdf");
        windows.ExpectMessage("You have changed 1 name(s). Do you want to close the list without renaming any file?",
                              false);
        EXPECT_FALSE(hand.Press("Cancel"));
        hand.Press("Rename");
    });
    EXPECT_TRUE(dialog.Show());
    EXPECT_EQ(dialog.Names(), (std::vector<std::string>{"x.pdf", "y.pdf"}));
}

}  // namespace
