#include "commands/CatalogCommands.h"

#include <gtest/gtest.h>

TEST(CatalogStatus, EachCodeHasItsSentenceAndOthersHaveNone)
{
    const struct {
        int status;
        const char* text;
    } rows[] = {{0, "Index is invalid: /i/100%s.pdx"},
                {1, "Index could not be saved: /i/100%s.pdx"},
                {2, "Rebuild is done: /i/100%s.pdx"},
                {3, "Index is purged: /i/100%s.pdx"},
                {4, "Index is loaded: /i/100%s.pdx"},
                {5, "Cannot rebuild index (Catalog is busy): /i/100%s.pdx"},
                {6, ""},
                {-1, ""}};
    for (const auto& row : rows) EXPECT_EQ(CatalogStatusText(row.status, "/i/100%s.pdx"), row.text);
}
