#include <filesystem>

#include "naming/DocumentName.h"
#include "unit/hostcalls/HostedCalls.h"

namespace {

class DocumentName : public CHostedCalls {};

CFileNamePart Part(NamePartKind kind, const std::string& text = {}, int page0 = 0)
{
    CFileNamePart part;
    part.kind = kind;
    part.customText = part.searchQuery.expression = text;
    part.searchQuery.format = "\\1";
    part.pageNumber = page0;
    part.area = {.left = 60, .right = 540, .top = 785, .bottom = 750};
    part.replaceMissingValues = true;
    part.missingValueText = "missing";
    return part;
}

/// What becomes of the parts for a document, the third one of the list, or the sentence.
std::string NameOf(const RenameSettings& settings, const std::string& file)
{
    const auto builder = CNameBuilder::From(settings);
    if (!builder) return builder.Error();
    CAcrobatDoc document;
    document.Open(std::string(CORPUS) + "/" + file);
    const NameSurroundings surroundings{
        .time = {.day = 3, .month = 2, .year = 2025, .hour = 4, .minute = 5, .second = 6},
        .user = "u",
        .computer = "c"};
    const auto name = builder->Build(document, 2, surroundings);
    return name ? *name : name.Error();
}

}  // namespace

TEST_F(DocumentName, EachKindOfComponentGivesItsText)
{
    if (!std::filesystem::exists(CORPUS)) GTEST_SKIP() << "no corpus";
    CFileNamePart lookup = Part(NamePartKind::Lookup);
    lookup.children = {Part(NamePartKind::OriginalName), Part(NamePartKind::Number)};
    lookup.replaceBeforeLookup = true;
    lookup.searchBeforeLookup = "(pdf)(latex)";
    lookup.replacementBeforeLookup = "\\2-\\1";
    lookup.lookupTable = {{"latex-pdf3", "the value"}};
    CFileNamePart unknown = lookup;
    unknown.replaceBeforeLookup = false;
    const std::string search = "Technical Report (\\d+)";
    const struct {
        CFileNamePart part;
        const char* name;
    } rows[] = {
        {Part(NamePartKind::Number), "3.pdf"},
        {Part(NamePartKind::Letter), "C.pdf"},
        {Part(NamePartKind::PageRange), "1-11.pdf"},
        {Part(NamePartKind::PageLabel), "1.pdf"},
        {Part(NamePartKind::AreaText), "An Introduction to FreeBSD 6 Kernel Hacking.pdf"},
        {Part(NamePartKind::AreaText, {}, 11), "missing.pdf"},
        {Part(NamePartKind::FoundText, search), "Technical Report 070622.pdf"},
        {Part(NamePartKind::RuleText, search), "070622.pdf"},
        {Part(NamePartKind::RuleText, "Melbourne, (Australia)", 1), "missing.pdf"},
        {Part(NamePartKind::RuleText, search, 11), "missing.pdf"},
        {Part(NamePartKind::CustomText, "<Author>_<TITLE> <nothing> <pagecount"),
         "Lawrence Stewart, James Healy_An Introduction to FreeBSD 6 Kernel Hacking nothing pagecount.pdf"},
        {Part(NamePartKind::CustomText, "<pagecount><<day><month><year>-<hour><minute><second><user>@<computer>"),
         "1103022025-040506u@c.pdf"},
        {Part(NamePartKind::CustomText, "<bates_start>"), "No Bates.pdf"},
        {Part(NamePartKind::OriginalName), "pdflatex.pdf"},
        {lookup, "the value.pdf"},
        {unknown, "missing.pdf"},
        {Part(static_cast<NamePartKind>(10)), "missing.pdf"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(NameOf({.components = {row.part}}, "text/pdflatex.pdf"), row.name) << row.part.Description();
}

TEST_F(DocumentName, IsJoinedThenChangedByRulesThenCutAndCased)
{
    if (!std::filesystem::exists(CORPUS)) GTEST_SKIP() << "no corpus";
    CFileNamePart original = Part(NamePartKind::OriginalName);
    original.addSpaceInFront = true;
    RenameSettings settings{.components = {Part(NamePartKind::Letter), original},
                            .rules = {CFileRenameRule::Predefined(9, "(\\w) (\\w)", "\\2 \\1")}};
    EXPECT_EQ(NameOf(settings, "text/pdflatex.pdf"), "C pdflatex.pdf");  // rules are not asked for
    settings.useReplaceRules = true;
    settings.textCase = NameCase::Upper;
    settings.maxFilename = 4;
    EXPECT_EQ(NameOf(settings, "text/pdflatex.pdf"), "P CD.pdf");
    settings.rules = {CFileRenameRule::Predefined(9, "(", "")};
    EXPECT_NE(NameOf(settings, "text/pdflatex.pdf").find("The renaming rule \"Replace ( with \""), std::string::npos);
    EXPECT_EQ(NameOf({.components = {Part(NamePartKind::CustomText, "?. <subject>")}}, "labels/PageLabelsTest.pdf"),
              "Filename is empty. Please verify settings and input document content.");
    EXPECT_NE(NameOf({.components = {Part(NamePartKind::RuleText, "(")}}, "text/pdflatex.pdf").find("cannot be used"),
              std::string::npos);
}
