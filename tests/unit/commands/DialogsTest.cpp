#include <gtest/gtest.h>

#include "commands/DlgSearchText.h"
#include "commands/DlgSecuritySettings.h"
#include "commands/PasswordTable.h"
#include "support/TemporaryFolder.h"
#include "ui/ScriptedWindows.h"

namespace {

struct SecurityCase {
    const char* what;
    std::function<void(CFormHand&)> change;
    const char* message;  // empty: the dialog closes
    std::function<void(SecuritySettings&)> expected = {};
};

void Open(CFormHand& form, const char* password, const char* again)
{
    form.Check("open", true);
    form.Type("open-password", password);
    form.Type("open-again", again);
}

void Restrict(CFormHand& form, const char* password, const char* again)
{
    form.Check("restrict", true);
    form.Type("permissions-password", password);
    form.Type("permissions-again", again);
}

const SecurityCase kSecurityCases[] = {
    {"nothing chosen", [](CFormHand&) {}, "Please specify security settings."},
    {"open differs", [](CFormHand& f) { Open(f, "a", "b"); },
     "Document \"open\" passwords do not match. Please verify and try again."},
    {"open is blank", [](CFormHand& f) { Open(f, " ", "\t"); }, "Please specify a document \"open\" password."},
    {"permissions differ", [](CFormHand& f) { Restrict(f, "a", "A"); },
     "Document \"access permissions\" passwords do not match. Please verify and try again."},
    {"permissions are empty", [](CFormHand& f) { Restrict(f, "", ""); },
     "Please specify a document \"access permissions\" password."},
    {"open comes first",
     [](CFormHand& f) {
         Restrict(f, "a", "b");
         Open(f, "", "");
     },
     "Please specify a document \"open\" password."},
    {"open is trimmed", [](CFormHand& f) { Open(f, " geheim ", "geheim"); }, "",
     [](SecuritySettings& s) {
         s.passwordProtect = true;
         s.password = "geheim";
     }},
    {"no printing, no changes, no copying",
     [](CFormHand& f) {
         Restrict(f, "o", "o");
         f.Choose("printing", 0);
         f.Choose("changes", 1);
         f.Check("copy", false);
     },
     "",
     [](SecuritySettings& s) {
         s.passwordProtect = true;
         s.permPassword = "o";
         s.canPrint = s.canCopy = s.canEdit = s.canEditNotes = s.canAssemble = s.canCreateTemplates = false;
         s.canFillForms = false;
     }},
    {"low resolution and forms",
     [](CFormHand& f) {
         Restrict(f, "o", "o");
         f.Choose("printing", 1);
         f.Choose("changes", 2);
     },
     "",
     [](SecuritySettings& s) {
         s.passwordProtect = true;
         s.permPassword = "o";
         s.hiResPrinting = s.canEdit = s.canEditNotes = s.canAssemble = s.canCreateTemplates = false;
     }},
    {"all changes beside no printing",
     [](CFormHand& f) {
         Restrict(f, "o", "o");
         f.Choose("changes", 0);
         EXPECT_FALSE(f.Shown("void"));
         f.Choose("printing", 0);
         EXPECT_TRUE(f.Shown("void"));
     },
     "",
     [](SecuritySettings& s) {
         s.passwordProtect = s.allowAll = true;
         s.permPassword = "o";
         s.canPrint = false;
     }},
};

TEST(Dialogs, SecuritySettingsTakeWhatFits)
{
    for (const SecurityCase& test : kSecurityCases) {
        CScriptedWindows windows;
        CDlgSecuritySettings dialog({windows, {}}, SecuritySettings());
        windows.Expect("Security Settings", [&](CFormHand& form) {
            EXPECT_FALSE(form.Enabled("open-password") || form.Enabled("printing") || form.Enabled("table"));
            test.change(form);
            if (*test.message) windows.ExpectMessage(test.message);
            EXPECT_EQ(form.Press("OK"), !*test.message);
        });
        EXPECT_EQ(dialog.Show(), !*test.message) << test.what;
        SecuritySettings expected;
        if (test.expected) test.expected(expected);
        EXPECT_EQ(dialog.Settings(), expected) << test.what;
        EXPECT_TRUE(windows.Missing().empty()) << test.what;
    }
}

TEST(Dialogs, SecuritySettingsShowWhatIsSetAndEditTheTable)
{
    SecuritySettings settings;
    settings.password = "one";
    settings.useFileMapping = settings.allowAll = true;
    settings.fileMapping = {{"a.pdf", "first"}};
    settings.hiResPrinting = false;
    CScriptedWindows windows;
    CDlgSecuritySettings dialog({windows, {}}, settings);
    windows.Expect("Security Settings", [&](CFormHand& form) {
        EXPECT_TRUE(form.Checked("open") && form.Checked("table"));
        EXPECT_FALSE(form.Checked("restrict"));
        EXPECT_EQ(form.Text("open-again"), "one");
        EXPECT_EQ(form.Text("printing"), "Low Resolution (150 dpi)");
        EXPECT_EQ(form.Text("changes"), "All");
        windows.Expect("Edit Filename-to-Password Lookup Table", [&](CFormHand& table) {
            EXPECT_EQ(table.Text("table"), "a.pdf, first\n");
            table.Type("table", "a.pdf, first\nb.pdf");
            windows.ExpectMessage(
                "Line 2 of the password table has no comma between the name of a file and its password.");
            EXPECT_FALSE(table.Press("OK"));
            table.Type("table", "b.pdf,second");
            EXPECT_TRUE(table.Press("OK"));
        });
        form.Press("edit-table");
        EXPECT_TRUE(form.Press("OK"));
    });
    EXPECT_TRUE(dialog.Show());
    EXPECT_EQ(dialog.Settings().fileMapping, (TextPairs{{"b.pdf", "second"}}));
}

TEST(PasswordTable, SeparatesAtTheFirstCommaOutsideQuotes)
{
    const struct {
        const char* text;
        TextPairs table;
        const char* problem;
    } cases[] = {
        {"a.pdf,x", {{"a.pdf", "x"}}, ""},
        {"\r\n a.pdf ,  x, y \r\n\n\"b, c.pdf\",\"z\"\n", {{"a.pdf", "x, y "}, {"b, c.pdf", "\"z\""}}, ""},
        {"a.pdf,x\nA.PDF, x", {{"a.pdf", "x"}}, ""},
        {"a.pdf,x\nA.PDF,y", {}, "Line 2"},
        {"a.pdf,x\n\nb.pdf, ", {}, "Line 3"},
        {",x", {}, "Line 1"},
        {"\"a,b.pdf", {}, "Line 1"},
    };
    for (const auto& test : cases) {
        const auto table = PasswordTableFromText(test.text);
        ASSERT_EQ(static_cast<bool>(table), !*test.problem) << test.text;
        if (!table) {
            EXPECT_TRUE(table.Error().starts_with(test.problem)) << table.Error();
            continue;
        }
        EXPECT_EQ(*table, test.table) << test.text;
        EXPECT_EQ(*PasswordTableFromText(PasswordTableText(*table)), test.table) << test.text;
    }
}

TEST(Dialogs, SearchRulesAreAddedChangedSavedAndRead)
{
    const CTemporaryFolder folder;
    const std::string file = folder / "terms.pdfsearch";
    CScriptedWindows windows;
    CDlgSearchText dialog({windows, {}}, SearchSettings());
    windows.Expect("Search and Copy Files", [&](CFormHand& form) {
        windows.ExpectMessage("Please select a search item from the list.");
        form.Press("Edit...");
        windows.ExpectMessage("There are no search items to save. Please add at least one search item.");
        form.Press("Export Search Terms...");
        windows.ExpectMessage("Please enter at least one search term.");
        EXPECT_FALSE(form.Press("OK"));
        windows.Expect("Text Search Rule", [&](CFormHand& rule) {
            rule.Type("expression", "(");
            windows.ExpectMessage("Invalid search expression specified. Please check expression syntax.");
            EXPECT_FALSE(rule.Press("OK"));
            rule.Type("expression", "No ");
            windows.Expect("Add Element", [&](CFormHand& element) {
                element.Choose("elements", 23);  // a category without a pattern
                windows.ExpectMessage("Please select an item from the list.");
                EXPECT_FALSE(element.Press("OK"));
                element.Choose("elements", 2);
                EXPECT_TRUE(element.Press("OK"));
            });
            rule.Press("Add Element...");
            EXPECT_EQ(rule.Text("expression"), "No \\d{2}");
            rule.Choose("pages", 2);
            rule.Type("first", "3");
            rule.Type("last", "2");
            windows.ExpectMessage(
                "Starting page number is greater than ending page number.\nPlease enter a valid page number.");
            EXPECT_FALSE(rule.Press("OK"));
            rule.Type("last", "last");
            rule.Check("area", true);
            windows.Expect("Text Search Area", [&](CFormHand& area) {
                area.Type("right", "72");
                area.Type("top", "36.5");
                EXPECT_EQ(area.Texts()[6], "72 pt / 25 mm / 1.00 in") << testing::PrintToString(area.Texts());
                area.Type("page", "0");
                windows.ExpectMessage("Page number should be greater than zero.");
                EXPECT_FALSE(area.Press("OK"));
                area.Type("page", "1");
                EXPECT_TRUE(area.Press("OK"));
            });
            rule.Press("Edit Area...");
            rule.Check("copy", true);
            windows.ExpectFiles("Select Copy Folder", {folder / "copies"});
            rule.Press("Browse...");
            EXPECT_TRUE(rule.Press("OK"));
        });
        form.Press("Add...");
        EXPECT_EQ(form.Rows("rules"),
                  (std::vector<std::string>{"No \\d{2}\tProcess Pages: 3 to Last Page\t0.0, 0.0, 72.0, 36.5\t\t\t" +
                                            folder / "copies"}));
        windows.ExpectFiles("PDF Search Settings", {file});
        form.Press("Save Settings...");
        form.Select("rules", {0});
        form.Press("Delete");
        windows.ExpectFiles("PDF Search Settings", {file});
        form.Press("Load Settings...");
        windows.ExpectMessage("Do you want to save search settings into a file?", false);
        EXPECT_TRUE(form.Press("OK"));
    });
    EXPECT_TRUE(dialog.Show());
    ASSERT_EQ(dialog.Settings().rules.size(), 1u);
    EXPECT_EQ(dialog.Settings(), *ReadSearchSettings(file));
    EXPECT_TRUE(windows.Missing().empty());
}

}  // namespace
