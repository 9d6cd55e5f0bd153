#include "tools/rename/DlgAutoRename.h"

#include <utility>

#include "base/Text.h"
#include "naming/DocumentName.h"
#include "platform/Files.h"
#include "platform/NarrowText.h"
#include "tools/rename/DlgAutoRenameOptions.h"
#include "tools/rename/DlgSpecifyRenamingRules.h"

namespace {

constexpr char kNamingTitle[] = "File Naming Settings";
constexpr char kNamingFilter[] =
    "Document Naming Settings (*.docren)|*.docren; *.docren|All Files (*.*)|*.*||";  // sic

FileChoice SettingsChoice()
{
    return {.title = kNamingTitle, .filter = kNamingFilter, .defaultExtension = kRenameSettingsExtension};
}

}  // namespace

CDlgAutoRename::CDlgAutoRename(DialogServices services, const RenameSettings& settings)
    : m_services(std::move(services)), m_components(m_services, m_settings.components, 1)
{
    Use(settings);
}

void CDlgAutoRename::Use(RenameSettings settings)
{
    m_settings = std::move(settings);
    m_settings.script = ReplaceAll(m_settings.script, "\r\n", "\n");  // as fields have it
    m_components.Reset();
    m_selectedRules.clear();
}

bool CDlgAutoRename::Show()
{
    DialogForm form = Describe();
    return m_services.windows.Show(form);
}

FormControl CDlgAutoRename::PlainButton(const char* label, void (CDlgAutoRename::*act)())
{
    return {.what = Button{label, [this, act] {
                               (this->*act)();
                               return FormAnswer::StayOpen;
                           }}};
}

Group CDlgAutoRename::RuleGroup()
{
    const auto used = [this] { return m_settings.useReplaceRules; };
    ListView rules{.name = "Renaming rules",
                   .columns = {{"Rule"}},
                   .count = [this] { return m_settings.rules.size(); },
                   .text = [this](std::size_t row, std::size_t) { return m_settings.rules[row].Description(); },
                   .selected = &m_selectedRules,
                   .several = true,
                   .activates = "edit-rule",
                   .lines = 3,
                   .width = 90};
    Row buttons{{PlainButton("&New Rule...", &CDlgAutoRename::AddRule),
                 PlainButton("Edi&t Rule...", &CDlgAutoRename::EditRule),
                 PlainButton("Remo&ve Rules", &CDlgAutoRename::RemoveRules),
                 PlainButton("Rule Up", &CDlgAutoRename::RuleUp),
                 PlainButton("Rule Down", &CDlgAutoRename::RuleDown)}};
    for (FormControl& button : buttons.controls) button.enabled = used;
    buttons.controls[1].id = "edit-rule";
    return {.title = "Renaming rules",
            .controls = {{.what = CheckBox{"Change the joined name by these &rules, one after the other:",
                                           &m_settings.useReplaceRules},
                          .id = "use-rules"},
                         {.what = std::move(rules), .id = "rules", .enabled = used, .grows = true},
                         {.what = std::move(buttons)}}};
}

Group CDlgAutoRename::OptionGroup()
{
    const auto options = [this] {
        return FormatText("%s, at most %d characters", NameCaseText(m_settings.textCase), m_settings.maxFilename);
    };
    const auto moves = [this] { return m_settings.moveOnSuccess; };
    FormControl browse = PlainButton("&Browse...", &CDlgAutoRename::ChooseFolder);
    browse.enabled = moves;
    Row names{{{.what = StaticText{.text = "", .current = options}, .id = "options"},
               PlainButton("&Options...", &CDlgAutoRename::EditOptions),
               {.what = CheckBox{"Overwrite e&xisting files that have the new name", &m_settings.overwriteExisting},
                .id = "overwrite"}}};
    Row folder{{{.what = CheckBox{"&Move renamed files into this folder:", &m_settings.moveOnSuccess}, .id = "move"},
                {.what = TextField{.label = "", .value = &m_settings.outputFolder, .name = "Output folder"},
                 .id = "folder",
                 .enabled = moves},
                std::move(browse)}};
    return {.title = "Options", .controls = {{.what = std::move(names)}, {.what = std::move(folder)}}};
}

Group CDlgAutoRename::ScriptGroup()
{
    return {
        .title = "Script",
        .controls = {
            {.what = CheckBox{"Run this &script for each renamed file; the variables INPUTDOCUMENT and "
                              "OUTPUTDOCUMENT hold both paths:",
                              &m_settings.executeScript},
             .id = "execute"},
            {.what = TextField{.label = "", .value = &m_settings.script, .lines = 2, .width = 70, .name = "Script"},
             .id = "script",
             .enabled = [this] { return m_settings.executeScript; }}}};
}

DialogForm CDlgAutoRename::Describe()
{
    DialogForm form{.title = "Specify New Filenames", .focus = "parts"};
    form.controls.push_back(
        {.what = m_components.Describe("Filename components, joined in this order", 5), .grows = true});
    form.controls.push_back({.what = RuleGroup(), .grows = true});
    form.controls.push_back({.what = OptionGroup()});
    form.controls.push_back({.what = ScriptGroup()});
    form.buttons.push_back({.what = Button{"&Help...", [this] {
                                               m_services.showHelp("RenameFiles.htm");
                                               return FormAnswer::StayOpen;
                                           }}});
    form.buttons.push_back(PlainButton("Load Settin&gs...", &CDlgAutoRename::Load));
    form.buttons.push_back(PlainButton("Save Sett&ings...", &CDlgAutoRename::Save));
    form.buttons.push_back({.what = Button{"OK", [this] { return Confirm(); }, ButtonRole::Default}});
    form.buttons.push_back({.what = Button{"Cancel", [] { return FormAnswer::Cancel; }, ButtonRole::Cancel}});
    return form;
}

void CDlgAutoRename::AddRule()
{
    CDlgSpecifyRenamingRules dialog(m_services);
    if (!dialog.Show()) return;
    m_settings.rules.push_back(dialog.Rule());
    m_selectedRules = {m_settings.rules.size() - 1};
}

bool CDlgAutoRename::OneRuleSelected(const char* request)
{
    if (m_selectedRules.size() == 1) return true;
    Warn(request);
    return false;
}

void CDlgAutoRename::EditRule()
{
    if (!OneRuleSelected("Please select one rule to edit.")) return;
    CFileRenameRule& rule = m_settings.rules[m_selectedRules.front()];
    CDlgSpecifyRenamingRules dialog(m_services, rule);
    if (dialog.Show()) rule = dialog.Rule();
}

void CDlgAutoRename::RemoveRules()
{
    if (m_selectedRules.empty()) return Warn("Please select the rules you want to remove.");
    if (!m_services.windows.Message(MessageKind::Question, "Do you want to remove all currently selected rules?"))
        return;
    for (; !m_selectedRules.empty(); m_selectedRules.pop_back())
        m_settings.rules.erase(m_settings.rules.begin() + static_cast<std::ptrdiff_t>(m_selectedRules.back()));
}

void CDlgAutoRename::MoveRule(int by)
{
    if (!OneRuleSelected("Please select one rule to move.")) return;
    const std::size_t row = m_selectedRules.front(), other = row + static_cast<std::size_t>(by);
    if (other >= m_settings.rules.size()) return;  // also for one in front of the first
    std::swap(m_settings.rules[row], m_settings.rules[other]);
    m_selectedRules = {other};
}

void CDlgAutoRename::EditOptions()
{
    CDlgAutoRenameOptions dialog(m_services, m_settings.textCase, m_settings.maxFilename);
    if (!dialog.Show()) return;
    m_settings.textCase = dialog.TextCase();
    m_settings.maxFilename = dialog.MaxFilename();
}

void CDlgAutoRename::ChooseFolder()
{
    const auto folder =
        m_services.windows.ChooseFolder("Select output folder", platform::NarrowFromUtf8(m_settings.outputFolder));
    if (folder) m_settings.outputFolder = platform::Utf8FromNarrow(*folder);
}

/// Settings that cannot be read leave none.
void CDlgAutoRename::Load()
{
    const auto path = m_services.windows.OpenFile(SettingsChoice());
    if (!path) return;
    auto settings = ReadRenameSettings(*path);
    Use(settings ? std::move(*settings) : RenameSettings());
    if (!settings) Warn(platform::Utf8FromNarrow(settings.Error()));
}

void CDlgAutoRename::Save()
{
    if (m_settings.components.empty())
        return Warn("There is nothing to save. Please add a filename component first.");
    const auto path = m_services.windows.SaveFile(SettingsChoice());
    if (!path) return;
    if (const std::string problem = WriteRenameSettings(*path, m_settings); !problem.empty())
        Warn(platform::Utf8FromNarrow(problem));
}

std::string CDlgAutoRename::Problem() const
{
    if (m_settings.components.empty()) return "Please add at least one filename component.";
    if (m_settings.moveOnSuccess) {
        if (m_settings.outputFolder.empty()) return "Please select an output folder to move files after renaming.";
        if (!platform::FolderExists(platform::NarrowFromUtf8(m_settings.outputFolder)))
            return "The selected output folder does not exist.\nPlease select a different folder.";
    }
    if (m_settings.executeScript && Trim(m_settings.script).empty())
        return "Please enter the script that is to be run for each renamed file.";
    if (const auto builder = CNameBuilder::From(m_settings); !builder) return builder.Error();
    return {};
}

FormAnswer CDlgAutoRename::Confirm()
{
    m_settings.outputFolder = Trim(m_settings.outputFolder);
    const std::string problem = Problem();
    if (problem.empty()) return FormAnswer::Confirm;
    Warn(problem);
    return FormAnswer::StayOpen;
}
