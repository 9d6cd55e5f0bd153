#include "base/LineSplitter.h"

#include <gtest/gtest.h>

TEST(LineSplitter, LinesDoNotDependOnThePiecesTheyComeIn)
{
    const std::string text = "one\n\ntoo long for it\nlast";
    for (std::size_t piece = 1; piece <= text.size(); ++piece) {
        CLineSplitter splitter(5);
        std::vector<std::string> lines;
        for (std::size_t at = 0; at < text.size(); at += piece) splitter.Add(text.substr(at, piece), lines);
        EXPECT_EQ(lines, (std::vector<std::string>{"one", "", "too l"})) << piece;
        splitter.Finish(lines);
        splitter.Finish(lines);
        EXPECT_EQ(lines.size(), 4u) << piece;
        EXPECT_EQ(lines.back(), "last") << piece;
    }
}
