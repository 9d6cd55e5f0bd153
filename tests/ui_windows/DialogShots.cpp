// The dialogs of the plug-in, filled in as a user would have them.
#include "Shots.h"
#include "batchrun/DlgCreateBatchFile.h"
#include "commands/DlgSearchText.h"
#include "commands/DlgSecuritySettings.h"
#include "commands/DlgTextSearchWithRule.h"
#include "common/ErrorReport.h"
#include "host/ToolMenu.h"
#include "protocol/Metadata.h"
#include "tools/DlgAddFiles.h"
#include "tools/DlgAddMetadataFields.h"
#include "tools/DlgMetadataLoadOptions.h"
#include "tools/DlgReviewNames.h"
#include "tools/DlgSpreadsheet.h"
#include "tools/rename/DlgAutoRename.h"
#include "tools/rename/DlgAutoRenameOptions.h"
#include "tools/rename/DlgEditLookupTable.h"
#include "tools/rename/DlgEnterCustomText.h"
#include "tools/rename/DlgFileNamePart.h"
#include "tools/rename/DlgReplaceWithLookupTable.h"
#include "tools/rename/DlgSelectWhatToAddToFilenameRename.h"
#include "tools/rename/DlgSpecifyRenamingRules.h"
#include "ui/DlgAddRegExpElement.h"
#include "ui/DlgErrorReport.h"

namespace {

DialogServices Services(CWindows& windows)
{
    return {windows, [](const std::string&) {}};
}

void ShowBatchFile(CWindows& windows)
{
    BatchFileChoices choices;
    bool allowed = true;
    CDlgCreateBatchFile dialog(
        Services(windows),
        {.hostMajorVersion = 21,
         .hostProgram = "/usr/bin/ferrule-host",
         .sequences = {"~/Sequences/Protect.sequ", "~/Sequences/Export text.sequ"}},
        choices,
        {.path = "FerruleLog.txt", .isOpen = [] { return true; }, .clear = [] { return true; }, .allowed = &allowed});
    dialog.Show();
}

void ShowAddFiles(CWindows& windows)
{
    CDlgAddFiles dialog(Services(windows), "Password Protect Multiple Documents",
                        "Press \"Add Files...\" button to select input PDF documents for password protecting. Press "
                        "OK button to continue to the next step.");
    for (const char* name : {"Letter.pdf", "Invoice 2024-117.pdf", "Annual report, twelve pages.pdf"})
        dialog.Add(std::string("~/Documents/") + name);
    (void)dialog.Show();
}

/// Documents that are nowhere but in a picture.
class CShownDocuments final : public CMetadataDocuments {
public:
    Expected<std::vector<std::string>> Read(const std::string& path, const std::vector<std::string>& keys) override
    {
        std::vector<std::string> texts = {path,     "Invoice",         "",   "Miller & Sons", "",
                                          "Writer", "LibreOffice 7.4", "1.7"};
        texts.resize(kPropertyColumns.size() + keys.size());
        return texts;
    }
    Expected<std::string> Write(const std::string&, const std::map<std::string, std::string>&) override
    {
        return std::string();
    }
};

void ShowEditMetadata(CWindows& windows)
{
    CShownDocuments documents;
    CMetadataTable table(documents);
    CSilentProgress progress;
    CErrorReport report;
    std::vector<std::string> paths;
    for (int number = 101; number < 115; ++number)
        paths.push_back("~/Invoices/Invoice 2024-" + std::to_string(number) + ".pdf");
    (void)table.Load(paths, progress, report);
    (void)table.Model().Change(
        {{{1, 1}, "Invoice 2024-102"}, {{2, 1}, "Invoice 2024-103"}, {{2, 4}, "printing, paper"}});
    CDlgSpreadsheet dialog(Services(windows), table);
    DialogForm form = dialog.Describe();
    form.buttons.back().what =
        Button{"Cancel", [] { return FormAnswer::Cancel; }, ButtonRole::Cancel};  // asks nothing
    (void)windows.Show(form);
}

void ShowAddFields(CWindows& windows)
{
    CDlgAddMetadataFields dialog(Services(windows));
    (void)dialog.Show();
}

void ShowLoadOptions(CWindows& windows)
{
    CDlgMetadataLoadOptions dialog(Services(windows), ',');
    (void)dialog.Show();
}

void ShowReplaceInCells(CWindows& windows)
{
    CGridModel model({{"Title", true}});
    CGridRows rows(model);
    CDlgReplaceInCells(Services(windows), rows).Show();
}

void ShowReviewNames(CWindows& windows)
{
    CDlgReviewNames dialog(Services(windows),
                           {"~/Documents/scan0001.pdf", "~/Documents/scan0002.pdf", "~/Documents/scan0003.pdf"},
                           {"Invoice 2024-117.pdf", "Letter to the editor.pdf", ""});
    (void)dialog.Show();
}

SecuritySettings Security()
{
    SecuritySettings settings;
    settings.password = "Leinen los!";
    settings.permPassword = "Anker auf!";
    settings.allowAll = true;
    settings.canCopy = false;
    return settings;
}

void ShowSecurity(CWindows& windows)
{
    CDlgSecuritySettings dialog(Services(windows), Security(),
                                "The passwords are kept in your settings file Ferrule.cfs, which only you may read, "
                                "and are offered again.");
    (void)dialog.Show();
}

void ShowPasswordTable(CWindows& windows)
{
    CDlgPasswordTable dialog(Services(windows), {{"Letter.pdf", "winter1998"}, {"Smith, John.pdf", "green river"}});
    (void)dialog.Show();
}

void ShowErrorReport(CWindows& windows)
{
    CErrorReport report;
    report.Add({"Cannot open input document. Document can be already password protected.", true,
                "~/Documents/locked.pdf", 3});
    report.Add({"Cannot apply security settings. Please check document access permissions.", true,
                "~/Documents/Contracts/signed.pdf", 7});
    report.Add({"The document was repaired.", false, "~/Documents/damaged.pdf", 9});
    CDlgErrorReport(Services(windows), report, "Processing Results",
                    "9 out of 12 documents have been successfully processed.\nThe following errors and warnings were "
                    "encountered during the processing:")
        .Show();
}

SearchRule Rule()
{
    SearchRule rule;
    rule.expression = "Invoice No\\. (\\d{6})";
    rule.format = "\\1";
    rule.description = "Numbers of invoices";
    rule.pages.selection = static_cast<int>(PageSelection::FromTo);
    rule.pages.lastPage0 = 1;
    rule.useArea = rule.executeCode = rule.copyFile = true;
    rule.area = {.left = 300, .right = 560, .top = 800, .bottom = 640.5};
    rule.actionCode = "this.info.Subject = \"Invoice \" + originalFileName;";
    rule.copyFolder = "~/Invoices";
    rule.prefix = "A_";
    return rule;
}

void ShowSearch(CWindows& windows)
{
    SearchSettings settings;
    settings.rules = {Rule(), SearchRule()};
    settings.rules[1].expression = "confidential";
    settings.rules[1].useExpression = false;
    settings.reportFile = "~/Ferrule Search Report.txt";
    settings.overwriteReport = true;
    CDlgSearchText dialog(Services(windows), settings);
    (void)dialog.Show();
}

void ShowRule(CWindows& windows)
{
    CDlgTextSearchWithRule dialog(Services(windows), Rule());
    (void)dialog.Show();
}

void ShowArea(CWindows& windows)
{
    CDlgTextSearchArea dialog(Services(windows), Rule().area);
    (void)dialog.Show();
}

void ShowAddElement(CWindows& windows)
{
    CDlgAddRegExpElement dialog(Services(windows));
    (void)dialog.Show();
}

CFileNamePart Component(NamePartKind kind)
{
    CFileNamePart part;
    part.kind = kind;
    part.addSpaceInFront = part.replaceMissingValues = true;
    part.missingValueText = "unknown";
    part.padWithZeroes = 4;
    part.area = Rule().area;
    part.searchQuery = Rule();
    part.customText = "<title> by <author>";
    return part;
}

CFileNamePart Lookup()
{
    CFileNamePart part = Component(NamePartKind::Lookup);
    part.lookupTable = {{"4711", "Miller and Sons"}, {"Smith, John", "JS"}};
    part.children = {Component(NamePartKind::AreaText), Component(NamePartKind::FoundText)};
    part.replaceBeforeLookup = true;
    part.searchBeforeLookup = R"(^No\. (\d+).*$)";
    part.replacementBeforeLookup = R"(\1)";
    return part;
}

void ShowRename(CWindows& windows)
{
    RenameSettings settings;
    settings.components = {Component(NamePartKind::OriginalName), Component(NamePartKind::CustomText), Lookup()};
    settings.useReplaceRules = settings.moveOnSuccess = settings.executeScript = true;
    settings.rules = {CFileRenameRule::Predefined(3), CFileRenameRule::Predefined(5)};
    settings.outputFolder = "~/Documents/Renamed";
    settings.script = "echo \"$OUTPUTDOCUMENT\" >> ~/renamed.txt";
    CDlgAutoRename dialog(Services(windows), settings);
    (void)dialog.Show();
}

template <NamePartKind kind>
void ShowComponent(CWindows& windows)
{
    CDlgFileNamePart dialog(Services(windows), Component(kind));
    (void)dialog.Show();
}

void ShowKinds(CWindows& windows)
{
    CDlgSelectWhatToAddToFilenameRename dialog(Services(windows), true);
    (void)dialog.Show();
}

void ShowCustomText(CWindows& windows)
{
    CDlgEnterCustomText dialog(Services(windows), Component(NamePartKind::CustomText));
    (void)dialog.Show();
}

void ShowLookup(CWindows& windows)
{
    CDlgReplaceWithLookupTable dialog(Services(windows), Lookup(), 1);
    (void)dialog.Show();
}

void ShowLookupTable(CWindows& windows)
{
    CDlgEditLookupTable dialog(Services(windows), Lookup().lookupTable);
    (void)dialog.Show();
}

void ShowRenamingRules(CWindows& windows)
{
    CDlgSpecifyRenamingRules dialog(
        Services(windows), CFileRenameRule::Predefined(kReplaceExpressionRule, R"((\d+)\.(\d+))", R"(\2-\1)"));
    (void)dialog.Show();
}

void ShowNamingOptions(CWindows& windows)
{
    CDlgAutoRenameOptions dialog(Services(windows), NameCase::Lower, 100);
    (void)dialog.Show();
}

void ShowAbout(CWindows& windows)
{
    DialogForm form = AboutForm();
    (void)windows.Show(form);
}

}  // namespace

std::vector<Shot> DialogShots()
{
    return {{"CreateBatchFile", ShowBatchFile},
            {"AddFiles", ShowAddFiles},
            {"ReviewNames", ShowReviewNames},
            {"Rename", ShowRename},
            {"NameComponents", ShowKinds},
            {"NameNumber", ShowComponent<NamePartKind::Number>},
            {"NameAreaText", ShowComponent<NamePartKind::AreaText>},
            {"NameSearch", ShowComponent<NamePartKind::RuleText>},
            {"NameCustomText", ShowCustomText},
            {"NameLookup", ShowLookup},
            {"NameLookupTable", ShowLookupTable},
            {"NameRules", ShowRenamingRules},
            {"NameOptions", ShowNamingOptions},
            {"EditMetadata", ShowEditMetadata},
            {"AddMetadataFields", ShowAddFields},
            {"MetadataLoadOptions", ShowLoadOptions},
            {"ReplaceInCells", ShowReplaceInCells},
            {"SecuritySettings", ShowSecurity},
            {"PasswordTable", ShowPasswordTable},
            {"ErrorReport", ShowErrorReport},
            {"SearchText", ShowSearch},
            {"TextSearchRule", ShowRule},
            {"SearchArea", ShowArea},
            {"AddElement", ShowAddElement},
            {"About", ShowAbout}};
}
