#include "pdflib/TextSearch.h"

#include <algorithm>
#include <set>

#include "base/Unicode.h"

namespace {

std::u32string SmallLetters(const std::string& text)
{
    std::u32string letters = Utf8ToUtf32(text);
    std::transform(letters.begin(), letters.end(), letters.begin(), LowerCased);
    return letters;
}

/// The pages of one document that a rule still has to look at.
struct RulePages {
    std::vector<int> pages0;
    std::size_t next = 0;
    bool done = false;

    bool Wants(int page0) const { return !done && next < pages0.size() && pages0[next] == page0; }
};

}  // namespace

bool FontFilter::LetsThrough(const HostWord& word) const
{
    if (word.fontSize < leastSize || (mostSize > 0 && word.fontSize > mostSize)) return false;
    return name.empty() || SmallLetters(word.font).find(SmallLetters(name)) != std::u32string::npos;
}

CTextSearch::CTextSearch(const std::vector<TextRule>& rules)
{
    for (const TextRule& rule : rules) {
        m_rules.push_back(Compile(rule));
        if (m_rules.back().problem.empty()) continue;
        if (!m_problem.empty()) m_problem += ' ';
        m_problem += "Rule " + std::to_string(m_rules.size()) + ": " + m_rules.back().problem;
    }
}

CTextSearch::Compiled CTextSearch::Compile(const TextRule& rule)
{
    Compiled compiled{.rule = rule, .expression = {}, .form = {}, .problem = {}};
    auto expression = CompileItem(rule.item);
    if (!expression) {
        compiled.problem = expression.Error();
        return compiled;
    }
    // What stands in an expression's comments counts before the fields; literal text has no comments.
    const std::string pattern = rule.item.isExpression ? rule.item.text : std::string();
    compiled.form = MatchForm(pattern, rule.format);
    if (const auto area = EmbeddedOption(pattern, kAreaOption)) {
        compiled.rule.area = PageRectFrom(*area);
        if (!compiled.rule.area)
            compiled.problem = "The area \"" + *area + "\" is not four numbers with commas between them.";
    }
    compiled.expression = std::move(*expression);
    return compiled;
}

bool CTextSearch::NeedsFonts() const
{
    return std::any_of(m_rules.begin(), m_rules.end(), [](const auto& r) { return r.rule.fonts.IsSet(); });
}

SearchFindings CTextSearch::Search(PDDoc document, const CPageReferences& pages, const Progress& progress) const
{
    std::optional<CDocumentText> text;
    const auto source = [&]() -> CDocumentText& {
        return text.emplace(document, NeedsFonts() ? CHostWordFinder::Fonts::Yes : CHostWordFinder::Fonts::No);
    };
    return Search(source, pages, progress);
}

SearchFindings CTextSearch::Search(const TextSource& source, const CPageReferences& pages,
                                   const Progress& progress) const
{
    SearchFindings findings;
    std::vector<RulePages> toDo(m_rules.size());
    std::set<int> wanted;
    for (std::size_t i = 0; i < m_rules.size(); ++i) {
        RuleFindings& own = findings.rules.emplace_back();
        own.problem = m_rules[i].problem;
        if (!own.problem.empty()) continue;
        auto range = m_rules[i].rule.pages.Pages(pages);
        if (range)
            toDo[i].pages0 = std::move(*range);
        else
            own.problem = range.Error();
        wanted.insert(toDo[i].pages0.begin(), toDo[i].pages0.end());
    }
    if (wanted.empty()) return findings;

    CDocumentText& text = source();
    for (const int page0 : wanted) {
        if (std::none_of(toDo.begin(), toDo.end(), [&](const auto& rule) { return rule.Wants(page0); })) continue;
        if (progress && !progress(page0 + 1, pages.PageCount())) break;
        const CPageText& page = text.Page(page0);
        ++findings.pagesRead;
        if (page.IsEmpty()) ++findings.pagesWithoutText;
        for (std::size_t i = 0; i < m_rules.size(); ++i) {
            if (!toDo[i].Wants(page0)) continue;
            ++toDo[i].next;
            RuleFindings& own = findings.rules[i];
            SearchPage(m_rules[i], page, page0, own);
            const bool enough = m_rules[i].rule.stopOnMatch || m_rules[i].expression->IsNegated();
            toDo[i].done = !own.problem.empty() || (enough && !own.found.empty());
        }
    }
    for (std::size_t i = 0; i < m_rules.size(); ++i) {
        RuleFindings& own = findings.rules[i];
        if (!m_rules[i].expression || !m_rules[i].expression->IsNegated() || !own.problem.empty()) continue;
        const bool satisfied = own.found.empty() && !toDo[i].pages0.empty();
        own.found.clear();
        if (satisfied) own.found.push_back({toDo[i].pages0.front(), {}});
    }
    return findings;
}

void CTextSearch::SearchPage(const Compiled& rule, const CPageText& page, int page0, RuleFindings& findings) const
{
    const std::optional<CPageText> inside =
        rule.rule.area ? std::optional(page.Inside(*rule.rule.area)) : std::nullopt;
    const CPageText& searched = inside ? *inside : page;
    const CSearchedText& text = searched.Text(rule.rule.countLineEnds ? LineEnds::LineFeeds : LineEnds::Blanks);
    const bool first = rule.rule.stopOnMatch || rule.expression->IsNegated();
    const auto visit = [&](const TextMatch& match) {
        if (rule.rule.fonts.IsSet()) {
            const auto words = searched.WordsIn(match.Range());
            if (!std::all_of(words.begin(), words.end(),
                             [&](const HostWord* word) { return rule.rule.fonts.LetsThrough(*word); }))
                return true;
        }
        findings.found.push_back({page0, rule.expression->Expand(text, match, rule.form)});
        return !first;
    };
    if (const auto count = rule.expression->ForEachMatch(text, visit); !count) findings.problem = count.Error();
}
