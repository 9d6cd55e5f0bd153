#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "openhost/pdf/Passwords.h"

using namespace openhost;

TEST(Passwords, AreStoredAsEachRevisionDemands)
{
    const std::string cut4(32, 'x'), long300(300, 'x');
    const struct {
        const char* what;
        std::string utf8;
        int revision;
        std::optional<std::string> stored;
    } rows[] = {{"plain", "secret", 4, "secret"},
                {"accents up to 4", "h\u00f4tel", 4, "h\xf4tel"},
                {"accents from 5", "h\u00f4tel", 6, "h\u00f4tel"},
                {"euro sign up to 4", "5\u20ac", 3, "5\xa0"},
                {"no Greek up to 4", "\u03b1", 4, std::nullopt},
                {"no replacement character up to 4", "\ufffd", 4, std::nullopt},
                {"Greek from 5", "\u03b1", 6, "\u03b1"},
                {"compatibility form", "S\u00aaSL\u00adprep", 6, "SaSLprep"},
                {"wide blank", "a\u00a0b", 6, "a b"},
                {"beyond the BMP", "\U0001F600\U0002070E", 6, "\U0001F600\U0002070E"},
                {"control character from 5", "a\x07z", 6, std::nullopt},
                {"nothing left", "\u00ad\u00ad", 6, std::nullopt},
                {"not UTF-8", "a\xff", 6, std::nullopt},
                {"not UTF-8 up to 4", "a\xff", 4, std::nullopt},
                {"hidden end", std::string("a\0b", 3), 6, std::nullopt},
                {"cut to 32", long300, 4, cut4},
                {"cut to 127 bytes", long300, 6, std::string(127, 'x')},
                {"cut within a character", std::string(126, 'x') + "\u00e9", 6, std::string(126, 'x') + "\xc3"},
                {"blanks count", "    ", 4, "    "},
                {"empty", "", 6, ""}};
    for (const auto& row : rows) EXPECT_EQ(PreparePassword(row.utf8, row.revision), row.stored) << row.what;
}

TEST(Passwords, RefusalsNameTheReasonAndNothingOfThePassword)
{
    const struct {
        std::string utf8;
        int revision;
        const char* reason;
    } rows[] = {{"Hunter2\u03b1", 4, "use AES with 256 bits"},
                {"Hunter2\t", 6, "control characters"},
                {"Hunter2\u0085", 6, "control characters"},
                {"Hunter2\u05d0", 6, "mixed with others"},
                {"\u05d0\u05d1 1", 6, "must begin and end"},
                {"Hunter2\ue000", 6, "not allowed in passwords"},
                {"\u00ad", 6, "none is left"},
                {"Hunter2\xff", 6, "no valid UTF-8"}};
    for (const auto& row : rows) {
        EXPECT_EQ(PreparePassword(row.utf8, row.revision), std::nullopt) << row.reason;
        EXPECT_THAT(PasswordObjection(row.utf8, row.revision),
                    testing::AllOf(testing::HasSubstr(row.reason), testing::Not(testing::HasSubstr("Hunter"))));
    }
}

TEST(Passwords, AreTriedInEveryFormOnce)
{
    EXPECT_THAT(PasswordForms("plain", 6), testing::ElementsAre("plain"));
    EXPECT_THAT(PasswordForms("\u00e9", 3), testing::ElementsAre("\xe9", "\u00e9"));
    EXPECT_THAT(PasswordForms("\u00aa", 6), testing::ElementsAre("a", "\u00aa", "\xaa"));
    EXPECT_THAT(PasswordForms("\xff", 6), testing::ElementsAre("\xff"));
    EXPECT_THAT(PasswordForms("", 6), testing::ElementsAre(""));
}

TEST(Passwords, RandomOnesDiffer)
{
    EXPECT_EQ(RandomPassword().size(), 32u);
    EXPECT_NE(RandomPassword(), RandomPassword());
}
