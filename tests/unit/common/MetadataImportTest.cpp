#include <gtest/gtest.h>

#include "common/MetadataImport.h"

namespace {

const std::vector<std::string> kPaths = {"/a/One.pdf", "/b/one.pdf", "/b/two.pdf", "/c/TWO.pdf", "/c/three.pdf"};

std::string Imported(const std::string& text, bool clearEmpty = false, FileMatch match = FileMatch::FullPath)
{
    const auto import = ImportMetadata(
        *ParseSeparated(text), kPaths,
        {.fields = {"Title", "Author"}, .clearEmpty = clearEmpty, .match = match, .notAValue = "Cannot open file"});
    if (!import) return import.Error();
    std::string said = std::to_string(import->records) + "/" + std::to_string(import->unmatched);
    for (const ImportedValue& value : import->values)
        said += " " + std::to_string(value.document) + (value.field == 0 ? "T=" : "A=") + value.text;
    for (const std::string& sentence : import->refused) said += " !" + sentence;
    return said;
}

TEST(MetadataImport, RecordsFindTheirDocuments)
{
    const std::string head = "Author,Filename,Pages,title\r\n";
    const std::string several = "\nPlease write the full path.";
    const struct {
        std::string lines, said;
        bool clearEmpty = false;
        FileMatch match = FileMatch::FullPath;
    } rows[] = {
        {"a,/a/One.pdf,3,t\r\n,/b/two.pdf,,u\r\n", "2/0 0T=t 0A=a 2T=u"},
        {",/a/One.pdf,3,\r\n", "1/0"},
        {",/a/One.pdf,3,\r\nx,/b/two.pdf", "2/0 0T= 0A= 2A=x", true},
        {"a,/A/ONE.PDF,3,t", "1/0 0T=t 0A=a"},
        {"a,/z/three.pdf,3,t\n\na,none.pdf,,t\na,,,t", "3/3"},
        {"a,/z/three.pdf,3,t", "1/0 4T=t 4A=a", false, FileMatch::Name},
        {"a,C:\\x\\THREE.pdf,3,t", "1/0 4T=t 4A=a", false, FileMatch::Name},
        {"a,three.pdf,3,t\nb,/c/three.pdf,3,", "2/0 4T=t 4A=b"},
        {"a,One.pdf,,t", "1/0 0T=t 0A=a"},
        {"a,/b/one.pdf,,Cannot open file", "1/0 1A=a"},
        {"a,ONE.pdf,,t",
         "1/0 !Line 2: \"ONE.pdf\" names several documents:\n    /a/One.pdf\n    /b/one.pdf" + several},
    };
    for (const auto& row : rows)
        EXPECT_EQ(Imported(head + row.lines, row.clearEmpty, row.match), row.said) << row.lines;
}

TEST(MetadataImport, WhatIsNoTableForItIsRefused)
{
    const struct {
        const char *text, *said;
    } rows[] = {
        {"", "The input document contains less than two field.\nPlease verify file content and formatting."},
        {"Filename\nx",
         "The input document contains less than two field.\nPlease verify file content and formatting."},
        {"File,Title",
         "The input document does not contain a required \"Filename\" field.\nPlease verify file formatting."},
        {"Filename,Pages",
         "The input document does not contain any required fields.\nPlease verify file formatting."},
    };
    for (const auto& row : rows) EXPECT_EQ(Imported(row.text), row.said) << row.text;
}

}  // namespace
