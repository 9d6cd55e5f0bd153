#include "naming/FileRenameRule.h"

#include "platform/NarrowText.h"

namespace {

struct PredefinedRow {
    const char *description, *search, *replace;
};
/// From 1 on; the others take the user's texts.
constexpr PredefinedRow kPredefined[] = {
    {"Remove spaces", R"(\s+)", ""},
    {"Remove non-alphanumeric characters", R"(\W+)", ""},
    {"Replace spaces with underscores", R"(\s)", "_"},
    {"Replace non-alphanumerics with underscores", R"(\W)", "_"},
    {"Remove duplicate underscores", "_{2,}", "_"},
    {"Remove duplicate spaces", R"(\s{2,})", " "},
    {"Remove leading non-alphanumeric characters", "^[^a-zA-Z0-9]+", ""},
};

const PredefinedRow* FixedRule(std::int32_t index)
{
    const bool fixed = index >= kFirstRenameRule && index < kReplaceCharactersRule;
    return fixed ? &kPredefined[index - kFirstRenameRule] : nullptr;
}

}  // namespace

CFileRenameRule CFileRenameRule::Predefined(std::int32_t index, const std::string& search, const std::string& replace)
{
    if (const PredefinedRow* const row = FixedRule(index)) return {row->search, row->replace, true, index};
    return {search, replace, index == kReplaceExpressionRule, index};
}

CFileRenameRule CFileRenameRule::Read(const CSettingsRecord& record)
{
    CFileRenameRule rule;
    if (record.Known("Search")) {
        rule.search = platform::Utf8FromNarrow(record.String("Search"));
        rule.replace = platform::Utf8FromNarrow(record.String("Replace"));
    } else {
        rule.search = record.Wide("SearchW");
        rule.replace = record.Wide("ReplaceW");
    }
    rule.useExpression = record.Bool("UseRegex", false);
    rule.ruleIndex = record.Int("RuleIndex", 0);
    return rule;
}

CSettingsRecord CFileRenameRule::Write() const
{
    CSettingsRecord record;
    record.PutWide("SearchW", search);
    record.PutWide("ReplaceW", replace);
    record.PutBool("UseRegex", useExpression);
    record.PutInt("RuleIndex", ruleIndex);
    return record;
}

std::string CFileRenameRule::Description() const
{
    if (const PredefinedRow* const row = FixedRule(ruleIndex)) return row->description;
    if (ruleIndex < kFirstRenameRule || ruleIndex > kLastRenameRule) return "No rule defined";
    return "Replace " + search + " with " + replace;
}
