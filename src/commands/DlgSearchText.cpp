#include "commands/DlgSearchText.h"

#include "commands/DlgTextSearchWithRule.h"
#include "platform/NarrowText.h"
#include "search/SearchTerms.h"

namespace {

constexpr char kSettingsFilter[] = "PDF Search Settings (*.pdfsearch)|*.pdfsearch; *.pdfsearch|All Files (*.*)|*.*||";
constexpr char kSettingsTitle[] = "PDF Search Settings";

enum RuleColumn { kExpression, kPages, kArea, kDescription, kAction, kCopyTo };

std::string CellOfRule(const SearchRule& rule, std::size_t column)
{
    switch (column) {
        case kExpression:
            return rule.expression;
        case kPages:
            return rule.pages.Describe();
        case kArea:
            return AreaText(rule);
        case kDescription:
            return rule.description;
        case kAction:
            return rule.executeCode ? rule.actionCode.substr(0, rule.actionCode.find('\n')) : "";
        default:
            return rule.copyFile ? platform::Utf8FromNarrow(rule.copyFolder) : "";
    }
}

std::string WithPath(const char* text, const std::string& path)
{
    return std::string(text) + '\n' + platform::Utf8FromNarrow(path);
}

}  // namespace

CDlgSearchText::CDlgSearchText(DialogServices services, const SearchSettings& settings)
    : m_services(std::move(services)),
      m_settings(settings),
      m_report(settings.appendReport      ? kAppend
               : settings.overwriteReport ? kOverwrite
                                          : kNewReport),
      m_reportFile(platform::Utf8FromNarrow(settings.reportFile))
{
}

bool CDlgSearchText::Show()
{
    DialogForm form = Describe();
    return m_services.windows.Show(form);
}

FormControl CDlgSearchText::PlainButton(const char* label, void (CDlgSearchText::*act)())
{
    return {.what = Button{label, [this, act] {
                               (this->*act)();
                               return FormAnswer::StayOpen;
                           }}};
}

Row CDlgSearchText::RuleButtons()
{
    FormControl edit = PlainButton("&Edit...", &CDlgSearchText::Edit);
    edit.id = "edit";
    return {{PlainButton("&Add...", &CDlgSearchText::Add), std::move(edit),
             PlainButton("&Delete", &CDlgSearchText::Delete), PlainButton("Move &Up", &CDlgSearchText::MoveUp),
             PlainButton("Move Do&wn", &CDlgSearchText::MoveDown)}};
}

Row CDlgSearchText::FileButtons()
{
    return {{PlainButton("&Load Settings...", &CDlgSearchText::Load),
             PlainButton("&Save Settings...", &CDlgSearchText::Save),
             PlainButton("&Import Search Terms...", &CDlgSearchText::ImportTerms),
             PlainButton("E&xport Search Terms...", &CDlgSearchText::ExportTerms)}};
}

Group CDlgSearchText::ReportGroup()
{
    const auto reports = [this] { return m_settings.createReport; };
    FormControl browse = PlainButton("&Browse...", &CDlgSearchText::ChooseReport);
    browse.enabled = reports;
    return {
        .title = "Report",
        .controls = {{.what = CheckBox{"&Create a report of all matches:", &m_settings.createReport}, .id = "create"},
                     {.what = Row{{{.what = TextField{.label = "&File:", .value = &m_reportFile, .width = 60},
                                    .id = "report",
                                    .enabled = reports},
                                   std::move(browse)}}},
                     {.what = Choice{.label = "If the report &exists:",
                                     .rows = {"Write one for each document, with a number in its name",
                                              "Append to the existing report", "Overwrite the existing report"},
                                     .row = &m_report},
                      .id = "existing",
                      .enabled = reports}}};
}

DialogForm CDlgSearchText::Describe()
{
    ListView rules{
        .name = "Search rules",
        .columns = {{" Search Expression"},
                    {" Page Range", 22},
                    {" Page Area", 22},
                    {" Description", 20},
                    {" JavaScript Action", 18},
                    {" Copy To", 20}},
        .count = [this] { return m_settings.rules.size(); },
        .text = [this](std::size_t row, std::size_t column) { return CellOfRule(m_settings.rules[row], column); },
        .selected = &m_selected,
        .activates = "edit",
        .lines = 10,
        .width = 130};
    DialogForm form{
        .title = "Search and Copy Files",
        .controls = {{.what = StaticText{"Every document is searched by these rules, one after the other."}},
                     {.what = std::move(rules), .id = "rules", .grows = true}},
        .buttons = {{.what = Button{"&Help...",
                                    [this] {
                                        m_services.showHelp("SearchText.htm");
                                        return FormAnswer::StayOpen;
                                    }}},
                    {.what = Button{"OK", [this] { return Confirm(); }, ButtonRole::Default}},
                    {.what = Button{"Cancel", [] { return FormAnswer::Cancel; }, ButtonRole::Cancel}}},
        .focus = "rules"};
    form.controls.push_back({.what = RuleButtons()});
    form.controls.push_back({.what = FileButtons()});
    form.controls.push_back({.what = ReportGroup()});
    return form;
}

SearchRule* CDlgSearchText::Selected()
{
    if (!m_selected.empty() && m_selected.front() < m_settings.rules.size())
        return &m_settings.rules[m_selected.front()];
    Warn("Please select a search item from the list.");
    return nullptr;
}

void CDlgSearchText::Add()
{
    CDlgTextSearchWithRule dialog(m_services, SearchRule());
    if (!dialog.Show()) return;
    m_settings.rules.push_back(dialog.Rule());
    m_selected = {m_settings.rules.size() - 1};
}

void CDlgSearchText::Edit()
{
    SearchRule* const rule = Selected();
    if (!rule) return;
    CDlgTextSearchWithRule dialog(m_services, *rule);
    if (dialog.Show()) *rule = dialog.Rule();
}

void CDlgSearchText::Delete()
{
    if (!Selected()) return;
    m_settings.rules.erase(m_settings.rules.begin() + static_cast<std::ptrdiff_t>(m_selected.front()));
    m_selected.clear();
}

void CDlgSearchText::MoveUp() { Move(-1); }

void CDlgSearchText::MoveDown() { Move(1); }

void CDlgSearchText::Move(int by)
{
    if (!Selected()) return;
    const std::size_t row = m_selected.front(), other = row + static_cast<std::size_t>(by);
    if (other >= m_settings.rules.size()) return;  // also for one in front of the first
    std::swap(m_settings.rules[row], m_settings.rules[other]);
    m_selected = {other};
}

void CDlgSearchText::Load()
{
    const auto path = m_services.windows.OpenFile(
        {.title = kSettingsTitle, .filter = kSettingsFilter, .defaultExtension = "pdfsearch"});
    if (!path) return;
    auto settings = ReadSearchSettings(*path);
    if (!settings) return Warn("An error occured while trying to read settings from selected file.");  // sic
    m_settings = std::move(*settings);
    m_selected.clear();
    m_report = m_settings.appendReport ? kAppend : m_settings.overwriteReport ? kOverwrite : kNewReport;
    m_reportFile = platform::Utf8FromNarrow(m_settings.reportFile);
}

void CDlgSearchText::Save() { (void)SaveInto(); }

bool CDlgSearchText::SaveInto()
{
    Take();
    const auto path = m_services.windows.SaveFile(
        {.title = kSettingsTitle, .filter = kSettingsFilter, .defaultExtension = "pdfsearch"});
    if (!path) return false;
    if (WriteSearchSettings(*path, m_settings).empty()) return true;
    Warn(WithPath("Error saving file to disk.", *path));
    return false;
}

void CDlgSearchText::ExportTerms()
{
    if (m_settings.rules.empty())
        return Warn("There are no search items to save. Please add at least one search item.");
    const auto path = m_services.windows.SaveFile({.filter = "Text Search Report File (*.txt)|*.txt||",
                                                   .defaultExtension = "txt",
                                                   .initial = "Search Terms.txt"});
    if (path && !ExportSearchTerms(*path, m_settings.rules).empty()) Warn("Cannot save search terms as a text file.");
}

void CDlgSearchText::ImportTerms()
{
    const auto path = m_services.windows.OpenFile(
        {.filter = "Tab-delimited ASCII Text File (*.txt)|*.txt|Comma-delimited ASCII Text File (*.csv)|*.csv|All "
                   "Files (*.*)|*.*||",
         .defaultExtension = "txt"});
    if (!path) return;
    const auto rules = ImportSearchTerms(*path);
    if (!rules) return Warn("Cannot open input file.\n" + platform::Utf8FromNarrow(rules.Error()));
    m_settings.rules.insert(m_settings.rules.end(), rules->begin(), rules->end());
    m_services.windows.Message(MessageKind::Note, ImportedTermsText(rules->size()));
}

void CDlgSearchText::ChooseReport()
{
    const auto path = m_services.windows.SaveFile(
        {.filter = "Text Search Report File (*.txt)|*.txt||",
         .defaultExtension = "txt",
         .initial = m_reportFile.empty() ? kProposedReportName : platform::NarrowFromUtf8(m_reportFile)});
    if (path) m_reportFile = platform::Utf8FromNarrow(*path);
}

void CDlgSearchText::Take()
{
    m_settings.appendReport = m_report == kAppend;
    m_settings.overwriteReport = m_report == kOverwrite;
    m_settings.reportFile = platform::NarrowFromUtf8(m_reportFile);
}

FormAnswer CDlgSearchText::Confirm()
{
    Take();
    if (const SearchSettingsReview review = Review(m_settings); !review.mistakes.empty()) {
        Warn(review.mistakes.front());
        return FormAnswer::StayOpen;
    }
    if (m_services.windows.Message(MessageKind::Question, "Do you want to save search settings into a file?"))
        (void)SaveInto();
    return FormAnswer::Confirm;
}
