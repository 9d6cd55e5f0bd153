#include "tools/rename/DlgFileNamePart.h"

#include <charconv>
#include <optional>

#include "base/Text.h"
#include "commands/DlgTextSearchWithRule.h"
#include "tools/rename/NamePartKinds.h"

namespace {

constexpr int kMostDigits = 40;

bool IsSearch(NamePartKind kind) { return kind == NamePartKind::FoundText || kind == NamePartKind::RuleText; }

std::optional<std::int32_t> WholeNumber(const std::string& text)
{
    std::int32_t number = 0;
    const std::string trimmed = Trim(text);
    const char* const end = trimmed.data() + trimmed.size();
    const auto read = std::from_chars(trimmed.data(), end, number);
    if (trimmed.empty() || read.ec != std::errc() || read.ptr != end) return std::nullopt;
    return number;
}

FormControl NumberField(const char* label, std::string& value, const char* id)
{
    return {.what = TextField{.label = label, .value = &value, .width = 10}, .id = id};
}

}  // namespace

CDlgFileNamePart::CDlgFileNamePart(DialogServices services, const CFileNamePart& part)
    : m_services(std::move(services)),
      m_part(part),
      m_area(part.area),
      m_start(std::to_string(part.startingNumber)),
      m_increment(std::to_string(part.increment)),
      m_digits(std::to_string(part.padWithZeroes)),
      m_page(std::to_string(part.pageNumber + 1LL))
{
}

bool CDlgFileNamePart::Show()
{
    DialogForm form = Describe();
    return m_services.windows.Show(form);
}

Group CDlgFileNamePart::NumberGroup()
{
    return {.title = "",
            .controls = {NumberField("Starting &number:", m_start, "start"),
                         NumberField("Increment &by:", m_increment, "increment"),
                         NumberField("&Digits, padded with zeroes (0: as many as it has):", m_digits, "digits")}};
}

FormControl CDlgFileNamePart::PageField(const char* label) { return NumberField(label, m_page, "page"); }

Group CDlgFileNamePart::AreaGroup()
{
    Group group{.title = "", .controls = {PageField("&Page number:")}};
    group.controls.push_back({.what = StaticText{"Distances from the lower left corner of the page, in points:"}});
    for (FormControl& field : m_area.Controls()) group.controls.push_back(std::move(field));
    return group;
}

Group CDlgFileNamePart::SearchGroup()
{
    const auto rule = [this] {
        const SearchRule& query = m_part.searchQuery;
        if (query.expression.empty()) return std::string("Nothing is searched for yet.");
        return (query.useExpression ? "Regular expression: " : "Text: ") + query.expression;
    };
    return {.title = "",
            .controls = {
                {.what = Row{{{.what = StaticText{.text = "", .current = rule}, .id = "rule", .grows = true},
                              {.what = Button{"Edit Search &Rule...",
                                              [this] {
                                                  EditRule();
                                                  return FormAnswer::StayOpen;
                                              }},
                               .id = "edit-rule"}}}},
                PageField("Search from &page:"),
                {.what = StaticText{m_part.kind == NamePartKind::RuleText
                                        ? "The first match counts, in the format of the rule. The pages, the code "
                                          "and the copy of the rule do not count here."
                                        : "The first match counts, as it stands in the document. The pages, the "
                                          "format, the code and the copy of the rule do not count here."}}}};
}

DialogForm CDlgFileNamePart::Describe()
{
    const NamePartKindRow* const kind = FindNamePartKind(m_part.kind);
    DialogForm form{.title = kind ? kind->name : "Filename Component",
                    .controls = {{.what = StaticText{kind ? kind->meaning : ""}}},
                    .buttons = {{.what = Button{"OK", [this] { return Confirm(); }, ButtonRole::Default}},
                                {.what = Button{"Cancel", [] { return FormAnswer::Cancel; }, ButtonRole::Cancel}}},
                    .focus = "space"};
    if (m_part.kind == NamePartKind::Number) {
        form.controls.push_back({.what = NumberGroup()});
        form.focus = "start";
    } else if (m_part.kind == NamePartKind::AreaText) {
        form.controls.push_back({.what = AreaGroup()});
        form.focus = "page";
    } else if (IsSearch(m_part.kind)) {
        form.controls.push_back({.what = SearchGroup()});
        form.focus = "edit-rule";
    }
    form.controls.push_back(NamePartOptions(m_part));
    return form;
}

void CDlgFileNamePart::EditRule()
{
    CDlgTextSearchWithRule dialog(m_services, m_part.searchQuery);
    if (dialog.Show()) m_part.searchQuery = dialog.Rule();
}

FormAnswer CDlgFileNamePart::Confirm()
{
    CFileNamePart part = m_part;
    if (const std::string problem = Take(part); !problem.empty()) {
        m_services.windows.Message(MessageKind::Warning, problem);
        return FormAnswer::StayOpen;
    }
    m_part = std::move(part);
    return FormAnswer::Confirm;
}

std::string CDlgFileNamePart::Take(CFileNamePart& part) const
{
    if (part.kind == NamePartKind::Number) return TakeNumbers(part);
    if (IsSearch(part.kind)) {
        if (part.searchQuery.expression.empty()) return "Please edit the search rule and enter what to search for.";
        return TakePage(part);
    }
    if (part.kind != NamePartKind::AreaText) return {};
    if (std::string problem = TakePage(part); !problem.empty()) return problem;
    const auto area = m_area.Area();
    if (!area) return area.Error();
    if (*area == SettingsRectangle()) return "Please enter the area whose text is wanted.";
    part.area = *area;
    return {};
}

std::string CDlgFileNamePart::TakeNumbers(CFileNamePart& part) const
{
    const auto start = WholeNumber(m_start), increment = WholeNumber(m_increment), digits = WholeNumber(m_digits);
    if (!start) return "Please enter a whole number to start with.";
    if (!increment) return "Please enter a whole number for the increment.";
    if (!digits || *digits < 0 || *digits > kMostDigits)
        return FormatText("Please enter a number of digits from 0 to %d.", kMostDigits);
    part.startingNumber = *start;
    part.increment = *increment;
    part.padWithZeroes = *digits;
    return {};
}

std::string CDlgFileNamePart::TakePage(CFileNamePart& part) const
{
    const auto page = WholeNumber(m_page);
    if (!page || *page < 1) return "Page number should be greater than zero.";
    part.pageNumber = *page - 1;
    return {};
}
