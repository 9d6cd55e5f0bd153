#include "supervisor/Results.h"

#include <gtest/gtest.h>

TEST(Epilogues, OfSeveralWorkersAreThoseOfOneRun)
{
    using Lines = std::vector<std::string>;
    const Lines full = {"own", "closed", "LOG STOPPED: 1", "date"},
                later = {"own", "closed", "LOG STOPPED: 2", "date"}, bare = {"closed", "LOG STOPPED: 3", "date"},
                other = {"failed", "closed", "LOG STOPPED: 4", "date"};
    const struct {
        const char* what;
        std::vector<Lines> added;
        Lines joined;
    } rows[] = {
        {"none", {}, {}},
        {"a worker without a log", {{}, full}, full},
        {"alike but for the time", {full, later}, later},
        {"a worker that opened no file, last", {full, bare}, {"own", "closed", "LOG STOPPED: 3", "date"}},
        {"a worker that opened no file, first", {bare, full}, full},
        {"each with something of its own",
         {full, other, later},
         {"failed", "own", "closed", "LOG STOPPED: 2", "date"}},
        {"nothing in common", {{"a", "b"}, {"c"}}, {"a", "b", "c"}},
    };
    for (const auto& row : rows) {
        CEpilogues epilogues;
        for (const Lines& lines : row.added) epilogues.Add(lines);
        EXPECT_EQ(epilogues.Joined(), row.joined) << row.what;
    }
}
