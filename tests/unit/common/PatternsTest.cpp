#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "common/PatternElements.h"
#include "common/SearchPattern.h"

namespace {

/// All matches, each in brackets; "!" and the reason when there is no telling.
std::string Matches(const CRegularExpression& expression, const CSearchedText& text)
{
    std::string found;
    const auto count = expression.ForEachMatch(text, [&](const TextMatch& match) {
        found += "[" + text.Utf8(match.Range()) + "]";
        return true;
    });
    return count ? found : "! " + count.Error();
}

std::string Matches(const SearchItem& item, const std::string& text, WordBounds bounds = WordBounds::WhiteSpace)
{
    const auto expression = CompileItem(item, bounds);
    return expression ? Matches(*expression, CSearchedText::FromUtf8(text)) : "! " + expression.Error();
}

CRegularExpression Compiled(const std::string& pattern, LetterCase letterCase = LetterCase::Matters)
{
    CRegularExpression expression;
    EXPECT_TRUE(expression.Compile(pattern, letterCase)) << pattern << ": " << expression.Error();
    return expression;
}

}  // namespace

TEST(Patterns, AnItemFindsWhatItsSettingsSay)
{
    const std::string grin = "\xF0\x9F\x98\x80";
    const struct {
        SearchItem item;
        std::string text, found;
    } rows[] = {
        {{.text = "a.b:c", .isExpression = false}, "axb:c A.B:C", "[A.B:C]"},
        {{.text = "[]\\^$.|?*+(){}:", .isExpression = false}, "x[]\\^$.|?*+(){}:x", "[[]\\^$.|?*+(){}:]"},
        {{.text = "!a", .isExpression = false}, "a !a", "[!a]"},
        {{.text = "cat", .wholeWords = true}, "a cat sat", "[cat]"},
        {{.text = "cat", .wholeWords = true}, "a cat, concat", ""},
        {{.text = "cat", .wholeWords = true}, "x\ncat\nx", "[cat]"},
        {{.text = "Cat", .matchCase = true}, "cat Cat", "[Cat]"},
        {{.text = "\xC3\x89T\xC3\x89"}, "\xC3\xA9t\xC3\xA9", "[\xC3\xA9t\xC3\xA9]"},  // beyond ASCII, too
        {{.text = "\\w+"},
         "a\xC3\xA4"
         "b",
         "[a][b]"},
        {{.text = "^b$"}, "a\nb\nc", "[b]"},
        {{.text = "\\d*"}, "ab 12 c3", "[12][3]"},
        {{.text = "."}, grin + "a", "[" + grin + "][a]"},
        {{.text = "(?#format=DD/MM/YYYY)\\d+"}, "7", "[7]"},
        {{.text = "\\G[ab]"}, "ab" + std::string(64, ' ') + "b", "[a][b]"},
        {{.text = std::string(70, 'x') + "$"}, std::string(200, 'x'), "[" + std::string(70, 'x') + "]"},
        {{.text = "a(*COMMIT)c|b"}, std::string(100, ' ') + "a" + std::string(100, ' ') + "b", ""},
    };
    for (const auto& row : rows) EXPECT_EQ(Matches(row.item, row.text), row.found) << row.item.text;
    EXPECT_EQ(Matches({.text = "cat", .wholeWords = true}, "a cat, concat", WordBounds::Words), "[cat]");
}

TEST(Patterns, WhatIsNoExpressionIsRefusedWithItsReason)
{
    const struct {
        const char* pattern;
        const char* reason;
    } rows[] = {
        {"a(b", "missing closing parenthesis (after character 3)"},
        {"!\xC3\xA4[", "missing terminating ] for character class (after character 3)"},
        {"!", "nothing follows"},
        {"\\C", "disabled"},
        {"a\xFF", "bytes that are no characters"},
    };
    CRegularExpression expression = Compiled("a");
    for (const auto& row : rows) {
        EXPECT_FALSE(expression.Compile(row.pattern, LetterCase::Matters)) << row.pattern;
        EXPECT_THAT(expression.Error(), testing::HasSubstr(row.reason)) << row.pattern;
        EXPECT_EQ(Matches(expression, CSearchedText(u"aaa")), "") << row.pattern;
    }
    const auto lines = ExpressionsFromLines({.text = "one\r\n\r\nt(wo\r\n!three"});
    ASSERT_EQ(lines.expressions.size(), 2U);
    EXPECT_TRUE(lines.expressions[1].IsNegated());
    EXPECT_THAT(lines.problems,
                testing::ElementsAre(testing::HasSubstr("\"t(wo\" is no regular expression: missing")));
}

TEST(Patterns, ARunawayExpressionIsGivenUpByName)
{
    const CSearchedText text(std::u16string(40, u'a') + u'!');
    const CRegularExpression runaway = Compiled("(a+)+$");
    EXPECT_THAT(Matches(runaway, text),
                testing::StartsWith("! The expression \"(a+)+$\" was given up on this text: it "
                                    "needs too many attempts."));
    EXPECT_FALSE(runaway.IsSatisfiedBy(text).Ok());
    EXPECT_FALSE(runaway.ReplaceAll(text, "").Ok());
    // One that needs a deep stack and no more is executed.
    EXPECT_EQ(Matches({.text = "^(?:(.)|x)+b"}, std::string(50'000, 'a') + "b").size(), 50'003U);
}

TEST(Patterns, PositionsAreThoseOfTheTextInUtf16)
{
    CSearchedText text(u"\xD83D\xDE00 x\xDC00y \xD83D");
    const CRegularExpression expression = Compiled("[^x]y|\\x{FFFD}$|x*");
    const auto found = expression.Find(text, 3);
    ASSERT_TRUE(found && *found);
    EXPECT_EQ((*found)->Range(), (TextRange{3, 1}));
    EXPECT_FALSE(expression.Find(text, 0)->has_value());  // an empty match comes first
    EXPECT_EQ(Matches(expression, text), "[x][\xEF\xBF\xBDy][\xEF\xBF\xBD]");
    EXPECT_EQ((*Compiled(".").Find(text, 1))->Range(), (TextRange{2, 1}));  // not half a character
    EXPECT_FALSE(expression.Find(text, 99)->has_value());
    EXPECT_FALSE(Compiled("x*").Extract(CSearchedText(u""), 0)->has_value());
}

TEST(Patterns, GroupsAreFoundByNumberAndName)
{
    const auto text = CSearchedText::FromUtf8("no 17 of M\xC3\xA4rz");
    const CRegularExpression expression = Compiled("(?<day>\\d+) of (?<month>\\pL+)(?<year>\\d+)?(?<none>)");
    const auto match = expression.FindNamed(text, {"day", "month", "year", "none", "absent"});
    ASSERT_TRUE(match && *match);
    EXPECT_EQ((*match)->range, (TextRange{3, 10}));
    EXPECT_THAT((*match)->named,
                testing::ElementsAre(testing::Pair("day", "17"), testing::Pair("month", "M\xC3\xA4rz")));
    EXPECT_EQ(**expression.Extract(text, 2), "M\xC3\xA4rz");
    EXPECT_EQ(**expression.Extract(text, 3), "");
    EXPECT_EQ((*Compiled("(?J)(?<n>x)|(?<n>\\d)").FindNamed(text, {"n"}))->named.at("n"), "1");

    std::string many;
    for (int i = 0; i < 120; ++i) many += "(a)";
    const CRegularExpression groups = Compiled(many);
    const CSearchedText letters(std::u16string(120, u'a'));
    EXPECT_EQ((*groups.Find(letters))->groups.size(), 100U);
    EXPECT_EQ((*groups.Find(letters))->Range().length, 120U);
    EXPECT_EQ(**groups.Extract(letters, 100), "");
}

TEST(Patterns, ReplacingAndOutputForms)
{
    const struct {
        const char *pattern, *text, *replacement, *result;
    } rows[] = {
        {"\\s+", " a  b ", "_", "_a_b_"},
        {"x*", "axxb", "-", "a-b"},
        {"^", "a\nb", ">", "a\nb"},
        {"(\\d+)-(?<unit>\\pL+)", "17-m\xC2\xB2, 3-kg", "\\g<unit>:\\1\\2", "m:17m\xC2\xB2, kg:3kg"},
        {"(a)(b)?", "a", "[\\0\\10\\2\\99\\g<x>]", "[aa0]"},
        {"a", "a", "C:\\temp\\g<\\", "C:\\temp\\g<\\"},
    };
    for (const auto& row : rows) {
        const auto replaced = Compiled(row.pattern).ReplaceAll(CSearchedText::FromUtf8(row.text), row.replacement);
        ASSERT_TRUE(replaced) << replaced.Error();
        EXPECT_EQ(*replaced, row.result) << row.pattern;
    }
    EXPECT_EQ(MatchForm("(?#format=\\1)(a)", "\\2"), "\\1");
    EXPECT_EQ(MatchForm("(?#format=)(?#format=x)(?#area=1)", "\\2"), "x");
    EXPECT_EQ(MatchForm("(?#format=", ""), "\\0");
    EXPECT_EQ(EmbeddedOption("a(?#area=0, 0, 9, 9)", kAreaOption), "0, 0, 9, 9");
}

TEST(Patterns, ANegatedExpressionWantsTextWithoutAMatch)
{
    const struct {
        const char *pattern, *text;
        bool satisfied;
    } rows[] = {
        {"!abc", "abc", false},   {"!abc", "abd", true}, {"!abc", "", true},
        {"\\!abc", "abc", false}, {"abc", "xabc", true}, {"!\\d*", "ab 12", false},
    };
    for (const auto& row : rows)
        EXPECT_EQ(*Compiled(row.pattern).IsSatisfiedBy(CSearchedText::FromUtf8(row.text)), row.satisfied)
            << row.pattern;
}

TEST(Patterns, EveryElementOfTheCatalogueCompiles)
{
    std::size_t count = 0;
    std::string inserted;
    for (const PatternCategory& category : PatternCatalogue()) {
        Compiled(category.self.pattern);
        for (const PatternElement& element : category.elements) {
            Compiled(element.pattern);
            inserted += element.pattern;
            ++count;
        }
    }
    EXPECT_EQ(count, 36U);
    EXPECT_EQ(inserted.find("\\["), std::string::npos);  // kept: square brackets insert round ones
}
