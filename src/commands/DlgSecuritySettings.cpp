#include "commands/DlgSecuritySettings.h"

#include "base/Text.h"
#include "commands/PasswordTable.h"
#include "platform/NarrowText.h"

namespace {

constexpr char kHelpTopic[] = "SecuritySettings.htm";
constexpr char kLearnMoreTopic[] = "SecuritySettings.htm#how-it-protects";

/// Into the narrow text of the settings. A password that would come out as another one must not be set.
std::string PutPassword(const std::string& utf8, std::string& narrow)
{
    narrow = platform::NarrowFromUtf8(utf8);
    if (platform::Utf8FromNarrow(narrow) == utf8) return {};
    return "The password holds a character that the code page of this system does not have. Please choose another "
           "password.";
}

TextPairs InUtf8(const TextPairs& table)
{
    TextPairs converted;
    for (const auto& [name, password] : table)
        converted.emplace_back(platform::Utf8FromNarrow(name), platform::Utf8FromNarrow(password));
    return converted;
}

}  // namespace

CDlgSecuritySettings::CDlgSecuritySettings(DialogServices services, const SecuritySettings& settings,
                                           std::string storage)
    : m_services(std::move(services)),
      m_settings(settings),
      m_storage(std::move(storage)),
      m_requiresOpen(!settings.password.empty()),
      m_restricts(!settings.permPassword.empty()),
      m_usesTable(settings.useFileMapping && m_requiresOpen),
      m_canCopy(settings.canCopy),
      m_open(platform::Utf8FromNarrow(settings.password)),
      m_openAgain(m_open),
      m_permissions(platform::Utf8FromNarrow(settings.permPassword)),
      m_permissionsAgain(m_permissions),
      m_printing(!settings.canPrint       ? kNoPrinting
                 : settings.hiResPrinting ? kHighResolution
                                          : kLowResolution),
      m_changes(settings.allowAll       ? kAllChanges
                : settings.canFillForms ? kFormsOnly
                                        : kNoChanges),
      m_table(InUtf8(settings.fileMapping))
{
}

bool CDlgSecuritySettings::Show()
{
    DialogForm form = Describe();
    return m_services.windows.Show(form);
}

Group CDlgSecuritySettings::OpenGroup()
{
    const auto open = [this] { return m_requiresOpen; };
    return {
        .title = "",
        .controls = {
            {.what = CheckBox{"Require a password to &open output documents:", &m_requiresOpen}, .id = "open"},
            {.what = TextField{.label = "Document open password:", .value = &m_open, .secret = true},
             .id = "open-password",
             .enabled = open},
            {.what = TextField{.label = "Repeat password:", .value = &m_openAgain, .secret = true},
             .id = "open-again",
             .enabled = open},
            {.what = Row{{{.what = CheckBox{"Use filename-to-password &lookup table:", &m_usesTable},
                           .id = "table",
                           .enabled = open},
                          {.what = Button{"Edit &Table...",
                                          [this] {
                                              EditTable();
                                              return FormAnswer::StayOpen;
                                          }},
                           .id = "edit-table",
                           .enabled = [this] { return m_requiresOpen && m_usesTable; }}}}},
            {.what = StaticText{"If a filename is not listed in the lookup table, then it will be secured with the "
                                "global password specified above."}}}};
}

Group CDlgSecuritySettings::RestrictGroup()
{
    const auto restricts = [this] { return m_restricts; };
    return {
        .title = "",
        .controls = {
            {.what = CheckBox{"&Restrict editing or printing of output documents:", &m_restricts}, .id = "restrict"},
            {.what = TextField{.label = "Access permissions password:", .value = &m_permissions, .secret = true},
             .id = "permissions-password",
             .enabled = restricts},
            {.what = TextField{.label = "Repeat password:", .value = &m_permissionsAgain, .secret = true},
             .id = "permissions-again",
             .enabled = restricts},
            {.what = Choice{"Allow &printing:", {"None", "Low Resolution (150 dpi)", "High Resolution"}, &m_printing},
             .id = "printing",
             .enabled = restricts},
            {.what =
                 Choice{"Allow document &changes:", {"All", "None", "Filling Forms and Signing Only"}, &m_changes},
             .id = "changes",
             .enabled = restricts},
            {.what = CheckBox{"&Enable copying of text, images and other content", &m_canCopy},
             .id = "copy",
             .enabled = restricts},
            {.what = StaticText{"These restrictions have no effect while all changes are allowed."},
             .id = "void",
             .shown = [this] { return RestrictionsAreVoid(); }}}};
}

// With all changes allowed every right is granted.
bool CDlgSecuritySettings::RestrictionsAreVoid() const
{
    return m_restricts && m_changes == kAllChanges && (m_printing != kHighResolution || !m_canCopy);
}

DialogForm CDlgSecuritySettings::Describe()
{
    const auto help = [this](const char* topic) {
        return [this, topic] {
            m_services.showHelp(topic);
            return FormAnswer::StayOpen;
        };
    };
    DialogForm form{
        .title = "Security Settings",
        .controls =
            {{.what =
                  StaticText{"Use settings below to secure PDF documents. Each processed document will be secured "
                             "with the same password(s) and security settings unless a filename-to-password "
                             "lookup table is used."}},
             {.what = OpenGroup()},
             {.what = RestrictGroup()},
             {.what = StaticText{m_storage}, .id = "storage", .shown = [this] { return !m_storage.empty(); }}},
        .buttons = {{.what = Button{"&Help...", help(kHelpTopic)}},
                    {.what = Button{"Learn &More", help(kLearnMoreTopic)}},
                    {.what = Button{"OK", [this] { return Confirm(); }, ButtonRole::Default}},
                    {.what = Button{"Cancel", [] { return FormAnswer::Cancel; }, ButtonRole::Cancel}}},
        .focus = "open"};
    return form;
}

void CDlgSecuritySettings::EditTable()
{
    CDlgPasswordTable dialog(m_services, m_table);
    if (dialog.Show()) m_table = dialog.Table();
}

FormAnswer CDlgSecuritySettings::Confirm()
{
    SecuritySettings settings = m_settings;
    if (const std::string problem = Take(settings); !problem.empty()) {
        m_services.windows.Message(MessageKind::Warning, problem);
        return FormAnswer::StayOpen;
    }
    m_settings = std::move(settings);
    return FormAnswer::Confirm;
}

std::string CDlgSecuritySettings::Take(SecuritySettings& settings)
{
    for (std::string* field : {&m_open, &m_openAgain, &m_permissions, &m_permissionsAgain}) *field = Trim(*field);
    settings.passwordProtect = m_requiresOpen || m_restricts;
    settings.useFileMapping = m_usesTable;
    if (std::string problem = TakeOpenPassword(settings); !problem.empty()) return problem;
    if (std::string problem = TakeRestrictions(settings); !problem.empty()) return problem;
    if (!settings.passwordProtect) return "Please specify security settings.";
    settings.fileMapping.clear();
    for (const auto& [name, password] : m_table) {
        std::string narrow;
        if (std::string problem = PutPassword(password, narrow); !problem.empty()) return problem;
        settings.fileMapping.emplace_back(platform::NarrowFromUtf8(name), std::move(narrow));
    }
    return {};
}

std::string CDlgSecuritySettings::TakeOpenPassword(SecuritySettings& settings)
{
    settings.password.clear();
    if (!m_requiresOpen) return {};
    if (m_open != m_openAgain) return "Document \"open\" passwords do not match. Please verify and try again.";
    if (m_open.empty()) return "Please specify a document \"open\" password.";
    return PutPassword(m_open, settings.password);
}

// Without restrictions the permissions stay as they were.
std::string CDlgSecuritySettings::TakeRestrictions(SecuritySettings& settings)
{
    settings.permPassword.clear();
    if (!m_restricts) return {};
    if (m_permissions != m_permissionsAgain)
        return "Document \"access permissions\" passwords do not match. Please verify and try again.";
    if (m_permissions.empty()) return "Please specify a document \"access permissions\" password.";
    if (std::string problem = PutPassword(m_permissions, settings.permPassword); !problem.empty()) return problem;
    settings.canCopy = m_canCopy;
    settings.canPrint = m_printing != kNoPrinting;
    if (settings.canPrint) settings.hiResPrinting = m_printing == kHighResolution;
    settings.allowAll = m_changes == kAllChanges;
    if (settings.allowAll) return {};
    settings.canEdit = settings.canEditNotes = settings.canAssemble = settings.canCreateTemplates = false;
    settings.canFillForms = m_changes == kFormsOnly;
    return {};
}

CDlgPasswordTable::CDlgPasswordTable(DialogServices services, const TextPairs& table)
    : m_services(std::move(services)), m_table(table), m_text(PasswordTableText(table))
{
}

bool CDlgPasswordTable::Show()
{
    DialogForm form = Describe();
    return m_services.windows.Show(form);
}

DialogForm CDlgPasswordTable::Describe()
{
    return {.title = "Edit Filename-to-Password Lookup Table",
            .controls = {{.what = StaticText{"Type comma-separated filenames and corresponding passwords on separate "
                                             "lines. For example:"}},
                         {.what = StaticText{"Invoice 2024.pdf, apple-tree-7\nReport.pdf, green river\n\"Smith, "
                                             "John.pdf\", winter1998"}},
                         {.what = TextField{.label = "Filename to Password  Lookup Table",
                                            .value = &m_text,
                                            .lines = 12,
                                            .width = 60},
                          .id = "table",
                          .grows = true}},
            .buttons = {{.what = Button{"OK", [this] { return Confirm(); }, ButtonRole::Default}},
                        {.what = Button{"Cancel", [] { return FormAnswer::Cancel; }, ButtonRole::Cancel}}},
            .focus = "table"};
}

FormAnswer CDlgPasswordTable::Confirm()
{
    auto table = PasswordTableFromText(m_text);
    if (!table) {
        m_services.windows.Message(MessageKind::Warning, table.Error());
        return FormAnswer::StayOpen;
    }
    m_table = std::move(*table);
    return FormAnswer::Confirm;
}
