#include <gtest/gtest.h>

#include "platform/Programs.h"
#include "platform/WideText_win.h"
#include "platform/Windows_win.h"
#include "support/TemporaryFolder.h"
#include "support/TestProcess.h"

using platform::OpenWithShell;
using platform::ShellArgument;

namespace {

/// What a started program writes, once it is complete; for a moment more whoever gave it its name may hold it.
std::string Report(const std::string& path)
{
    std::string report = FileBytes(path);
    for (int i = 0; i < 3000 && report == "<missing>"; ++i) {
        Sleep(10);
        report = FileBytes(path);
    }
    return report;
}

}  // namespace

TEST(Programs, TakeTheDocumentAsOneArgumentOrAsSeveral)
{
    const struct {
        const char *name, *argument;
        bool programQuoted;
        ShellArgument passed;
        const char* arrives;
    } rows[] = {
        {"plain.exe", "C:\\in\\a.pdf", false, ShellArgument::Quoted, "<C:\\in\\a.pdf>\n"},
        {"plain.exe", "C:\\my files\\a b.pdf", false, ShellArgument::Quoted, "<C:\\my files\\a b.pdf>\n"},
        {"plain.exe", "C:\\my files\\a b.pdf", true, ShellArgument::AsItIs, "<C:\\my>\n<files\\a>\n<b.pdf>\n"},
        {"with blank.exe", "a b", false, ShellArgument::Quoted, "<a b>\n"},
        {"with blank.exe", "a b", true, ShellArgument::Quoted, "<a b>\n"},
        {"\xC3\xBC\xE6\x97\xA5.exe", "\xC3\x9F \xE6\x9C\xAC.pdf", true, ShellArgument::Quoted,
         "<\xC3\x9F \xE6\x9C\xAC.pdf>\n"},
    };
    for (const auto& row : rows) {
        const CTemporaryFolder folder;
        SCOPED_TRACE(std::string(row.name) + ' ' + row.argument);
        auto program = folder / row.name;
        CopyFileW(platform::WideText(CHILD_PROGRAM).c_str(), platform::WideText(program).c_str(), TRUE);
        if (row.programQuoted) program = '"' + program + '"';
        SetVariable("FERRULE_TEST_REPORT", folder / "report");
        EXPECT_TRUE(OpenWithShell(program, row.argument, row.passed));
        EXPECT_EQ(Report(folder / "report"), row.arrives);
        SetVariable("FERRULE_TEST_REPORT", "");
    }
}

TEST(Programs, BatchFilesAreProgramsToo)
{
    const CTemporaryFolder folder;
    const auto program =
        folder.Write("a batch.bat", "@echo %1 %2>\"%~dp0part\"\r\n@move \"%~dp0part\" \"%~dp0report\" >nul\r\n");
    EXPECT_TRUE(OpenWithShell('"' + program + '"', "one two", ShellArgument::AsItIs));
    EXPECT_EQ(Report(folder / "report"), "one two\r\n");
}

TEST(Programs, WhatCannotStartIsReportedAtOnce)
{
    const CTemporaryFolder folder;
    const std::string rows[] = {"",
                                "\"\"",
                                folder / "missing.exe",
                                '"' + (folder / "missing.exe") + '"',
                                folder.Write("data.exe", "no program"),
                                "no-such-program-in-the-path"};
    for (const auto& program : rows) EXPECT_FALSE(OpenWithShell(program, "x")) << program;
    EXPECT_TRUE(OpenWithShell("hostname", "x")) << "looked up in the path";
}
