#include "tools/rename/DlgSpecifyRenamingRules.h"

#include "naming/NameText.h"

namespace {

constexpr std::size_t kRuleCount = kLastRenameRule - kFirstRenameRule + 1;

std::int32_t IndexAt(std::size_t row) { return kFirstRenameRule + static_cast<std::int32_t>(row); }

std::string RuleText(std::size_t row)
{
    const std::int32_t index = IndexAt(row);
    if (index == kReplaceCharactersRule) return "Search and replace characters";
    if (index == kReplaceExpressionRule) return "Search and replace using regular expression";
    return CFileRenameRule::Predefined(index).Description();
}

}  // namespace

CDlgSpecifyRenamingRules::CDlgSpecifyRenamingRules(DialogServices services, const CFileRenameRule& rule)
    : m_services(std::move(services))
{
    if (rule.ruleIndex < kFirstRenameRule || rule.ruleIndex > kLastRenameRule) return;
    m_selected = {static_cast<std::size_t>(rule.ruleIndex - kFirstRenameRule)};
    if (!TakesTexts()) return;
    m_search = rule.search;
    m_replace = rule.replace;
}

bool CDlgSpecifyRenamingRules::Show()
{
    DialogForm form = Describe();
    return m_services.windows.Show(form);
}

CFileRenameRule CDlgSpecifyRenamingRules::Rule() const
{
    return CFileRenameRule::Predefined(IndexAt(m_selected.front()), m_search, m_replace);
}

bool CDlgSpecifyRenamingRules::TakesTexts() const
{
    return !m_selected.empty() && IndexAt(m_selected.front()) >= kReplaceCharactersRule;
}

DialogForm CDlgSpecifyRenamingRules::Describe()
{
    const auto takesTexts = [this] { return TakesTexts(); };
    ListView rules{.name = "Rules",
                   .columns = {{"Rule"}},
                   .count = [] { return kRuleCount; },
                   .text = [](std::size_t row, std::size_t) { return RuleText(row); },
                   .selected = &m_selected,
                   .activates = "ok",
                   .lines = 9,
                   .width = 60};
    return {
        .title = "Specify Renaming Rules",
        .controls =
            {{.what = StaticText{"A rule changes the whole of a new name, after its components were joined."}},
             {.what = std::move(rules), .id = "rules", .grows = true},
             {.what = TextField{.label = "&Search for:", .value = &m_search}, .id = "search", .enabled = takesTexts},
             {.what = TextField{.label = "&Replace with:", .value = &m_replace},
              .id = "replace",
              .enabled = takesTexts},
             {.what = StaticText{"With a regular expression, \\1 stands for the text of its first group in "
                                 "parentheses."}}},
        .buttons = {{.what = Button{"&Using Patterns",
                                    [this] {
                                        m_services.showHelp("UsingPatterns.htm");
                                        return FormAnswer::StayOpen;
                                    }}},
                    {.what = Button{"OK", [this] { return Confirm(); }, ButtonRole::Default}, .id = "ok"},
                    {.what = Button{"Cancel", [] { return FormAnswer::Cancel; }, ButtonRole::Cancel}}},
        .focus = "rules"};
}

std::string CDlgSpecifyRenamingRules::Problem() const
{
    if (m_selected.empty()) return "Please select a rule to add.";
    if (TakesTexts() && m_search.empty()) return "Please enter what to search for.";
    if (const auto compiled = CNameRules::From({Rule()}); !compiled) return compiled.Error();
    return {};
}

FormAnswer CDlgSpecifyRenamingRules::Confirm()
{
    const std::string problem = Problem();
    if (problem.empty()) return FormAnswer::Confirm;
    m_services.windows.Message(MessageKind::Warning, problem);
    return FormAnswer::StayOpen;
}
