#include "openhost/program/Manual.h"

#include <array>
#include <utility>

#include "openhost/program/EventLoop.h"

namespace openhost {

namespace {

constexpr char kSummary[] = "runs plug-ins without a window";
constexpr std::array kDescription = {
    "Runs plug-ins without a window: loads them, lets them do what they have scheduled, and ends.",
    "What a plug-in is to do is told to the plug-in, not to this program."};
constexpr std::array<std::pair<int, const char*>, 4> kExitCodeRows = {
    {{kExitFine, "all files are fine"},
     {kExitBroken, "the run could not start or broke off"},
     {kExitUsage, "wrong arguments"},
     {kExitSomeFailed, "the run finished, but some files did not come out"}}};
constexpr std::array kExamples = {"FERRULESEQU=protect.sequ FERRULEALTPATH=in FERRULEALTOUTPUTPATH=out ferrule-host",
                                  "ferrule-host --plugin ./Ferrule.api --password-file passwords.txt --verbose"};
constexpr std::array kPasswordFile = {
    "The password file holds one password in each line, UTF-8. Only the line end is cut, so that",
    "blanks count. The passwords are tried in this order on documents that need one."};

template <typename Lines>
std::string Joined(const Lines& lines, const char* before, const char* after)
{
    std::string text;
    for (const char* line : lines) text += before + std::string(line) + after;
    return text;
}

/// Text as troff prints it letter for letter.
std::string Escaped(const std::string& text)
{
    std::string escaped = text.starts_with('.') || text.starts_with('\'') ? "\\&" : "";
    for (const char letter : text) {
        if (letter == '\\' || letter == '-') escaped += '\\';
        escaped += letter == '\\' ? 'e' : letter;
    }
    return escaped;
}

std::string Section(const char* name) { return ".SH " + std::string(name) + '\n'; }

std::string Entry(const std::string& term, const std::string& value, const std::string& help)
{
    return ".TP\n\\fB" + Escaped(term) + "\\fR" + (value.empty() ? "" : " \\fI" + Escaped(value) + "\\fR") + '\n' +
           Escaped(help) + '\n';
}

std::string OptionEntry(const CLI::Option& option)
{
    std::string names;
    for (const std::string& name : option.get_snames()) names += '-' + name + ", ";
    for (const std::string& name : option.get_lnames()) names += "--" + name;
    const std::string type = option.get_items_expected_max() == 0 ? "" : option.get_type_name();
    const std::string value = type.substr(0, type.find(':'));  // behind it stands what the parser checks
    const std::string fallback = option.get_default_str();
    return Entry(names, value, option.get_description() + (fallback.empty() ? "" : " [" + fallback + ']') + '.');
}

}  // namespace

std::string ProgramDescription() { return std::string(kDescription[0]) + '\n' + kDescription[1]; }

std::string HelpFooter()
{
    std::string text = "Exit codes:\n";
    for (const auto& [code, meaning] : kExitCodeRows) text += "  " + std::to_string(code) + "  " + meaning + '\n';
    return text + "\nExamples:\n" + Joined(kExamples, "  ", "\n") + '\n' + Joined(kPasswordFile, "", "\n");
}

std::string ManualPage(const CLI::App& app, const std::string& version)
{
    std::string text = ".TH FERRULE\\-HOST 1 \"\" \"Ferrule " + Escaped(version) + "\" \"User Commands\"\n";
    text += Section("NAME") + "ferrule\\-host \\- " + kSummary + '\n';
    text += Section("SYNOPSIS") + "\\fBferrule\\-host\\fR [OPTION]...\n" + Section("DESCRIPTION");
    for (const char* line : kDescription) text += Escaped(line) + '\n';
    text += Section("OPTIONS");
    for (const CLI::Option* option : app.get_options())
        if (!option->get_group().empty()) text += OptionEntry(*option);
    text += ".PP\n";
    for (const char* line : kPasswordFile) text += Escaped(line) + '\n';
    text += Section("EXIT STATUS");
    for (const auto& [code, meaning] : kExitCodeRows)
        text += Entry(std::to_string(code), "", std::string(meaning) + '.');
    text += Section("EXAMPLES");
    for (const char* line : kExamples) text += ".PP\n.RS\n.nf\n" + Escaped(line) + "\n.fi\n.RE\n";
    return text + Section("SEE ALSO") + "\\fBferrule\\fR(1)\n";
}

}  // namespace openhost
