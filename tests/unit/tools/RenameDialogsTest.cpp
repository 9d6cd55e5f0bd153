// The dialogs that ask what new file names are made of.
#include <gtest/gtest.h>

#include "naming/DocumentName.h"
#include "naming/NameText.h"
#include "support/TemporaryFolder.h"
#include "tools/rename/DlgAutoRename.h"
#include "tools/rename/DlgAutoRenameOptions.h"
#include "tools/rename/DlgEditLookupTable.h"
#include "tools/rename/DlgEnterCustomText.h"
#include "tools/rename/DlgFileNamePart.h"
#include "tools/rename/DlgReplaceWithLookupTable.h"
#include "tools/rename/DlgSpecifyRenamingRules.h"
#include "tools/rename/NamePartList.h"
#include "ui/ScriptedWindows.h"

namespace {

TEST(RenameDialogs, LengthIsChecked)
{
    const struct {
        const char *typed, *message;  // none: it is taken
    } cases[] = {{"0", "Maximum allowed file name length is too small."},
                 {"-99999999999999999999", "Maximum allowed file name length is too small."},
                 {"257", "Maximum allowed file name length is too big."},
                 {"99999999999999999999", "Maximum allowed file name length is too big."},
                 {"12 x", "Please enter the maximum length as a number of characters."},
                 {"", "Please enter the maximum length as a number of characters."},
                 {"1", ""},
                 {" 256 ", ""}};
    for (const auto& test : cases) {
        CScriptedWindows windows;
        CDlgAutoRenameOptions dialog({windows, {}}, NameCase::Original, 1000);
        windows.Expect("File Naming Options", [&](CFormHand& form) {
            EXPECT_EQ(form.Text("length"), "1000") << "a stored length stands as it is";
            form.Choose("case", 2);
            form.Type("length", test.typed);
            if (*test.message) windows.ExpectMessage(test.message);
            EXPECT_EQ(form.Press("OK"), !*test.message) << test.typed;
        });
        EXPECT_EQ(dialog.Show(), !*test.message);
        EXPECT_EQ(dialog.MaxFilename(), *test.message ? 1000 : std::stoi(test.typed));
        EXPECT_EQ(NameCaseText(dialog.TextCase()), std::string("Uppercase"));
        EXPECT_TRUE(windows.Missing().empty()) << test.typed;
    }
}

struct PartCase {
    const char* what;
    NamePartKind kind;
    const char* title;
    std::function<void(CFormHand&)> change;
    const char* message;  // none: the dialog closes
    std::function<void(CFileNamePart&)> expected = {};
};

void TypeArea(CFormHand& form, const char* left, const char* right)
{
    form.Type("page", "3");
    form.Type("left", left);
    form.Type("right", right);
    form.Type("bottom", "10");
    form.Type("top", "40.5");
}

const PartCase kPartCases[] = {
    {"number", NamePartKind::Number, "Incrementing Number",
     [](CFormHand& f) {
         f.Type("start", "-5");
         f.Type("increment", " 10");
         f.Type("digits", "40");
     },
     "",
     [](CFileNamePart& p) {
         p.startingNumber = -5;
         p.increment = 10;
         p.padWithZeroes = 40;
     }},
    {"no number", NamePartKind::Number, "Incrementing Number", [](CFormHand& f) { f.Type("start", "5000000000"); },
     "Please enter a whole number to start with."},
    {"too many digits", NamePartKind::Number, "Incrementing Number", [](CFormHand& f) { f.Type("digits", "41"); },
     "Please enter a number of digits from 0 to 40."},
    {"what all have", NamePartKind::PageLabel, "Page Label",
     [](CFormHand& f) {
         EXPECT_FALSE(f.Enabled("missing"));
         f.Check("space", true);
         f.Check("replace-missing", true);
         f.Type("missing", "none");
     },
     "",
     [](CFileNamePart& p) {
         p.addSpaceInFront = p.replaceMissingValues = true;
         p.missingValueText = "none";
     }},
    {"area", NamePartKind::AreaText, "Text from a Page Area", [](CFormHand& f) { TypeArea(f, "1", "2"); }, "",
     [](CFileNamePart& p) {
         p.pageNumber = 2;
         p.area = {.left = 1, .right = 2, .top = 40.5, .bottom = 10};
     }},
    {"no area", NamePartKind::AreaText, "Text from a Page Area", [](CFormHand&) {},
     "Please enter the area whose text is wanted."},
    {"area turned round", NamePartKind::AreaText, "Text from a Page Area",
     [](CFormHand& f) { TypeArea(f, "2", "1"); },
     "The area is empty. Please enter a right side greater than the left and a top greater than the bottom."},
    {"page 0", NamePartKind::AreaText, "Text from a Page Area", [](CFormHand& f) { f.Type("page", "0"); },
     "Page number should be greater than zero."},
    {"no search", NamePartKind::FoundText, "Text Found by a Search", [](CFormHand&) {},
     "Please edit the search rule and enter what to search for."},
};

TEST(RenameDialogs, ComponentsTakeWhatFits)
{
    for (const PartCase& test : kPartCases) {
        CScriptedWindows windows;
        CFileNamePart before;
        before.kind = test.kind;
        CDlgFileNamePart dialog({windows, {}}, before);
        windows.Expect(test.title, [&](CFormHand& form) {
            test.change(form);
            if (*test.message) windows.ExpectMessage(test.message);
            EXPECT_EQ(form.Press("OK"), !*test.message) << test.what;
        });
        EXPECT_EQ(dialog.Show(), !*test.message) << test.what;
        if (test.expected) test.expected(before);
        EXPECT_EQ(dialog.Part(), before) << test.what;
        EXPECT_TRUE(windows.Missing().empty()) << test.what;
    }
}

TEST(RenameDialogs, RulesArePredefinedOrTheUsers)
{
    const struct {
        std::vector<std::size_t> row;
        const char *search, *replace, *message, *description;
    } cases[] = {{{}, "", "", "Please select a rule to add.", ""},
                 {{2}, "", "", "", "Replace spaces with underscores"},
                 {{7}, "", "", "Please enter what to search for.", ""},
                 {{7}, "(", "[", "", "Replace ( with ["},
                 {{8}, "(\\d+)", "\\1", "", "Replace (\\d+) with \\1"}};
    for (const auto& test : cases) {
        CScriptedWindows windows;
        CDlgSpecifyRenamingRules dialog({windows, {}});
        windows.Expect("Specify Renaming Rules", [&](CFormHand& form) {
            EXPECT_EQ(form.Rows("rules").size(), 9u);
            form.Select("rules", test.row);
            EXPECT_EQ(form.Enabled("search"), !test.row.empty() && test.row.front() >= 7);
            if (*test.search) {
                form.Type("search", test.search);
                form.Type("replace", test.replace);
            }
            if (*test.message) windows.ExpectMessage(test.message);
            EXPECT_EQ(form.Press("OK"), !*test.message);
        });
        ASSERT_EQ(dialog.Show(), !*test.message);
        if (!test.row.empty()) {
            EXPECT_EQ(dialog.Rule().Description(), *test.message ? "Replace  with " : test.description);
        }
        EXPECT_TRUE(windows.Missing().empty()) << test.message;
    }
    CScriptedWindows windows;
    CDlgSpecifyRenamingRules broken({windows, {}}, CFileRenameRule::Predefined(kReplaceExpressionRule, "("));
    EXPECT_FALSE(CNameRules::From({broken.Rule()})) << "or the next one shows nothing";
    windows.Expect("Specify Renaming Rules", [&](CFormHand& form) {
        windows.ExpectMessage(CNameRules::From({broken.Rule()}).Error());
        EXPECT_FALSE(form.Press("OK"));
    });
    EXPECT_FALSE(broken.Show());
    EXPECT_TRUE(windows.Missing().empty());
}

TEST(RenameDialogs, LookupTablesAreTypedAndImported)
{
    const CTemporaryFolder folder;
    folder.Write("more.csv", "x,\"24\"\r\ny,2\r\nnothing\r\n");
    CScriptedWindows windows;
    CDlgEditLookupTable dialog({windows, {}}, {{"a, b", "1"}});
    windows.Expect("Edit Lookup Table", [&](CFormHand& form) {
        EXPECT_EQ(form.Text("table"), "\"a, b\", 1\n");
        form.Type("table", "\"a, b\", 1\n\nx, 7\nlost");
        windows.ExpectMessage("Line 4 of the lookup table has no comma between a text and its replacement.");
        EXPECT_FALSE(form.Press("OK"));
        form.Type("table", "\"a, b\", 1\nx, 7");
        windows.ExpectFiles("", {folder / "none.csv"});
        windows.ExpectMessage(ImportLookupTable(folder / "none.csv").Error());
        form.Press("Import...");
        windows.ExpectFiles("", {folder / "more.csv"});
        windows.ExpectMessage("2 line(s) of text loaded.");
        form.Press("Import...");
        EXPECT_TRUE(form.Press("OK"));
    });
    EXPECT_TRUE(dialog.Show());
    EXPECT_EQ(dialog.Table(), (LookupTable{{"a, b", "1"}, {"x", "24"}, {"y", "2"}}));
    EXPECT_TRUE(windows.Missing().empty());
}

class ComponentList : public testing::Test {
protected:
    /// The list in a form of its own.
    void Show(int depth, const std::function<void(CFormHand&)>& play)
    {
        CNamePartList list({m_windows, {}}, m_parts, depth);
        m_windows.Expect("List", play);
        DialogForm form{.title = "List", .controls = {{.what = list.Describe("", 5)}}};
        (void)m_windows.Show(form);
        EXPECT_TRUE(m_windows.Missing().empty()) << testing::PrintToString(m_windows.Missing());
    }
    void Add(CFormHand& hand, std::size_t kind, const char* title, const std::function<void(CFormHand&)>& play)
    {
        m_windows.Expect("Select What To Add To Filename", [=](CFormHand& choice) {
            choice.Select("kinds", {kind});
            EXPECT_TRUE(choice.Press("OK"));
        });
        m_windows.Expect(title, play);
        hand.Press("Add...");
    }

    CScriptedWindows m_windows;
    std::vector<CFileNamePart> m_parts;
};

void Confirm(CFormHand& hand) { EXPECT_TRUE(hand.Press("OK")); }

TEST_F(ComponentList, PutsNamesTogether)
{
    Show(1, [&](CFormHand& hand) {
        const std::pair<const char*, const char*> requests[] = {
            {"Edit...", "Please select a filename component you want to edit."},
            {"Duplicate", "Please select a component to duplicate."},
            {"Delete", "Please select a filename component you want to delete."},
            {"Move Up", "Please select a filename component you want to move."}};
        for (const auto& [button, message] : requests) {
            m_windows.ExpectMessage(message);
            hand.Press(button);
        }
        hand.Press("Clear");  // asks nothing when there is nothing
        Add(hand, 7, "Original Filename", Confirm);
        Add(hand, 6, "Enter Custom Text", [&](CFormHand& text) {
            m_windows.ExpectMessage("Please enter a text.");
            EXPECT_FALSE(text.Press("OK"));
            text.Type("text", "by ");
            text.Press("<author>");
            EXPECT_TRUE(text.Press("OK"));
        });
        hand.Select("parts", {0});
        Add(hand, 1, "Auto-incrementing Letter", Confirm);
        Add(hand, 0, "Incrementing Number", [](CFormHand& number) { number.Press("Cancel"); });
        EXPECT_EQ(hand.Rows("parts"),
                  (std::vector<std::string>{"Add original filename", "Add auto-incrementing letter",
                                            "Custom Text: by <author>"}));
        hand.Press("Duplicate");
        hand.Press("Move Down");
        hand.Press("Move Down");  // is the last one
        hand.Press("Delete");
        hand.Select("parts", {2});
        hand.Press("Move Up");
        EXPECT_EQ(hand.Rows("parts"), (std::vector<std::string>{"Add original filename", "Custom Text: by <author>",
                                                                "Add auto-incrementing letter"}));
        m_parts[0].kind = static_cast<NamePartKind>(77);
        hand.Select("parts", {0});
        m_windows.ExpectMessage(
            "This component is of a kind that this version does not know. It adds nothing to names; delete it, or "
            "use "
            "the version that the settings come from.");
        hand.Press("Edit...");
        m_windows.ExpectMessage("Do you reall want to clear all filename components?", false);
        hand.Press("Clear");
        EXPECT_EQ(m_parts.size(), 3u);
        m_windows.ExpectMessage("Do you reall want to clear all filename components?");
        hand.Press("Clear");
        EXPECT_TRUE(m_parts.empty());
    });
}

TEST_F(ComponentList, LookupsHoldComponentsToALimit)
{
    Show(kMaxNamePartDepth - 1, [&](CFormHand& hand) {
        Add(hand, 9, "Replace With Lookup Table", [&](CFormHand& lookup) {
            m_windows.ExpectMessage("Please add at least one component whose text is to be looked up.");
            EXPECT_FALSE(lookup.Press("OK"));
            m_windows.Expect("Select What To Add To Filename", [](CFormHand& choice) {
                EXPECT_EQ(choice.Rows("kinds").size(), 9u) << "no lookup at the greatest depth";
                choice.Press("Cancel");
            });
            lookup.Press("Add...");
            Add(lookup, 2, "Page Range", Confirm);
            m_windows.ExpectMessage("Please edit the lookup table; it has no entries.");
            EXPECT_FALSE(lookup.Press("OK"));
            m_windows.Expect("Edit Lookup Table", [](CFormHand& table) {
                table.Type("table", "1, single");
                EXPECT_TRUE(table.Press("OK"));
            });
            lookup.Press("Edit Lookup Table...");
            EXPECT_EQ(lookup.Text("entries"), "The lookup table has 1 entries.");
            EXPECT_FALSE(lookup.Enabled("search"));
            lookup.Check("before", true);
            lookup.Type("search", "x");
            EXPECT_TRUE(lookup.Press("OK"));
        });
    });
    ASSERT_EQ(m_parts.size(), 1u);
    EXPECT_EQ(m_parts[0].Description(), "Replace Add page range using lookup table (1 entries)");
    EXPECT_TRUE(m_parts[0].replaceBeforeLookup && m_parts[0].searchBeforeLookup == "x");
}

RenameSettings SomeSettings()
{
    RenameSettings settings;
    settings.components.resize(2);
    settings.components[1].kind = NamePartKind::PageRange;
    settings.script = "one\r\ntwo\r\n";
    return settings;
}

void AddRule(CScriptedWindows& windows, CFormHand& form, std::size_t row)
{
    windows.Expect("Specify Renaming Rules", [row](CFormHand& rule) {
        rule.Select("rules", {row});
        EXPECT_TRUE(rule.Press("OK"));
    });
    form.Press("New Rule...");
}

TEST(RenameDialogs, SettingsAreEditedSavedAndRead)
{
    const CTemporaryFolder folder;
    const std::string file = folder / "names.docren";
    RenameSettings expected = SomeSettings();
    expected.script = "one\ntwo\n";
    expected.useReplaceRules = true;
    expected.rules = {CFileRenameRule::Predefined(5), CFileRenameRule::Predefined(3)};
    expected.textCase = NameCase::Lower;
    expected.maxFilename = 40;
    CScriptedWindows windows;
    CDlgAutoRename dialog({windows, {}}, SomeSettings());
    windows.Expect("Specify New Filenames", [&](CFormHand& form) {
        EXPECT_FALSE(form.Enabled("New Rule...") || form.Enabled("folder") || form.Enabled("script"));
        form.Check("use-rules", true);
        windows.ExpectMessage("Please select one rule to edit.");
        form.Press("edit-rule");
        windows.ExpectMessage("Please select the rules you want to remove.");
        form.Press("Remove Rules");
        for (const std::size_t row : {2u, 0u, 4u, 1u}) AddRule(windows, form, row);
        form.Select("rules", {1, 3});
        windows.ExpectMessage("Do you want to remove all currently selected rules?");
        form.Press("Remove Rules");
        form.Select("rules", {1});
        form.Press("Rule Up");
        EXPECT_EQ(form.Rows("rules"),
                  (std::vector<std::string>{"Remove duplicate underscores", "Replace spaces with underscores"}));
        windows.Expect("File Naming Options", [](CFormHand& options) {
            options.Choose("case", 1);
            options.Type("length", "40");
            EXPECT_TRUE(options.Press("OK"));
        });
        form.Press("Options...");
        EXPECT_EQ(form.Text("options"), "Lowercase, at most 40 characters");
        windows.ExpectFiles("File Naming Settings", {file});
        form.Press("Save Settings...");
        EXPECT_EQ(*ReadRenameSettings(file), expected);

        windows.ExpectFiles("File Naming Settings", {folder.Write("broken.docren", "no settings")});
        windows.ExpectMessage(ReadRenameSettings(folder / "broken.docren").Error());
        form.Press("Load Settings...");
        EXPECT_TRUE(form.Rows("parts").empty()) << "what cannot be read leaves nothing";
        windows.ExpectMessage("There is nothing to save. Please add a filename component first.");
        form.Press("Save Settings...");
        windows.ExpectMessage("Please add at least one filename component.");
        EXPECT_FALSE(form.Press("OK"));
        windows.ExpectFiles("File Naming Settings", {file});
        form.Press("Load Settings...");
        EXPECT_TRUE(form.Press("OK"));
    });
    EXPECT_TRUE(dialog.Show());
    EXPECT_EQ(dialog.Settings(), expected);
    EXPECT_TRUE(windows.Missing().empty()) << testing::PrintToString(windows.Missing());
}

TEST(RenameDialogs, SettingsThatCannotWorkAreRefused)
{
    const CTemporaryFolder folder;
    CFileNamePart broken;
    broken.kind = NamePartKind::Lookup;
    broken.replaceBeforeLookup = true;
    broken.searchBeforeLookup = "(";
    const struct {
        std::function<void(RenameSettings&)> change;
        std::string message;
    } cases[] = {
        {[](RenameSettings& s) { s.outputFolder.clear(); },
         "Please select an output folder to move files after renaming."},
        {[&](RenameSettings& s) { s.outputFolder = folder / "none"; },
         "The selected output folder does not exist.\nPlease select a different folder."},
        {[](RenameSettings& s) {
             s.executeScript = true;
             s.script = " \n";
         },
         "Please enter the script that is to be run for each renamed file."},
        {[&](RenameSettings& s) { s.components.push_back(broken); }, ""},
    };
    for (const auto& test : cases) {
        RenameSettings settings = SomeSettings();
        settings.moveOnSuccess = true;
        settings.outputFolder = folder / "";
        test.change(settings);
        CScriptedWindows windows;
        CDlgAutoRename dialog({windows, {}}, settings);
        windows.Expect("Specify New Filenames", [&](CFormHand& form) {
            windows.ExpectMessage(test.message.empty() ? CNameBuilder::From(settings).Error() : test.message);
            EXPECT_FALSE(form.Press("OK"));
        });
        EXPECT_FALSE(dialog.Show());
        EXPECT_TRUE(windows.Missing().empty()) << test.message;
    }
}

}  // namespace
