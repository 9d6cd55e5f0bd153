#include <gtest/gtest.h>

#include "common/SettingsFile.h"
#include "naming/RenameSettings.h"

namespace {

CSettingsRecord OnePart()
{
    CSettingsRecord record, part;
    part.PutInt("FileConstructionMode", 6);
    record.PutRecord("NamePart0", part);
    return record;
}

RenameSettings Everything()
{
    RenameSettings settings;
    for (int kind = 0; kind <= 10; ++kind) {
        CFileNamePart part;
        part.kind = static_cast<NamePartKind>(kind);
        part.area = {72, 300.5, 720, 650};
        part.pageNumber = 2;
        part.padWithZeroes = kind;
        part.addSpaceInFront = part.replaceMissingValues = part.replaceBeforeLookup = true;
        part.missingValueText = "f\xC3\xA9hlt";
        part.searchBeforeLookup = "\\d+";
        part.replacementBeforeLookup = "\\0";
        part.customText = "Custom Text: <title>";
        part.searchQuery.expression = "No\\. (\\d+)";
        part.lookupTable = {{"a, b", "c, d"}, {"5\" disk", " x"}, {"\xE2\x82\xAC", ""}};
        part.lookupTable["5\" disk"] = "x";
        settings.components.push_back(part);
    }
    CFileNamePart& lookup = settings.components[9];
    lookup.children = {settings.components[0], settings.components[6]};
    lookup.children[1].children = {settings.components[7]};
    for (int index = 0; index <= 10; ++index)
        settings.rules.push_back(CFileRenameRule::Predefined(index, "\xC3\xA4", "ae"));
    settings.moveOnSuccess = settings.overwriteExisting = settings.useReplaceRules = settings.executeScript = true;
    settings.outputFolder = "/out/\xC3\xA4";
    settings.textCase = NameCase::Upper;
    settings.maxFilename = 5000;
    settings.script = "echo \"$OUTPUTDOCUMENT\"";
    return settings;
}

TEST(RenameSettings, EverythingComesBackFromAFile)
{
    const RenameSettings settings = Everything();
    const SettingsFileContent content = ParseSettings(FormatSettings(settings.Write()));
    ASSERT_TRUE(content.Ok()) << content.problem;
    const auto read = RenameSettings::Read(content.record);
    ASSERT_TRUE(read.Ok()) << read.Error();
    EXPECT_TRUE(*read == settings);
}

TEST(RenameSettings, OlderFormsAreRead)
{
    CSettingsRecord record = OnePart(), part, rule, ignored;
    part.PutInt("FileConstructionMode", 9);
    part.PutString("CustomText", "narrow");
    part.PutWide("CustomTextW", "wide");
    PutMap(part, "LookupTable", {{"k", "v"}, {"k2", "v\n2"}});
    record.PutRecord("NamePart1", part);
    record.PutRecord("NamePart3", part);
    record.PutString("OutputFolder", "old");
    record.PutWide("OutputFolderW", "new");
    record.PutInt("NumRenameRules", 2147483647);
    rule.PutString("Search", "old");
    rule.PutWide("SearchW", "new");
    rule.PutWide("ReplaceW", "new");
    record.PutRecord("Rule7", rule);
    record.PutRecord("Rule07", rule);
    record.PutString("Rule8", "none");
    const auto settings = RenameSettings::Read(record);
    ASSERT_TRUE(settings.Ok());
    ASSERT_EQ(settings->components.size(), 2U);  // up to the first number that is missing
    EXPECT_EQ(settings->components[1].customText, "narrow");
    EXPECT_EQ(settings->components[1].lookupTable, (LookupTable{{"k", "v"}, {"k2", "v\n2"}}));
    EXPECT_EQ(settings->components[1].startingNumber, 1);
    EXPECT_EQ(settings->components[1].increment, 1);
    EXPECT_EQ(settings->outputFolder, "old");
    EXPECT_EQ(settings->maxFilename, 100);
    ASSERT_EQ(settings->rules.size(), 1U);
    EXPECT_EQ(settings->rules[0].search, "old");
    EXPECT_EQ(settings->rules[0].replace, "");
}

TEST(RenameSettings, WhatIsNoSettingIsRefused)
{
    EXPECT_FALSE(RenameSettings::Read({}).Ok());
    CFileNamePart deep;
    for (int level = 1; level <= kMaxNamePartDepth; ++level) {
        RenameSettings settings;
        settings.components = {deep};
        EXPECT_TRUE(RenameSettings::Read(settings.Write()).Ok()) << level;
        EXPECT_TRUE(ParseSettings(FormatSettings(settings.Write())).Ok()) << level;
        CFileNamePart outer;
        outer.children = {deep};
        deep = outer;
    }
    RenameSettings settings;
    settings.components = {deep};
    EXPECT_FALSE(RenameSettings::Read(settings.Write()).Ok());
    CSettingsRecord record = OnePart(), part, children;
    children.PutInt("NumChilds", 2147483647);
    part.PutRecord("Childs", children);
    record.PutRecord("NamePart0", part);
    EXPECT_FALSE(RenameSettings::Read(record).Ok());
}

TEST(RenameSettings, PeopleReadWhatIsSet)
{
    RenameSettings settings = Everything();
    settings.rules = {CFileRenameRule::Predefined(0), CFileRenameRule::Predefined(6),
                      CFileRenameRule::Predefined(9, "a", "b")};
    EXPECT_EQ(
        settings.Description(),
        "Settings Description:\nMaximum file name length: 5000 (characters)\n"
        "Number of filenaming components: 11\n"
        "   1: Add incrementing number from 1 (increment by 1)\n   2: Add auto-incrementing letter\n"
        "   3: Add page range\n   4: Add page label\n"
        "   5: Add text from page 3 (72.0,720.0,300.5,650.0)\n"
        "   6: Add text by search: No\\. (\\d+) (from page 3)\n   7: Custom Text: <title>\n"
        "   8: Add original filename\n   9: Rule: No\\. (\\d+) (from page 3)\n"
        "   10: Replace Add incrementing number from 1 (increment by 1), Custom Text: <title> using lookup table "
        "(3 entries)\n   11: Unknown\n"
        "Number of search and replace rules: 3\n   1: No rule defined\n   2: Remove duplicate spaces\n"
        "   3: Replace a with b\n");
}

TEST(LookupTables, AreTextWithAnEntryOnEachLine)
{
    EXPECT_EQ(LookupTableText({{"a,b", "c, d"}, {"k", "v"}}), "\"a,b\", c, d\r\nk, v\r\n");
    EXPECT_EQ(LookupTableFromText("k , v1\r\nno comma\r\n, no key\n\"a,b\",c, d\rk,v2"),
              (LookupTable{{"a,b", "c, d"}, {"k", "v2"}}));
    LookupTable large;
    for (int i = 0; i < 100000; ++i) large["key " + std::to_string(i)] = "value";
    EXPECT_EQ(LookupTableFromText(LookupTableText(large)), large);
    const auto missing = ImportLookupTable("/no/such/table.csv");
    ASSERT_FALSE(missing.Ok());
    EXPECT_NE(missing.Error().find("Cannot open input file."), std::string::npos);
}

}  // namespace
