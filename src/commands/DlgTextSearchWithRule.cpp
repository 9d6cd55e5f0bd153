#include "commands/DlgTextSearchWithRule.h"

#include <charconv>
#include <optional>

#include "base/Text.h"
#include "common/SearchPattern.h"
#include "platform/NarrowText.h"
#include "ui/DlgAddRegExpElement.h"

namespace {

constexpr int kFromTo = static_cast<int>(PageSelection::FromTo);

std::string FirstPageText(const PageRange& pages)
{
    return pages.firstExpression.empty() ? std::to_string(pages.firstPage0 + 1LL)
                                         : platform::Utf8FromNarrow(pages.firstExpression);
}

std::string LastPageText(const PageRange& pages)
{
    if (!pages.lastExpression.empty()) return platform::Utf8FromNarrow(pages.lastExpression);
    return pages.lastPage0 < 0 ? "last" : std::to_string(pages.lastPage0 + 1LL);
}

/// A number that counts from the first page; nothing for an expression.
std::optional<int> PlainNumber(const std::string& text)
{
    int number = 0;
    const char* const end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, number);
    if (text.empty() || read.ec != std::errc() || read.ptr != end) return std::nullopt;
    return number;
}

FormAnswer Stay() { return FormAnswer::StayOpen; }

}  // namespace

std::string AreaText(const SearchRule& rule)
{
    if (!rule.useArea || rule.area == SettingsRectangle()) return "Whole page";
    return FormatText("%3.1f, %3.1f, %3.1f, %3.1f", rule.area.left, rule.area.bottom, rule.area.right, rule.area.top);
}

CDlgTextSearchWithRule::CDlgTextSearchWithRule(DialogServices services, const SearchRule& rule)
    : m_services(std::move(services)),
      m_rule(rule),
      m_selection(rule.pages.selection),
      m_subset(rule.pages.subset),
      m_firstPage(FirstPageText(rule.pages)),
      m_lastPage(LastPageText(rule.pages)),
      m_copyFolder(platform::Utf8FromNarrow(rule.copyFolder))
{
    if (m_selection < 0 || m_selection > kFromTo) m_selection = 0;
    if (m_subset < 0 || m_subset > static_cast<int>(PageSubset::Even)) m_subset = 0;
}

bool CDlgTextSearchWithRule::Show()
{
    DialogForm form = Describe();
    return m_services.windows.Show(form);
}

FormControl CDlgTextSearchWithRule::HelpButton(const char* label, const char* topic)
{
    return {.what = Button{label, [this, topic] {
                               m_services.showHelp(topic);
                               return Stay();
                           }}};
}

Group CDlgTextSearchWithRule::ExpressionGroup()
{
    return {
        .title = "Search Expression",
        .controls = {
            {.what = TextField{.label = "&Search for:", .value = &m_rule.expression, .width = 60},
             .id = "expression"},
            {.what = Row{{{.what = CheckBox{"&Regular expression", &m_rule.useExpression}, .id = "regex"},
                          {.what = Button{"&Add Element...",
                                          [this] {
                                              AddElement();
                                              return Stay();
                                          }},
                           .enabled = [this] { return m_rule.useExpression; }},
                          HelpButton("&Using Patterns", "UsingPatterns.htm")}}},
            {.what = Row{{{.what = CheckBox{"Match &case", &m_rule.matchCase}, .id = "case"},
                          {.what = CheckBox{"&Whole words", &m_rule.wholeWords}, .id = "words"},
                          {.what = CheckBox{"Match across &line ends", &m_rule.countLineEnds}, .id = "lines"}}}},
            {.what = TextField{.label = "&Format of a match:", .value = &m_rule.format, .width = 60}, .id = "format"},
            {.what = TextField{.label = "&Description:", .value = &m_rule.description, .width = 60},
             .id = "description"},
            {.what = CheckBox{"S&top searching with this rule after its first match", &m_rule.stopOnMatch},
             .id = "stop"}}};
}

Group CDlgTextSearchWithRule::PlaceGroup()
{
    const auto ranged = [this] { return m_selection == kFromTo; };
    return {.title = "Pages",
            .controls = {
                {.what = Row{{{.what = Choice{.label = "",
                                              .rows = {"All pages", "Only the current page", "Pages from"},
                                              .row = &m_selection,
                                              .name = "Pages"},
                               .id = "pages"},
                              {.what = TextField{.label = "", .value = &m_firstPage, .width = 12, .name = "First page"},
                               .id = "first",
                               .enabled = ranged},
                              {.what = TextField{.label = "to", .value = &m_lastPage, .width = 12},
                               .id = "last",
                               .enabled = ranged},
                              {.what = Choice{.label = "",
                                              .rows = {"Every page", "Odd pages only", "Even pages only"},
                                              .row = &m_subset,
                                              .name = "Odd or even pages"},
                               .id = "subset"}}}},
                {.what = StaticText{"A page is a number, \"last\", a number from the end (-1), b: and a bookmark, d: "
                                    "and a destination, or l: and a page label."}},
                {.what = Row{{{.what = CheckBox{"Only inside this &area:", &m_rule.useArea}, .id = "area"},
                              {.what = StaticText{.text = "", .current = [this] { return AreaText(m_rule); }},
                               .id = "area-text"},
                              {.what = Button{"Edit A&rea...",
                                              [this] {
                                                  EditArea();
                                                  return Stay();
                                              }},
                               .enabled = [this] { return m_rule.useArea; }}}}}}};
}

Group CDlgTextSearchWithRule::ActionGroup()
{
    return {
        .title = "JavaScript Action",
        .controls = {
            {.what = CheckBox{"&Execute this JavaScript code when the rule matches:", &m_rule.executeCode},
             .id = "execute"},
            {.what =
                 TextField{
                     .label = "", .value = &m_rule.actionCode, .lines = 5, .width = 70, .name = "JavaScript code"},
             .id = "code",
             .enabled = [this] { return m_rule.executeCode; },
             .grows = true},
            {.what = Row{{HelpButton("Learn more about using JavaScript actions with search results...",
                                     "SearchActionScript.htm")}}}}};
}

Group CDlgTextSearchWithRule::CopyGroup()
{
    const auto copies = [this] { return m_rule.copyFile; };
    return {.title = "Copy",
            .controls = {
                {.what = CheckBox{"C&opy the document when the rule matches", &m_rule.copyFile}, .id = "copy"},
                {.what = Row{{{.what = TextField{.label = "To folder:", .value = &m_copyFolder, .width = 50},
                               .id = "folder",
                               .enabled = copies},
                              {.what = Button{"&Browse...",
                                              [this] {
                                                  ChooseCopyFolder();
                                                  return Stay();
                                              }},
                               .enabled = copies}}}},
                {.what = Row{{{.what = TextField{.label = "Before the name:", .value = &m_rule.prefix, .width = 18},
                               .id = "prefix",
                               .enabled = copies},
                              {.what = TextField{.label = "Behind the name:", .value = &m_rule.suffix, .width = 18},
                               .id = "suffix",
                               .enabled = copies}}}}}};
}

DialogForm CDlgTextSearchWithRule::Describe()
{
    DialogForm form{.title = "Text Search Rule",
                    .controls = {},
                    .buttons = {HelpButton("&Help...", "TextSearchRule.htm"),
                                {.what = Button{"OK", [this] { return Confirm(); }, ButtonRole::Default}},
                                {.what = Button{"Cancel", [] { return FormAnswer::Cancel; }, ButtonRole::Cancel}}},
                    .focus = "expression"};
    form.controls.push_back({.what = ExpressionGroup()});
    form.controls.push_back({.what = PlaceGroup()});
    form.controls.push_back({.what = ActionGroup(), .grows = true});
    form.controls.push_back({.what = CopyGroup()});
    return form;
}

void CDlgTextSearchWithRule::AddElement()
{
    CDlgAddRegExpElement dialog(m_services);
    if (dialog.Show()) m_rule.expression += dialog.Pattern();
}

void CDlgTextSearchWithRule::EditArea()
{
    CDlgTextSearchArea dialog(m_services, m_rule.area);
    if (dialog.Show()) m_rule.area = dialog.Area();
}

void CDlgTextSearchWithRule::ChooseCopyFolder()
{
    const auto folder = m_services.windows.ChooseFolder("Select Copy Folder", platform::NarrowFromUtf8(m_copyFolder));
    if (folder) m_copyFolder = platform::Utf8FromNarrow(*folder);
}

FormAnswer CDlgTextSearchWithRule::Confirm()
{
    std::string problem;
    if (m_rule.expression.empty() || !CompileItem(m_rule.Item()))
        problem = "Invalid search expression specified. Please check expression syntax.";
    else
        problem = TakePages();
    if (problem.empty() && m_rule.copyFile && Trim(m_copyFolder).empty())
        problem = "Please specify a folder for the copies.";
    if (!problem.empty()) {
        m_services.windows.Message(MessageKind::Warning, problem);
        return FormAnswer::StayOpen;
    }
    m_rule.copyFolder = platform::NarrowFromUtf8(Trim(m_copyFolder));
    return FormAnswer::Confirm;
}

std::string CDlgTextSearchWithRule::TakePages()
{
    PageRange pages{.selection = m_selection, .subset = m_subset};
    if (m_selection == kFromTo) {
        const std::string first = Trim(m_firstPage), last = Trim(m_lastPage);
        const auto from = PlainNumber(first), to = PlainNumber(last);
        const bool fromEnd = (from && *from < 0) || (to && *to < 0);
        if (from && to && !fromEnd)
            if (std::string problem = PageNumbersProblem(*from, *to, std::nullopt); !problem.empty()) return problem;
        if (from && *from > 0)
            pages.firstPage0 = *from - 1;
        else
            pages.firstExpression = platform::NarrowFromUtf8(first);
        const bool toEnd = last.empty() || EqualsIgnoreCaseAscii(last, "last");
        if (to && *to > 0)
            pages.lastPage0 = *to - 1;
        else if (!toEnd)
            pages.lastExpression = platform::NarrowFromUtf8(last);
    }
    m_rule.pages = pages;
    return {};
}

CDlgTextSearchArea::CDlgTextSearchArea(DialogServices services, const SettingsRectangle& area)
    : m_services(std::move(services)), m_area(area), m_fields(area)
{
}

bool CDlgTextSearchArea::Show()
{
    DialogForm form = Describe();
    return m_services.windows.Show(form);
}

DialogForm CDlgTextSearchArea::Describe()
{
    DialogForm form{
        .title = "Text Search Area",
        .controls = {{.what = StaticText{"Distances from the lower left corner of the page, in points. All zero "
                                         "means the whole page."}}},
        .buttons = {{.what = Button{"OK", [this] { return Confirm(); }, ButtonRole::Default}},
                    {.what = Button{"Cancel", [] { return FormAnswer::Cancel; }, ButtonRole::Cancel}}},
        .focus = "left"};
    for (FormControl& field : m_fields.Controls()) form.controls.push_back(std::move(field));
    form.controls.push_back(
        {.what = TextField{.label = "&Page number:", .value = &m_page, .width = 10}, .id = "page"});
    return form;
}

FormAnswer CDlgTextSearchArea::Confirm()
{
    std::string problem;
    if (const auto page = PlainNumber(Trim(m_page)); !page || *page < 1)
        problem = "Page number should be greater than zero.";
    const auto area = m_fields.Area();
    if (problem.empty() && !area) problem = area.Error();
    if (!problem.empty()) {
        m_services.windows.Message(MessageKind::Warning, problem);
        return FormAnswer::StayOpen;
    }
    m_area = *area;
    return FormAnswer::Confirm;
}
